// The road. Failures are answered as a careful console answers them: it goes on, and never throws away what the library
// did not say it has.
#include "tests/faults/road.h"

#include "tests/faults/faults.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace road {

namespace {

constexpr int kPixels = kWidth * kHeight;
constexpr int kGenerations = 64;

std::vector<char> bytesOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Burned marks change few pixels; two generations differ in nearly all.
bool matches(const std::uint16_t* pixels, std::size_t count, int generation) {
    const auto expected = pixelsOf(generation);
    std::size_t same = 0;
    for (std::size_t i = 0; i < count; ++i) same += pixels[i] == expected[i] || pixels[i] == 16383;
    return same == count &&
           std::count(pixels, pixels + count, std::uint16_t{16383}) * 2 <= static_cast<long>(count);
}

}  // namespace

std::vector<std::uint16_t> pixelsOf(int generation) {
    std::vector<std::uint16_t> pixels(kPixels);
    for (int i = 0; i < kPixels; ++i)
        pixels[static_cast<std::size_t>(i)] =
            static_cast<std::uint16_t>(100 + generation * 200 + i * 7 % 151);
    return pixels;
}

std::vector<std::string> filesBelow(const std::string& folder) {
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder))
        if (entry.is_regular_file()) files.push_back(entry.path().string());
    return files;
}

bool holds(const std::string& path, int generation, bool prefixAllowed) {
    const auto bytes = bytesOf(path);
    if (bytes.size() % 2 != 0 && !prefixAllowed) return false;
    std::vector<std::uint16_t> pixels(bytes.size() / 2);
    std::copy_n(bytes.data(), pixels.size() * 2, reinterpret_cast<char*>(pixels.data()));
    if (pixels.size() != kPixels && !(prefixAllowed && pixels.size() < kPixels)) return false;
    return matches(pixels.data(), pixels.size(), generation);
}

Walk::Walk(std::string folder, Progress* progress)
    : m_folder(std::move(folder)),
      m_progress(progress),
      m_surface(96, 80),
      m_exam(std::make_unique<dcmExam>()) {}

Walk::~Walk() = default;

void Walk::end() {
    m_exam.reset();
}

dcmSeries* Walk::seriesOf(const Exposure& exposure) const {
    const dcmStudy* const study = m_exam->GetStudy(exposure.study);
    return study ? study->GetSeries(exposure.series) : nullptr;
}

rawImage* Walk::rawOf(const Exposure& exposure) const {
    const dcmSeries* const series = seriesOf(exposure);
    dcmImage* const image = series ? series->GetDcmImage() : nullptr;
    return image ? image->GetRawImage() : nullptr;
}

void Walk::run() {
    plan();
    for (int i = 0; i < kNewImages; ++i) acquire(i);
    openStored();
    look();
    edit();
    mark();
    undo();
    leaveAndReturn();
    exportImages();
    rejectOne();
    standalone();
}

void Walk::plan() {
    QVR_ST_WORKLIST entry;
    entry.PatientName = "Road^Long Enough To Be Allocated";
    if (dcmWorklist* const made = LIB(m_exam->CreateWorklist(&entry))) {
        LIB(made->SetReqProcCode("R-1234567890123456", "Hand", "99LOCAL", "1"));
        LIB(made->AddSPSCode("S-1234567890123456", "Hand PA", "99LOCAL", "1"));
    }
    QVR_ST_STUDY study;
    study.PatientFamilyName = "A family name longer than the small string buffer";
    study.StudyInstanceUID = "1.2.826.0.1.3680043.2.1125.1";
    LIB(m_exam->CreateStudy(&study, dcmStudy::CR));
    LIB(m_exam->CreateStudy(&study, dcmStudy::DX));
}

void Walk::acquire(int index) {
    Exposure exposure;
    exposure.study = index % 2;
    exposure.name = "1.2.826.0.1.3680043.2.1125.7." + std::to_string(index);
    exposure.acquired = index + 1;
    QVR_ST_SERIES record;
    record.SeriesDescription = "A description longer than the small string buffer";
    dcmStudy* const study = m_exam->GetStudy(exposure.study);
    dcmSeries* const series = LIB(m_exam->CreateSeries(exposure.study, &record));
    if (!study || !series) return;
    exposure.series = study->GetSeriesIndex(series);
    QVR_ST_PROTOCOL protocol;
    protocol.AnatomyName = "HAND";
    LIB(m_exam->CreateProtocol(exposure.study, exposure.series, &protocol));

    // A careful console makes room itself, and does not acquire when the oldest image cannot be made safe.
    if (m_exam->IsRAMFull() && !LIB(m_exam->WriteSeriesToHDD(m_exam->GetSeriesInRAM(0)))) return;
    m_pixels = pixelsOf(exposure.acquired);
    QVR_ST_IMAGE image;
    image.Height = kHeight;
    image.Width = kWidth;
    image.BitsStored = 14;
    image.HighBit = 13;
    image.PixelData = m_pixels.data();
    image.SOPInstanceUID = exposure.name.c_str();
    image.ImageLaterality = "L";
    exposure.safe = LIB(m_exam->CreateImage(exposure.study, exposure.series, &image, m_folder.c_str(),
                                            &m_rectangle, &m_surface)) != nullptr;
    exposure.current = {exposure.acquired};
    if (m_progress && exposure.safe) m_progress->state[exposure.acquired] = Progress::safe;
    m_exposures.push_back(exposure);
}

