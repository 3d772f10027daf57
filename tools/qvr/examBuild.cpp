// One image after the other into the exam folder.
#include "examBuild.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "errors.h"
#include "examExchange.h"
#include "examTree.h"
#include "personName.h"
#include "safeFile.h"

namespace qvr::tool {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void notBuilt(const ExamFolder& folder, const std::string& why, const std::string& advice) {
    throw Failure(Exit::notWritten, folder.path(), "not built", why, advice);
}

std::string parentOf(const std::string& path) {
    const auto parent = fs::path(path).parent_path();
    return parent.empty() ? "." : parent.string();
}

// UIDs of the exam that is there; an exam file that cannot be read names none.
std::set<std::string> namedIn(const ExamFolder& folder) {
    std::set<std::string> uids;
    try {
        ExamRecord record = folder.read();
        for (const auto& image : imagesOf(record)) uids.insert(image.uid());
    } catch (const Failure&) {
    }
    return uids;
}

// What differs between the patients of a study and of an image; nothing when they are one.
const char* otherPatient(const StudyRecord& known, const DicomRecords& records) {
    const auto &a = known.attributes, &b = records.study;
    if (!(a.PatientID == b.PatientID)) return "patient ID";
    if (!samePerson(known.patientName, records.patientName)) return "patient name";
    const auto born = [](const QVR_ST_STUDY& study) {
        return study.PatientBirthDateValid ? dateText(study.PatientBirthDate) : std::string();
    };
    return born(a) == born(b) ? nullptr : "birth date";
}

// Without a UID, images are of one study when nothing that tells studies apart differs.
bool sameStudy(const StudyRecord& known, const DicomRecords& records) {
    const auto &a = known.attributes, &b = records.study;
    if (!(a.StudyInstanceUID == b.StudyInstanceUID)) return false;
    if (!a.StudyInstanceUID.IsEmpty()) return true;
    const auto date = [](const QVR_ST_STUDY& study) {
        return study.StudyDateTime.GetStatus() == COleDateTime::valid ? dateText(study.StudyDateTime)
                                                                      : std::string();
    };
    return !otherPatient(known, records) && a.PatientSex == b.PatientSex && a.StudyID == b.StudyID &&
           a.AccessionNumber == b.AccessionNumber && date(a) == date(b);
}

// The library only says that it failed.
std::string whyNotWritten(const ExamFolder& place, const PixelFileRecord& file) {
    const double needed = static_cast<double>(file.bytes());
    const double space = freeSpace(place.cache());
    if (space < needed) return noSpaceText(needed, space);
    return fmt::format("the write of {} failed, or memory is short", readableSize(needed));
}

// What is there under a name of the exam and is neither a link nor of another kind.
void checkOwnName(const ExamFolder& folder, const std::string& path, fs::file_type wanted) {
    std::error_code error;
    const auto type = fs::symlink_status(path, error).type();
    if (type == fs::file_type::not_found || type == wanted) return;
    throw Failure(Exit::refused, folder.path(), "not built",
                  fmt::format("its {} is {}", fs::path(path).filename().string(),
                              type == fs::file_type::symlink       ? "a link"
                              : wanted == fs::file_type::directory ? "no folder"
                                                                   : "no ordinary file"),
                  "Name another folder.");
}

}  // namespace

ExamBuilder::ExamBuilder(ExamFolder folder) : m_folder(std::move(folder)), m_place(m_folder) {}

ExamBuilder::~ExamBuilder() {
    std::error_code error;
    if (m_place.path() != m_folder.path()) fs::remove_all(m_place.path(), error);
}

