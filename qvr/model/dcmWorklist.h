// dcmWorklist: one entry of the modality worklist, a scheduled procedure step. A passive record: nothing is checked.
#pragma once

#include <cstdint>
#include <list>

#include "qvr/export.h"
#include "qvr/model/dcmObject.h"
#include "qvr/model/dcmValues.h"
#include "qvr/platform/COleDateTime.h"
#include "qvr/platform/CString.h"

/// What a host fills for dcmWorklist::Create; zero and empty with {}. The codes belong to the host.
struct QVR_ST_WORKLIST {
    int Scource = 0;  ///< where the entry came from
    std::int32_t WorklistIndex = 0;
    int Status = 0;
    CString SPSAETitle{};  ///< SPS: scheduled procedure step
    COleDateTime SPSStartDateTime{};
    CString Modality{};
    CString SPSPerformingPhysician{};
    CString ReferringPhysician{};
    CString SPSDescription{};
    CString SPSStationName{};
    CString SPSID{};
    CString CommentsOnSPS{};
    CString ReqProcID{};  ///< ReqProc: requested procedure
    CString ReqProcDescription{};
    CString StudyInstanceUID{};
    CString AccessionNumber{};
    CString PatientName{};
    CString PatientID{};
    COleDateTime PatientBirthDate{};
    int PatientBirthDateValid = 0;  ///< flag: the birth date is known
    CString PatientSex{};
    CString OtherPatientID{};
    CString OtherPatientName{};
    CString PatientSpeciesDescription{};
    CString PatientSexNeutered{};
    CString PatientBreedDescription{};
    CString MedicalRecordLocator{};
    CString AdmittingDiagnosesDescription{};
};

class QVR_API dcmWorklist : public dcmObject {
public:
    /// Zero and empty, but for WorklistIndex -1, Status -1 and the current date and time as birth date.
    dcmWorklist();
    dcmWorklist(const dcmWorklist&) = delete;
    dcmWorklist& operator=(const dcmWorklist&) = delete;
    ~dcmWorklist() override;

    /// Takes all values of the record; the codes stay. @return 1; 0, with nothing changed, for null or when memory ends
    int Create(const QVR_ST_WORKLIST* record);
    void SetReqProcCode(const char* value, const char* meaning, const char* designator, const char* version);
    /// @return a copy
    dcmCode GetReqProcCode() const { return m_ReqProcCode; }
    /// Appends a code; there is no bound and no operation that takes one away.
    void AddSPSCode(const char* value, const char* meaning, const char* designator, const char* version);
    int GetSPSCodeCount() const { return static_cast<int>(m_SPSCodes.size()); }
    /// @return 1; 0 for an index outside 0 … count - 1, with `out` untouched
    int GetSPSCode(int index, dcmCode& out) const;

    int GetScource() const { return m_Values.Scource; }
    std::int32_t GetWorklistIndex() const { return m_Values.WorklistIndex; }
    int GetStatus() const { return m_Values.Status; }
    const char* GetSPSAETitle() const { return m_Values.SPSAETitle; }
    COleDateTime GetSPSStartDateTime() const { return m_Values.SPSStartDateTime; }
    const char* GetModality() const { return m_Values.Modality; }
    const char* GetSPSPerformingPhysician() const { return m_Values.SPSPerformingPhysician; }
    const char* GetReferringPhysician() const { return m_Values.ReferringPhysician; }
    const char* GetSPSDescription() const { return m_Values.SPSDescription; }
    const char* GetSPSStationName() const { return m_Values.SPSStationName; }
    const char* GetSPSID() const { return m_Values.SPSID; }
    const char* GetCommentsOnSPS() const { return m_Values.CommentsOnSPS; }
    const char* GetReqProcID() const { return m_Values.ReqProcID; }
    const char* GetReqProcDescription() const { return m_Values.ReqProcDescription; }
    const char* GetStudyInstanceUID() const { return m_Values.StudyInstanceUID; }
    const char* GetAccessionNumber() const { return m_Values.AccessionNumber; }
    const char* GetPatientName() const { return m_Values.PatientName; }
    const char* GetPatientID() const { return m_Values.PatientID; }
    COleDateTime GetPatientBirthDate() const { return m_Values.PatientBirthDate; }
    int IsPatientBirthDateValid() const { return m_Values.PatientBirthDateValid; }
    const char* GetPatientSex() const { return m_Values.PatientSex; }
    const char* GetOtherPatientID() const { return m_Values.OtherPatientID; }
    const char* GetOtherPatientName() const { return m_Values.OtherPatientName; }
    const char* GetPatientSpeciesDescription() const { return m_Values.PatientSpeciesDescription; }
    const char* GetPatientSexNeutered() const { return m_Values.PatientSexNeutered; }
    const char* GetPatientBreedDescription() const { return m_Values.PatientBreedDescription; }
    const char* GetMedicalRecordLocator() const { return m_Values.MedicalRecordLocator; }
    const char* GetAdmittingDiagnosesDescription() const { return m_Values.AdmittingDiagnosesDescription; }

private:
    QVR_ST_WORKLIST m_Values;  // the members are those of the record, so that no copy can mix two of them up
    dcmCode m_ReqProcCode;
    std::list<dcmCode> m_SPSCodes;  // a code that was added is never moved or copied again
};
