// An exam folder made from images, as a console makes one from exposures.
//
// The order of things keeps every exposure findable, at whatever moment the program is killed: room is made in memory,
// the oldest image first, and nothing is taken in when that write fails; then the exam file names the new image with
// the size and checksum of its files; then the library writes the raw copy.
#pragma once

#include <map>
#include <optional>
#include <set>

#include "adoption.h"
#include "dicomRecords.h"
#include "display.h"
#include "examFolder.h"
#include "windowChoice.h"

namespace qvr::tool {

class ExamBuilder {
public:
    /// Nothing is written before the first image.
    explicit ExamBuilder(ExamFolder folder);

    /// Refuses a folder that holds an exam already, or cannot be written. @throws Failure
    /// @return UIDs of an exam that was there and is replaced
    std::set<std::string> checkFolder(bool force) const;

    /// Takes an image in; it is resident afterwards.
    /// @throws Failure when this image is not fit for it, StopFailure when the folder cannot be written
    void add(DicomRecords records, const AdoptedImage& image, const Window& window, const Curve& curve);

    /// Writes out what is resident and brings the exam file up to date, also after Ctrl-C.
    /// @return UIDs that could not be written out: their raw copies are there
    std::vector<std::string> finish();

    bool holds(const std::string& uid) const { return m_series.contains(uid); }
    const ExamRecord& record() const { return m_record; }
    dcmExam& exam() { return m_exam; }

private:
    void checkImage(const QVR_ST_IMAGE& image) const;
    void checkPatient(const DicomRecords& records) const;
    void makeRoom();
    bool writeOut(dcmSeries* series);
    int studyFor(const DicomRecords& records);
    void create(int study, const SeriesRecord& series, const std::uint16_t* pixels);
    ImageRecord& recordOf(const dcmSeries* series);
    void takeStates();

    ExamFolder m_folder;
    dcmExam m_exam;
    CRasterDC m_surface{1, 1};                   // the pictures are made in memory
    ExamRecord m_record;                         // its studies are those of m_exam, in the same order
    std::vector<std::string> m_firstFiles;       // of each study
    std::map<std::string, dcmSeries*> m_series;  // by SOP Instance UID
    bool m_begun = false;
    bool m_fresh = false;  // the folder was not there before
};

}  // namespace qvr::tool