void ExamBuilder::checkFolder(bool force) {
    m_force = force;
    std::error_code error;
    const auto status = fs::status(m_folder.path(), error);
    if (status.type() == fs::file_type::not_found) {
        const std::string parent = parentOf(m_folder.path());
        if (!fs::is_directory(parent, error))
            notBuilt(m_folder, fmt::format("there is no folder {}", parent), "Make it first.");
        if (access(parent.c_str(), W_OK) != 0)
            notBuilt(m_folder, fmt::format("nothing may be written into the folder {}", parent),
                     "Check its permissions.");
        return;
    }
    if (status.type() == fs::file_type::none) notBuilt(m_folder, error.message(), "Name another one.");
    if (status.type() != fs::file_type::directory) notBuilt(m_folder, "it is no folder", "Name another one.");
    if (access(m_folder.path().c_str(), W_OK) != 0)
        notBuilt(m_folder, "nothing may be written into it", "Check its permissions.");
    enter();
}

// From here on nobody else writes into the folder, so what is found in it stays so.
void ExamBuilder::enter() {
    m_lock = std::make_unique<ExamLock>(m_folder.path(), ExamLock::Use::writing);
    checkOwnName(m_folder, m_folder.examFile(), fs::file_type::regular);
    checkOwnName(m_folder, m_folder.cache(), fs::file_type::directory);
    checkOwnName(m_folder, m_folder.exchange(), fs::file_type::directory);
    m_replaces = m_folder.hasExamFile() || !m_folder.cacheNames().empty() || m_folder.inExchange();
    if (m_replaces && !m_force)
        throw Failure(Exit::refused, m_folder.path(), "not built", "it holds an exam already",
                      "Use --force to replace it.");
    if (m_folder.hasCache() && access(m_folder.cache().c_str(), W_OK) != 0)
        notBuilt(m_folder, "nothing may be written into its Cache", "Check its permissions.");
    finishExchange(m_folder);
}

void ExamBuilder::checkInputs(const std::vector<std::string>& files) const {
    if (!m_replaces) return;
    const ExamFiles own(m_folder);
    for (const auto& file : files)
        if (own.hold(file))
            throw Failure(Exit::refused, m_folder.path(), "not built",
                          fmt::format("the input {} is one of the files that would be replaced", file),
                          "Name another folder.");
}

void ExamBuilder::begin() {
    std::error_code error;
    m_fresh = fs::create_directory(m_folder.path(), error);
    if (error)
        throw StopFailure(Exit::notWritten, m_folder.path(), "not built", error.message(),
                          "Nothing was changed.");
    try {
        if (!m_lock) enter();
    } catch (const Failure& failure) {
        throw StopFailure(failure);
    }
    if (m_replaces) {
        std::string pattern = m_folder.path() + "/.qvr-XXXXXX";
        if (!mkdtemp(pattern.data()))
            throw StopFailure(Exit::notWritten, m_folder.path(), "not built", std::strerror(errno),
                              "Nothing was changed.");
        m_place = ExamFolder(pattern);
    }
    m_begun = true;
}

std::string ExamBuilder::kept(const std::string& ofNewExam) const {
    return m_replaces ? "The exam that was there is kept as it was." : ofNewExam;
}

void ExamBuilder::checkImage(const QVR_ST_IMAGE& image) const {
    const std::string uid = image.SOPInstanceUID.GetString();
    if (const auto reason = unusableInExam(uid); !reason.empty())
        throw Failure(Exit::refused, "", "refused",
                      uid.empty()
                          ? "its SOP Instance UID is missing, so its files have no name"
                          : fmt::format("SOP Instance UID \"{}\" {}, so it cannot name a file", uid, reason),
                      "Use --new-uid.");
    if (holds(uid))
        throw Failure(Exit::refused, "", "refused",
                      fmt::format("SOP Instance UID {} is that of an image taken before", uid),
                      "Use --new-uid if it is another image.");
    if (hasThumbnail({image.Width, image.Height}, m_record.display)) return;
    throw Failure(
        Exit::unsupported, "", "refused",
        fmt::format("{} x {} pixels, fitted into {} x {}, would be less than {} pixels wide or high",
                    image.Width, image.Height, m_record.display.cx, m_record.display.cy, kSmallestDisplay));
}

