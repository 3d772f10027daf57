// dcmExam: the root of one examination: worklist entries, studies, and which series have their image in memory.
//
// Everything is addressed by position, from 0 in creation order; nothing is removed while the exam lives, so positions
// stay. The exam owns studies and worklist entries; destroying it deletes no file.
//
// Memory     CreateImage, OpenImage and ActivateImage keep at most five images resident. CreateImage and OpenImage write
//            out the newest and drop it from the list even when its write fails - the image then stays in memory,
//            uncounted -; ActivateImage writes out the oldest and stops when that fails. A careful host does not leave
//            the choice to CreateImage: while IsRAMFull, it calls WriteSeriesToHDD(GetSeriesInRAM(0)) itself before it
//            acquires, and tells the user when that write fails.
// Results    1 (or an object) for success, 0 (or null) for failure; nothing is thrown.
// Threads    the host's user-interface thread only; nothing is locked.
#pragma once

#include <memory>
#include <vector>

#include "qvr/export.h"
#include "qvr/model/dcmObject.h"
#include "qvr/model/dcmStudy.h"
#include "qvr/model/dcmWorklist.h"
#include "qvr/model/residentSeries.h"
#include "qvr/platform/types.h"

class QVR_API dcmExam : public dcmObject {
public:
    dcmExam();
    dcmExam(const dcmExam&) = delete;
    dcmExam& operator=(const dcmExam&) = delete;
    ~dcmExam() override;

    // --- studies, series, worklist entries: created objects belong to the exam and live as long as it -----------

    /// @return null for null or without memory
    dcmStudy* CreateStudy(const QVR_ST_STUDY* record, dcmStudy::Modality modality);
    dcmStudy* GetStudy(int position) const;
    int GetStudyCount() const { return static_cast<int>(m_Studies.size()); }
    /// @return null without the study, and as dcmStudy::CreateSeries
    dcmSeries* CreateSeries(int study, const QVR_ST_SERIES* record);
    /// @return the new protocol; null without the series, and as dcmSeries::CreateProtocol
    dcmProtocol* CreateProtocol(int study, int series, const QVR_ST_PROTOCOL* record);
    /// @return null for null or without memory
    dcmWorklist* CreateWorklist(const QVR_ST_WORKLIST* record);
    dcmWorklist* GetWorklist(int position) const;
    int GetWorklistCount() const { return static_cast<int>(m_Worklists.size()); }

    // --- images ------------------------------------------------------------------------------------------------

    /// A new image from acquired pixels (dcmSeries::CreateImage), counted as resident. When five are, the newest of them
    /// is written out first, whether or not this acquisition then succeeds.
    /// @return the image entity; null, with nothing changed, for a missing series, for a null record, directory or
    ///         rectangle, and when there is no memory to copy pixels that lie in the image that would leave; null as
    ///         dcmSeries::CreateImage, whose image may then be resident without being counted
    dcmImage* CreateImage(int study, int series, const QVR_ST_IMAGE* record, const char* directory,
                          const RECT* rectangle, CDC* surface);
    /// An image from stored files, read into memory when that is possible (never with a null or empty rectangle) and then
    /// counted; makes room as CreateImage.
    /// @return the image entity, resident or not; null for a missing series and as dcmSeries::OpenImage
    dcmImage* OpenImage(int study, int series, const QVR_ST_IMAGE* record, const RECT* rectangle,
                        CDC* surface);
    /// Makes an image resident. When five are, the oldest of them is written out first.
    /// @return 1, also when the series has no image or it is resident already; 0, with nothing changed, for a missing
    ///         series, a null or empty rectangle and when the oldest cannot be written, also since the host wrote it out behind
    ///         the exam's back (dcmStudy::WriteImageToHDD: read it again, or reject it); 0 when the image cannot be read
    int ActivateImage(int study, int series, const RECT* rectangle, CDC* surface);
    /// Draws the image; black for a missing series; nothing for a missing study.
    void DrawImage(int study, int series, const RECT* rectangle, CDC* surface);
    /// Takes the series from the list of resident ones, then rejects its image (dcmSeries::RejectImage); a series that
    /// refuses keeps its image, no longer counted.
    int RejectImage(int study, int series);
    /// Sets the curve of every series of a study; nothing is rebuilt.
    void SetLUT(int study, int type, int k, int c);

    // --- resident series ---------------------------------------------------------------------------------------

    /// The series at a position of the list, oldest first; null for a position that does not exist.
    dcmSeries* GetSeriesInRAM(int position) const;
    int GetSeriesInRAMCount() const;
    /// 1 when five or more series are counted.
    int IsRAMFull() const;
    /// Reads a series' image into memory and counts it, without any limit: ask IsRAMFull first. A series of another exam is
    /// counted as well, by its address: it must live as long as it is counted.
    int ReadSeriesInRAM(dcmSeries* series, const RECT* rectangle, CDC* surface);
    /// Writes a counted series out and takes it from the list.
    /// @return 0, with the list as it was, for a series that is not counted (its address is only compared) and when it
    ///         cannot be written: it then stays in memory
    int WriteSeriesToHDD(dcmSeries* series);
    /// Gives every counted series a new display rectangle: fitted view, thumbnail and preview.
    void UpdateImageInRAM(const RECT* rectangle, CDC* surface);

private:
    dcmSeries* find(int study, int series) const;

    std::vector<std::unique_ptr<dcmWorklist>> m_Worklists;
    std::vector<std::unique_ptr<dcmStudy>> m_Studies;
    qvr::ResidentSeries m_SeriesInRAM;  // addresses only: every series belongs to its study
};
