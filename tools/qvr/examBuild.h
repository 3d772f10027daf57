// An exam folder made from images, as a console makes one from exposures.
//
// The order of things keeps every exposure findable, at whatever moment the program is killed: room is made in memory,
// the oldest image first, and nothing is taken in when that write fails; then the exam file names the new image with
// the size and checksum of its files; then the library writes the raw copy.
//
// An exam that is replaced stays as it is until the new one is whole: that one is built in a folder beside its files.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>

#include "adoption.h"
#include "dicomRecords.h"
#include "display.h"
#include "examFolder.h"
#include "examLock.h"
#include "windowChoice.h"

namespace qvr::tool {

class ExamBuilder {
public:
    /// Nothing is written before the first image.
    explicit ExamBuilder(ExamFolder folder);

    ~ExamBuilder();  ///< an exam that was to replace another and was not put in place is gone
    ExamBuilder(const ExamBuilder&) = delete;
    ExamBuilder& operator=(const ExamBuilder&) = delete;

    /// Refuses a folder that holds an exam already, is in use or cannot be written. @throws Failure
    /// @param force  an exam is replaced
    void checkFolder(bool force);
    /// Refuses input files that belong to the exam that is replaced. @throws Failure
    void checkInputs(const std::vector<std::string>& files) const;

    /// Takes an image in; it is resident afterwards.
    /// @throws Failure when this image is not fit for it, StopFailure when the folder cannot be written
    void add(DicomRecords records, const AdoptedImage& image, const Window& window, const Curve& curve);

    /// Writes out what is resident and brings the exam file up to date, also after Ctrl-C. Without an image nothing stays.
    /// @return UIDs that could not be written out: their raw copies are there
    std::vector<std::string> finish();
    /// Replaces the exam that was there; without one, nothing is left to do.
    /// @param complete  every input was taken in; otherwise an exam with an image that the new one lacks is kept
    /// @return UIDs that the new one lacks @throws Failure, mostly with that exam as it was: the sentence says so
    std::set<std::string> putInPlace(bool complete);
    /// There is an exam that is replaced.
    bool replaces() const { return m_replaces; }
    /// What a sentence about a failure says of the images that are there.
    std::string kept(const std::string& ofNewExam) const;

    bool holds(const std::string& uid) const { return m_series.contains(uid); }
    const ExamRecord& record() const { return m_record; }
    dcmExam& exam() { return m_exam; }

private:
    void checkImage(const QVR_ST_IMAGE& image) const;
    void enter();
    void begin();
    void checkPatient(const DicomRecords& records) const;
    void makeRoom();
    void leaveNothing();
    bool writeOut(dcmSeries* series);
    int studyFor(const DicomRecords& records);
    void create(int study, const SeriesRecord& series, const std::uint16_t* pixels);
    ImageRecord& recordOf(const dcmSeries* series);
    void takeStates();

    ExamFolder m_folder;
    ExamFolder m_place;  // where the exam is written: m_folder, or a folder in it
    std::unique_ptr<ExamLock> m_lock;
    dcmExam m_exam;
    CRasterDC m_surface{1, 1};                   // the pictures are made in memory
    ExamRecord m_record;                         // its studies are those of m_exam, in the same order
    std::vector<std::string> m_firstFiles;       // of each study
    std::map<std::string, dcmSeries*> m_series;  // by SOP Instance UID
    bool m_begun = false;
    bool m_force = false;
    bool m_fresh = false;     // the folder was not there before
    bool m_replaces = false;  // it holds an exam
};

}  // namespace qvr::tool