// A study shows the patient of its first image over all of them.
void ExamBuilder::checkPatient(const DicomRecords& records) const {
    for (std::size_t i = 0; i < m_record.studies.size(); ++i) {
        const auto& study = m_record.studies[i];
        const char* other = sameStudy(study, records) ? otherPatient(study, records) : nullptr;
        if (!other) continue;
        throw Failure(
            Exit::refused, "", "refused",
            fmt::format("it has the Study Instance UID of {}, but another {}", m_firstFiles[i], other),
            "Correct the UID, or build it into another exam.");
    }
}

ImageRecord& ExamBuilder::recordOf(const dcmSeries* series) {
    const auto images = imagesOf(m_record);
    const auto found = std::find_if(images.begin(), images.end(), [&](const ExamImage& image) {
        return m_series.at(image.uid()) == series;
    });
    return found->image();
}

void ExamBuilder::takeStates() {
    for (const auto& image : imagesOf(m_record))
        if (auto* series = m_series.at(image.uid())) takeState(*series, image.image());
}

// False when the image file cannot be written; the image is resident then as before.
bool ExamBuilder::writeOut(dcmSeries* series) {
    ImageRecord& image = recordOf(series);
    const rawImage& raw = *series->GetDcmImage()->GetRawImage();
    PixelFileRecord file{raw.GetWidth(), raw.GetHeight(), 0};
    if (!raw.GetPixelData()) return false;
    file.checksum = checksumOf(raw.GetPixelData(), file.bytes() / 2);
    if (!m_exam.WriteSeriesToHDD(series)) return false;
    image.imageFile = file;
    image.attributes.Width = file.columns;
    image.attributes.Height = file.rows;
    return true;
}

// The library would write out the newest image and take the new one whatever becomes of that write.
void ExamBuilder::makeRoom() {
    while (m_exam.IsRAMFull()) {
        dcmSeries* oldest = m_exam.GetSeriesInRAM(0);
        if (writeOut(oldest)) continue;
        const std::string uid = recordOf(oldest).attributes.SOPInstanceUID.GetString();
        throw StopFailure(Exit::notWritten, m_folder.imageFile(uid), "not written",
                          whyNotWritten(m_place, recordOf(oldest).rawCopy) + "; no further image is taken in",
                          kept(fmt::format("Then use qvr cache check {} --repair.", m_folder.path())));
    }
}

int ExamBuilder::studyFor(const DicomRecords& records) {
    for (std::size_t i = 0; i < m_record.studies.size(); ++i) {
        auto& study = m_record.studies[i];
        if (study.modality != records.kind || !sameStudy(study, records)) continue;
        // Otherwise images that each share a group with the first one could be of several persons.
        study.patientName = completeName(study.patientName, records.patientName);
        return static_cast<int>(i);
    }
    if (!m_exam.CreateStudy(&records.study, records.kind))
        throw StopFailure(Exit::internal, m_folder.path(), "not built", "there is not enough memory");
    m_record.studies.push_back({records.study, records.patientName, records.kind, {}});
    m_firstFiles.push_back(records.file);
    return m_exam.GetStudyCount() - 1;
}

void ExamBuilder::create(int study, const SeriesRecord& series, const std::uint16_t* pixels) {
    const std::string uid = series.image.attributes.SOPInstanceUID.GetString();
    QVR_ST_IMAGE image = series.image.attributes;
    image.PixelData = pixels;
    const RECT display = displayOf(m_record);
    dcmSeries* made = m_exam.CreateSeries(study, &series.attributes);
    const int position = m_exam.GetStudy(study)->GetSeriesCount() - 1;
    if (made && m_exam.CreateImage(study, position, &image, m_place.path().c_str(), &display, &m_surface)) {
        m_series[uid] = made;
        restoreState(*made, series.image, display, m_surface);
        return;
    }
    // What was begun goes, so that no half file stays behind a name that the exam file does not know.
    std::error_code error;
    fs::remove(m_place.rawCopy(uid), error);
    m_series.erase(uid);
    m_record.studies[static_cast<std::size_t>(study)].series.pop_back();
    throw StopFailure(Exit::notWritten, m_folder.rawCopy(uid), "not written",
                      whyNotWritten(m_place, series.image.rawCopy),
                      kept("The images taken before are kept."));
}