void Walk::openStored() {
    Exposure exposure;
    exposure.study = 1;
    exposure.name = "stored";
    exposure.acquired = 20;
    exposure.current = {20};
    const std::string path = m_folder + "/stored.raw";
    if (!std::filesystem::exists(path)) return;
    QVR_ST_SERIES record;
    dcmStudy* const study = m_exam->GetStudy(1);
    dcmSeries* const series = LIB(m_exam->CreateSeries(1, &record));
    if (!study || !series) return;
    exposure.series = study->GetSeriesIndex(series);
    const std::string work = m_folder + "/stored.work.raw";
    QVR_ST_IMAGE image;
    image.Height = kHeight;
    image.Width = kWidth;
    image.BitsStored = 14;
    image.HighBit = 13;
    image.FilePath = path.c_str();
    image.WorkFilePath = work.c_str();
    exposure.safe = LIB(m_exam->OpenImage(1, exposure.series, &image, &m_rectangle, &m_surface)) != nullptr;
    m_exposures.push_back(exposure);
}

void Walk::look() {
    for (const Exposure& exposure : m_exposures) {
        LIB(m_exam->ActivateImage(exposure.study, exposure.series, &m_rectangle, &m_surface));
        LIB(m_exam->DrawImage(exposure.study, exposure.series, &m_rectangle, &m_surface));
    }
    LIB(m_exam->UpdateImageInRAM(&m_rectangle, &m_surface));
}

void Walk::edit() {
    int generation = 30;
    for (Exposure& exposure : m_exposures) {
        dcmSeries* const series = seriesOf(exposure);
        LIB(series->SetLUT(4, 6, 5));
        LIB(series->UpdateImage(&m_surface));
        LIB(series->UpdateImage(700, 900, &m_surface));
        LIB(series->UpdateImage(1.0f, 1.0f, &m_rectangle, &m_surface));
        LIB(series->UpdateImage(3, 2, &m_rectangle, &m_surface));
        LIB(series->UpdateImage(&m_rectangle, &m_surface, 1));
        if (exposure.series != 0 || !exposure.safe) continue;
        // An update of an image on disk truncates its file: only images in memory are updated here.
        if (!series->IsImageInRAM()) continue;
        const auto pixels = pixelsOf(++generation);
        const int done =
            LIB(series->UpdateImage(kWidth, kHeight, pixels.data(), 14, 13, 0, 0, &m_rectangle, &m_surface));
        exposure.current = done ? std::vector{generation} : std::vector{exposure.current.front(), generation};
    }
}

void Walk::mark() {
    for (const Exposure& exposure : m_exposures) {
        rawImage* const image = rawOf(exposure);
        if (!image || image->GetMarkCount() > 0) continue;
        LIB(image->AddMark("L", &m_rectangle, &m_surface));
        LIB(image->InflateMark(0, &m_rectangle, &m_surface));
        LIB(image->MoveMark(0, 5, 5, &m_rectangle, &m_surface));
        LIB(image->SetMarkSelected(0));
        LIB(image->Draw(&m_rectangle, &m_surface));
        LIB(image->DeflateMark(0));
        break;
    }
}

void Walk::undo() {
    for (Exposure& exposure : m_exposures) {
        dcmSeries* const series = seriesOf(exposure);
        if (!series->IsImageInRAM() || !exposure.safe) continue;
        if (!LIB(series->SaveUndoData())) continue;
        const auto before = exposure.current;
        auto pixels = pixelsOf(50);
        LIB(series->UpdateImage(kWidth, kHeight, pixels.data(), 14, 13, 500, 400, &m_rectangle, &m_surface));
        exposure.current.push_back(50);
        if (LIB(series->ReadUndoData(&m_rectangle, &m_surface))) exposure.current = before;
        break;
    }
}

void Walk::leaveAndReturn() {
    for (const Exposure& exposure : m_exposures) {
        dcmSeries* const series = seriesOf(exposure);
        if (LIB(m_exam->WriteSeriesToHDD(series)))
            LIB(m_exam->ReadSeriesInRAM(series, &m_rectangle, &m_surface));
    }
}

