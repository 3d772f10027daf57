// dcmStudy: one study of an examination: its patient and study attributes, its modality, and its series in creation
// order.
//
// Series are addressed by position, from 0; none is ever removed, so positions stay. A request for a position passes
// down to that series unchanged; see dcmSeries for what it does. Nothing here touches the exam's list of resident
// series.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "qvr/export.h"
#include "qvr/model/dcmObject.h"
#include "qvr/model/dcmSeries.h"
#include "qvr/model/dcmValues.h"
#include "qvr/platform/COleDateTime.h"
#include "qvr/platform/CString.h"
#include "qvr/platform/types.h"

/// What a host fills for a study; zero and empty with {}. Only read; what is kept is copied.
struct QVR_ST_STUDY {
    CString StudyInstanceUID{};
    COleDateTime StudyDateTime{};
    CString ReferringPhysicianFamilyName{};
    CString ReferringPhysicianGivenName{};
    CString StudyID{};
    CString AccessionNumber{};
    CString StudyDescription{};
    CString AdmittingDiagnosesDescription{};
    CString PatientFamilyName{};
    CString PatientGivenName{};
    COleDateTime PatientBirthDate{};
    int PatientBirthDateValid = 0;  ///< flag: the birth date is known
    CString PatientID{};
    CString PatientSex{};
    CString OtherPatientID{};
    CString OtherPatientFamilyName{};
    CString OtherPatientGivenName{};
    CString PatientSpeciesDescription{};
    CString PatientSexNeutered{};
    CString PatientBreedDescription{};
    CString MedicalRecordLocator{};
    int Locked = 0;  ///< flag
    int Status = 0;  ///< a code of the host
};

class QVR_API dcmStudy : public dcmObject {
public:
    enum Modality : int { CR = 0, DX = 1 };

    /// Empty, but for the current date and time as study and birth date, Status -1 and modality CR.
    dcmStudy();
    dcmStudy(const dcmStudy&) = delete;
    dcmStudy& operator=(const dcmStudy&) = delete;
    /// Destroys the series; no file is deleted.
    ~dcmStudy() override;

    /// Takes attributes and modality; the series stay. @return 1; 0, with nothing changed, for null or when memory ends
    int Create(const QVR_ST_STUDY* record, Modality modality);
    /// A new series of the study's modality, owned by the study.
    /// @return null for null, for a modality that is neither CR nor DX, and without memory
    dcmSeries* CreateSeries(const QVR_ST_SERIES* record);
    /// @return the series, which lives as long as the study; null for a position that does not exist
    dcmSeries* GetSeries(int position) const;
    int GetSeriesCount() const { return static_cast<int>(m_SeriesList.size()); }
    /// @return the position; -1 for null and for a series of another study
    int GetSeriesIndex(const dcmSeries* series) const;
    /// Sets the curve of every series, in order; nothing is rebuilt.
    void SetLUT(int type, int k, int c);

    // --- requests by series position: 0, or null, when it does not exist ----------------------------------------

    int CreateImage(int series, const QVR_ST_IMAGE* record, const char* directory, const RECT* rectangle,
                    CDC* surface);
    int CreateProtocol(int series, const QVR_ST_PROTOCOL* record);
    int UpdateImage(int series, int width, int height, const std::uint16_t* pixels, int bitsStored,
                    int highBit, int windowWidth, int windowCenter, const RECT* rectangle, CDC* surface);
    int UpdateImage(int series, const RECT* rectangle, CDC* surface, int refresh);
    int UpdateImage(int series, int windowWidth, int windowCenter, CDC* surface);
    int UpdateImage(int series, float xRatio, float yRatio, const RECT* rectangle, CDC* surface);
    int UpdateImage(int series, int xOffset, int yOffset, const RECT* rectangle, CDC* surface);
    int UpdateImage(int series, CDC* surface);
    int RejectImage(int series);
    int WriteImageToHDD(int series);
    int ReadImageInRAM(int series, const RECT* rectangle, CDC* surface);
    int SaveUndoData(int series);
    int ReadUndoData(int series, const RECT* rectangle, CDC* surface);
    int IsImageExistInSeries(int series) const;
    dcmProtocol* GetProtocol(int series) const;
    /// The display bitmap of the series' image; valid until it is rebuilt or the image leaves memory.
    CDib* GetDIB(int series) const;
    /// Black for a position that does not exist.
    void DrawImage(int series, const RECT* rectangle, CDC* surface);

    // --- attributes --------------------------------------------------------------------------------------------

    int IsCRModality() const { return m_Modality == CR; }
    int IsLocked() const { return m_Values.Locked; }
    int GetStatus() const { return m_Values.Status; }
    int IsPatientBirthDateValid() const { return m_Values.PatientBirthDateValid; }
    COleDateTime GetStudyDateTime() const { return m_Values.StudyDateTime; }
    COleDateTime GetPatientBirthDate() const { return m_Values.PatientBirthDate; }
    const char* GetReferringPhysicianName() const { return m_ReferringPhysicianName.GetPersonName(); }
    const char* GetPatientName() const { return m_PatientName.GetPersonName(); }
    const char* GetOtherPatientName() const { return m_OtherPatientName.GetPersonName(); }
    const char* GetStudyInstanceUID() const { return m_Values.StudyInstanceUID; }
    const char* GetStudyID() const { return m_Values.StudyID; }
    const char* GetAccessionNumber() const { return m_Values.AccessionNumber; }
    const char* GetStudyDescription() const { return m_Values.StudyDescription; }
    const char* GetAdmittingDiagnosesDescription() const { return m_Values.AdmittingDiagnosesDescription; }
    void SetAdmittingDiagnosesDescription(const char* description);
    const char* GetPatientID() const { return m_Values.PatientID; }
    const char* GetPatientSex() const { return m_Values.PatientSex; }
    const char* GetOtherPatientID() const { return m_Values.OtherPatientID; }
    const char* GetPatientSpeciesDescription() const { return m_Values.PatientSpeciesDescription; }
    const char* GetPatientSexNeutered() const { return m_Values.PatientSexNeutered; }
    const char* GetPatientBreedDescription() const { return m_Values.PatientBreedDescription; }
    const char* GetMedicalRecordLocator() const { return m_Values.MedicalRecordLocator; }

private:
    QVR_ST_STUDY m_Values;  // the members are those of the record, so that no copy can mix two of them up
    dcmPersonName m_ReferringPhysicianName;
    dcmPersonName m_PatientName;
    dcmPersonName m_OtherPatientName;
    std::vector<std::unique_ptr<dcmSeries>> m_SeriesList;
    Modality m_Modality = CR;
};
