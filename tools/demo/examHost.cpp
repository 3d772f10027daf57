// Records go in, and what comes out is compared with them: the host trusts no answer that it can check.
#include "tools/demo/examHost.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "tools/demo/bitmaps.h"
#include "tools/demo/check.h"
#include "tools/qvr/examFolder.h"

namespace qvr {
namespace {

constexpr const char* kStudyUID = "2.25.7000";
constexpr const char* kAccessionNumber = "A-2024-017";

std::string windowText(const dcmImage& image) {
    return "window " + std::to_string(image.GetWindowCenter()) + "/" + std::to_string(image.GetWindowWidth());
}

std::string sizeText(const CDib& bitmap) {
    return std::to_string(sizeOf(bitmap).cx) + " x " + std::to_string(sizeOf(bitmap).cy);
}

/// A thumbnail pixel is the mean of four by four display pixels out of five by five.
bool isThumbnailOf(const CDib& thumb, const CDib& display) {
    const int width = std::min(sizeOf(thumb).cx, sizeOf(display).cx / 5);
    for (int row = 0; row < sizeOf(thumb).cy; ++row) {
        for (int column = 0; column < width; ++column) {
            int sum = 0;
            for (int i = 0; i < 16; ++i) sum += greyAt(display, 5 * column + i % 4, 5 * row + i / 4);
            if (greyAt(thumb, column, row) != sum / 16) return false;
        }
    }
    return width > 0;
}

}  // namespace

ExamHost::ExamHost(std::filesystem::path folder, const std::vector<Sample>& samples, ContactSheet& sheet)
    : m_folder(std::move(folder)),
      m_samples(samples),
      m_sheet(sheet),
      m_residency(m_exam),
      m_screen(kExamWindow.cx, kExamWindow.cy),
      m_window(m_screen.rectangle()) {
    makeFolder(m_folder / "protocols");
}

dcmSeries& ExamHost::series(int position) {
    dcmStudy* study = m_exam.GetStudy(0);
    dcmSeries* found = study ? study->GetSeries(position) : nullptr;
    require(found != nullptr, "series " + std::to_string(position + 1) + " is not in the study");
    return *found;
}

rawImage& ExamHost::raw(int position) {
    dcmImage* image = series(position).GetDcmImage();
    require(image && image->GetRawImage(), "series " + std::to_string(position + 1) + " has no image");
    return *image->GetRawImage();
}

std::string ExamHost::uid(int position) const {
    return std::string(kStudyUID) + "." + std::to_string(position + 1) + ".1";
}

std::filesystem::path ExamHost::pictogram(int position) const {
    return m_folder / "protocols" / (sample(position).name + ".bmp");
}

void ExamHost::plan() {
    QVR_ST_WORKLIST scheduled;
    scheduled.Modality = "DX";
    scheduled.StudyInstanceUID = kStudyUID;
    scheduled.AccessionNumber = kAccessionNumber;
    scheduled.PatientName = "Sample^Patient";
    scheduled.PatientID = "P-0001";
    scheduled.ReqProcDescription = "Radiographs of a sample patient";
    dcmWorklist* entry = m_exam.CreateWorklist(&scheduled);
    require(entry && m_exam.GetWorklist(0) == entry, "the worklist entry could not be created");
    entry->SetReqProcCode("RADIO", "Radiography", "99DEMO", "1");

    QVR_ST_STUDY record;
    record.StudyInstanceUID = entry->GetStudyInstanceUID();
    record.AccessionNumber = entry->GetAccessionNumber();
    record.StudyDescription = entry->GetReqProcDescription();
    record.PatientFamilyName = "Sample";
    record.PatientGivenName = "Patient";
    record.PatientID = entry->GetPatientID();
    const dcmStudy* study = m_exam.CreateStudy(&record, dcmStudy::DX);
    require(study && m_exam.GetStudyCount() == 1, "the study could not be created");
    require(CString(study->GetPatientName()) == entry->GetPatientName() &&
                CString(study->GetAccessionNumber()) == kAccessionNumber,
            "the study does not carry the patient and the number of the worklist entry");

    for (int i = 0; i < count(); ++i) planSeries(i);
    tell(std::string("worklist entry ") + entry->GetAccessionNumber(),
         std::string(study->GetPatientName()) + ", " + std::to_string(count()) +
             " series, each shows its protocol's bitmap");
}

void ExamHost::planSeries(int position) {
    std::string body = sample(position).name.substr(0, sample(position).name.find('-'));
    for (char& letter : body) letter = static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
    QVR_ST_SERIES record;
    record.Modality = "DX";
    record.SeriesInstanceUID = (std::string(kStudyUID) + "." + std::to_string(position + 1)).c_str();
    record.SeriesNumber = position + 1;
    record.BodyPartExamined = body.c_str();
    record.PresentationIntentType = "FOR PRESENTATION";
    require(m_exam.CreateSeries(0, &record) == &series(position), "a series could not be created");

    writePictogram(body + " " + std::to_string(position + 1), pictogram(position));
    QVR_ST_PROTOCOL protocol;
    protocol.AnatomyName = body.c_str();
    protocol.KVP = 60.0;
    protocol.ThumbFilePath = pictogram(position).c_str();
    require(m_exam.CreateProtocol(0, position, &protocol) != nullptr, "a protocol could not be created");
    checkProtocolShown(position);
}

void ExamHost::checkProtocolShown(int position) {
    const CDib* shown = series(position).GetThumb();
    CDib file;
    readBitmap(file, pictogram(position));
    require(shown && sameBitmap(*shown, file),
            sample(position).name + ": the series does not show its protocol's bitmap");
}

void ExamHost::makeRoom() {
    while (m_exam.IsRAMFull()) writeOut(m_residency.oldest());
}

void ExamHost::writeOut(int position) {
    require(m_exam.WriteSeriesToHDD(&series(position)),
            std::string(series(position).GetImageFilePath()) +
                " could not be written: is there room? The image stays in memory");
    m_residency.left(position);
}

void ExamHost::acquire(int position) {
    const Sample& exposure = sample(position);
    makeRoom();
    QVR_ST_IMAGE record;
    record.SOPInstanceUID = uid(position).c_str();
    record.InstanceNumber = 1;
    record.ContentDateTime = COleDateTime(2024, 5, 31, 9, position % 60, 0);
    record.Width = exposure.width;
    record.Height = exposure.height;
    record.BitsStored = 14;
    record.HighBit = 13;
    record.PixelData = exposure.pixels.data();

    writeBook(position, record);
    const Stopwatch stopwatch;
    dcmImage* image = m_exam.CreateImage(0, position, &record, m_folder.c_str(), &m_window, surface());
    require(image != nullptr,
            exposure.name + ": not acquired: is " + m_folder.string() + " writable, and is there room?");
    m_residency.came(position);
    const std::string spent = stopwatch.text();
    if (const auto middle =
            windowOfTheMiddle(exposure, image->GetWindowCenter() + image->GetWindowWidth() / 2)) {
        require(series(position).UpdateImage(middle->width, middle->center, surface()),
                exposure.name + ": the window of the middle could not be set");
    }
    require(series(position).GetSeriesDateTime() == record.ContentDateTime,
            exposure.name + ": the series did not take the time of its image");
    checkRawCopy(position);
    checkPictures(position);
    const CDib* preview = series(position).GetPreview();
    tell(exposure.name + " acquired",
         windowText(*image) + ", thumbnail " + sizeText(*series(position).GetThumb()) +
             (preview ? ", preview " + sizeText(*preview) : ", no preview") + ", " + spent);
}

// Before the image's files come into being: whenever the process ends, every file in the cache has its entry.
void ExamHost::writeBook(int position, const QVR_ST_IMAGE& record) {
    if (m_book.studies.empty()) m_book.studies.emplace_back();
    tool::SeriesRecord entry;
    entry.attributes.SeriesInstanceUID = series(position).GetSeriesInstanceUID();
    entry.attributes.SeriesNumber = position + 1;
    entry.attributes.SeriesDateTime = record.ContentDateTime;
    entry.image.attributes = record;
    entry.image.attributes.PixelData = nullptr;
    const auto count = static_cast<std::size_t>(record.Width) * static_cast<std::size_t>(record.Height);
    entry.image.rawCopy = {record.Width, record.Height, tool::checksumOf(record.PixelData, count)};
    m_book.studies.front().series.push_back(std::move(entry));
    tool::ExamFolder(m_folder.string()).write(m_book);
}

void ExamHost::strikeFromBook(int position) {
    std::erase_if(m_book.studies.front().series, [&](const tool::SeriesRecord& entry) {
        return entry.image.attributes.SOPInstanceUID == uid(position).c_str();
    });
    tool::ExamFolder(m_folder.string()).write(m_book);
}

void ExamHost::checkRawCopy(int position) {
    const Sample& exposure = sample(position);
    const std::string path = series(position).GetImageBAKFilePath();
    std::vector<std::uint16_t> copy(exposure.pixels.size());
    require(QVR_COMP_ReadRAWFile(path.c_str(), exposure.width, exposure.height, copy.data()),
            path + ": the raw copy cannot be read");
    require(copy == exposure.pixels, path + ": the raw copy does not hold the pixels that were acquired");
}

void ExamHost::checkPictures(int position) {
    const std::string& name = sample(position).name;
    const CDib* display = raw(position).GetDIB();
    const CDib* thumb = series(position).GetThumb();
    require(display && thumb && isThumbnailOf(*thumb, *display),
            name + ": the thumbnail is not a fifth of what is displayed");
    const CSize size = sizeOf(*display);
    const CDib* preview = series(position).GetPreview();
    require((preview != nullptr) == (size.cx * size.cy > 600000),
            name + ": only large displays have a preview");
    require(!preview || std::max(sizeOf(*preview).cx, sizeOf(*preview).cy) == 600,
            name + ": the preview is not 600 pixels long");
}

void ExamHost::open(int position, const QVR_ST_IMAGE& record) {
    makeRoom();
    require(m_exam.OpenImage(0, position, &record, &m_window, surface()) != nullptr,
            sample(position).name + ": the stored image could not be opened");
    m_residency.came(position);
    checkPictures(position);
}

void ExamHost::activate(int position) {
    const bool resident = series(position).IsImageInRAM() != 0;
    if (!resident && m_exam.IsRAMFull()) m_residency.left(m_residency.oldest());
    require(m_exam.ActivateImage(0, position, &m_window, surface()),
            sample(position).name + ": could not be brought into memory");
    if (!resident) m_residency.came(position);
}

void ExamHost::reject(int position) {
    const std::string imageFile = series(position).GetImageFilePath();
    const std::string rawCopy = series(position).GetImageBAKFilePath();
    require(m_exam.RejectImage(0, position), sample(position).name + ": could not be rejected");
    strikeFromBook(position);
    m_residency.left(position);
    require(!series(position).IsImageExist(), sample(position).name + ": is still there after its rejection");
    for (const auto& file : {imageFile, rawCopy}) {
        require(!std::filesystem::exists(file), file + ": is still there after the rejection");
    }
    checkProtocolShown(position);
}

const std::vector<std::uint32_t>& ExamHost::show(int position) {
    m_screen.surface().FillSolidRect(&m_window, 0x0000FF);  // what is not drawn would be seen, and compared
    m_exam.DrawImage(0, position, &m_window, surface());
    return m_screen.pixels();
}

void ExamHost::keep(const std::string& name, const std::string& result) {
    const auto path = m_folder / (name + ".png");
    m_screen.save(path);
    m_sheet.add(m_screen, name);
    tell(path.string(), result);
}

}  // namespace qvr