void ExamBuilder::add(DicomRecords records, const AdoptedImage& image, const Window& window,
                      const Curve& curve) {
    auto& attributes = records.image;
    attributes.Width = attributes.BAKWidth = image.width;
    attributes.Height = attributes.BAKHeight = image.height;
    attributes.BitsStored = kAdoptedBits;
    attributes.HighBit = kAdoptedBits - 1;
    attributes.WindowCenter = window.center;
    attributes.WindowWidth = window.width;
    checkImage(attributes);
    checkPatient(records);

    if (!m_begun) begin();
    makeRoom();
    const int study = studyFor(records);
    SeriesRecord series{
        records.series,
        {attributes, records.exposureIndex, curve.type, curve.k, curve.c, {}, {}, {}, records.history}};
    series.image.rawCopy = {image.width, image.height, checksumOf(image.pixels.data(), image.pixels.size())};
    m_record.studies[static_cast<std::size_t>(study)].series.push_back(series);
    m_series[attributes.SOPInstanceUID.GetString()] = nullptr;
    takeStates();
    try {
        m_place.write(m_record);
    } catch (const Failure& failure) {
        m_series.erase(attributes.SOPInstanceUID.GetString());
        m_record.studies[static_cast<std::size_t>(study)].series.pop_back();
        throw StopFailure(failure);
    }
    create(study, series, image.pixels.data());
}

std::vector<std::string> ExamBuilder::finish() {
    if (!m_begun) return {};
    if (m_series.empty()) {
        leaveNothing();
        return {};
    }
    std::vector<std::string> left;
    takeStates();
    m_place.write(m_record);  // what comes next may fill the disk
    for (int position = 0; position < m_exam.GetSeriesInRAMCount();) {
        dcmSeries* series = m_exam.GetSeriesInRAM(position);
        if (writeOut(series)) continue;
        left.push_back(recordOf(series).attributes.SOPInstanceUID.GetString());
        ++position;
    }
    try {
        m_place.write(m_record);
    } catch (const Failure&) {
        if (left.empty())
            throw Failure(
                Exit::notWritten, m_folder.path(), "not finished",
                fmt::format("the exam file was not written again ({} are free)",
                            readableSize(freeSpace(m_place.path()))),
                kept(fmt::format("All images are there. Use qvr cache check {} --repair.", m_folder.path())));
    }
    return left;
}

// Nothing was taken in, so nothing stays; a folder that is not empty is not removed.
void ExamBuilder::leaveNothing() {
    if (m_replaces) return;
    std::error_code error;
    fs::remove(m_folder.examFile(), error);
    fs::remove(m_folder.cache(), error);
    if (m_fresh) fs::remove(m_folder.path(), error);
}

std::set<std::string> ExamBuilder::putInPlace(bool complete) {
    if (!m_replaces || m_series.empty()) return {};
    auto uids = m_folder.hasExamFile() ? namedIn(m_folder) : std::set<std::string>();
    for (const auto& [uid, series] : m_series) uids.erase(uid);
    if (!complete && !uids.empty())
        throw Failure(
            Exit::refused, m_folder.path(), "not built",
            fmt::format("files failed, and {} of the exam that is there would not be in the new one",
                        uids.size() == 1 ? "an image" : "images"),
            "Mend those files or take them away. " + kept(""));
    exchangeExam(m_folder, m_place);
    m_place = m_folder;
    return uids;
}

}  // namespace qvr::tool