void Walk::exportImages() {
    int number = 0;
    for (const Exposure& exposure : m_exposures) {
        rawImage* const image = rawOf(exposure);
        if (!image || number > 2) continue;
        const std::string base = m_folder + "/export" + std::to_string(number++);
        const std::string presentation = base + ".pres.raw";
        const std::string processing = base + ".proc.raw";
        LIB(image->WriteFileForPRES(presentation.c_str(), &m_surface));
        if (number == 1) LIB(image->WriteFileForPROC(processing.c_str()));
        CDib bitmap(20, 10, 8);
        if (LIB(bitmap.CreateSection(&m_surface)) && image->GetPixelData())
            LIB(rawImage::CreatePrintImage14Bits(kWidth, kHeight, image->GetPixelData(), 2, 3, 3000, 2000, 0,
                                                 1, 5, &bitmap));
    }
    for (const Exposure& exposure : m_exposures)
        if (exposure.name == "stored")
            if (rawImage* const image = rawOf(exposure)) LIB(image->WriteFileForPRES("", &m_surface));
}

void Walk::rejectOne() {
    for (Exposure& exposure : m_exposures) {
        if (exposure.name == "stored" || !exposure.safe) continue;
        if (m_progress) m_progress->state[exposure.acquired] = Progress::removing;
        if (LIB(m_exam->RejectImage(exposure.study, exposure.series))) exposure.rejected = true;
        return;
    }
}

void Walk::standalone() {
    const auto pixels = pixelsOf(60);
    CQVRImage image;
    const QVR_ST_QVR_IMAGE record{.Height = kHeight,
                                  .Width = kWidth,
                                  .BitsStored = 14,
                                  .HighBit = 13,
                                  .PixelSpacing = 0,
                                  .WindowCenter = 0,
                                  .WindowWidth = 0,
                                  .PixelData = pixels.data()};
    LIB(image.Create(&record));
    LIB(image.BuildDisplayImage(&m_rectangle, &m_surface, 1));
    LIB(image.Draw(&m_rectangle, &m_surface));
    LIB(image.FreeDraw({5, -3}, &m_rectangle, &m_surface));
    const CQVRImage copy = LIB(CQVRImage(image));
    LIB(image.Update(kWidth, kHeight, copy.GetPixelData(), 14, 13, 0, 0));
}

void Walk::checkEntity(const Exposure& exposure, std::string& complaints) const {
    const rawImage* const image = rawOf(exposure);
    if (!image) return;
    if (image->IsReadInRAM() != (image->GetPixelData() != nullptr))
        complaints += exposure.name + ": resident and pixels do not agree\n";
    if (image->GetDIB() && !image->IsReadInRAM()) complaints += exposure.name + ": a bitmap without pixels\n";
    if (!exposure.safe || exposure.rejected) return;
    std::vector<int> wanted = exposure.current;
    wanted.push_back(exposure.acquired);
    for (const int generation : wanted) {
        if (image->GetPixelData() && matches(image->GetPixelData(), kPixels, generation)) return;
        for (const std::string& file : filesBelow(m_folder))
            if (holds(file, generation)) return;
    }
    complaints += exposure.name + ": its pixels are nowhere\n";
}

std::string Walk::complaints() const {
    std::string complaints;
    for (const Exposure& exposure : m_exposures) checkEntity(exposure, complaints);
    for (int position = 0; position < m_exam->GetSeriesInRAMCount(); ++position)
        if (!m_exam->GetSeriesInRAM(position))
            complaints += "a missing entry in the list of resident series\n";
    return complaints;
}

std::string Walk::leftBehind() const {
    std::string complaints;
    for (const std::string& file : filesBelow(m_folder))
        if (file.find(".qvr-new-") != std::string::npos) complaints += "left behind: " + file + "\n";
    return complaints;
}

int Walk::safeImages() const {
    return static_cast<int>(
        std::count_if(m_exposures.begin(), m_exposures.end(), [](const auto& e) { return e.safe; }));
}

std::string complaintsAfterKill(const std::string& folder, const Progress& progress) {
    std::string complaints;
    const auto files = filesBelow(folder);
    for (int generation = 0; generation < kGenerations; ++generation) {
        if (progress.state[generation] != Progress::safe) continue;
        const bool whole = std::any_of(files.begin(), files.end(),
                                       [&](const auto& file) { return holds(file, generation); });
        if (!whole) complaints += "acquired pixels are nowhere: " + std::to_string(generation) + "\n";
    }
    for (const std::string& file : files) {
        bool oneGeneration = false;
        for (int generation = 1; generation < kGenerations && !oneGeneration; ++generation)
            oneGeneration = holds(file, generation, true);
        if (!oneGeneration) complaints += "not the beginning of one generation: " + file + "\n";
        // What replaces a file whole is never seen short.
        const bool replaced = file.find("export") != std::string::npos || file.ends_with("stored.raw");
        const bool temporary = file.find(".qvr-new-") != std::string::npos;
        if (replaced && !temporary && std::filesystem::file_size(file) != kPixels * 2)
            complaints += "an export or a commit that is neither old nor new: " + file + "\n";
    }
    return complaints;
}

}  // namespace road
