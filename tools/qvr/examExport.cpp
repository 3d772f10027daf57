// qvr exam export: every image of a reopened examination as a file of its own.
//
// One image at a time is reopened, in an exam of its own: what leaves memory would otherwise be written to a work file.
// Marks are burned into a copy of the pixels, from the view that they were set in.
#include <fmt/format.h>

#include <filesystem>

#include "dicomWriter.h"
#include "examDicom.h"
#include "examLock.h"
#include "examTree.h"
#include "examVerbs.h"
#include "fileLoop.h"
#include "picture.h"
#include "safeFile.h"

namespace qvr::tool {

namespace fs = std::filesystem;

namespace {

struct Exported {
    AdoptedImage image;  // with burned marks
    Window window;
    Curve curve;
};

Exported reopened(const ExamFolder& folder, const ExamRecord& record, const ExamImage& image) {
    dcmExam exam;
    CRasterDC surface(1, 1);
    ExamRecord alone;
    alone.display = record.display;
    alone.studies = {record.studies[static_cast<std::size_t>(image.study)]};
    alone.studies[0].series = {*image.series};
    reopenRecords(exam, alone);
    reopenImage(exam, folder, alone, imagesOf(alone).front(), true, surface);

    rawImage& raw = *exam.GetStudy(0)->GetSeries(0)->GetDcmImage()->GetRawImage();
    Exported out;
    const auto& attributes = image.image().attributes;
    out.window = {"given", raw.GetWindowCenter(), raw.GetWindowWidth(), 0, 0};
    out.curve = {image.image().curve, image.image().curveK, image.image().curveC};
    out.image.width = attributes.Width;
    out.image.height = attributes.Height;
    const auto count =
        static_cast<std::size_t>(attributes.Width) * static_cast<std::size_t>(attributes.Height);
    out.image.pixels.assign(raw.GetPixelData(), raw.GetPixelData() + count);
    if (!raw.WriteMark(out.image.width, out.image.height, out.image.pixels.data(), kAdoptedBits, &surface))
        throw Failure(Exit::refused, image.uid(), "not exported", "a mark cannot be burned",
                      "See with qvr doctor whether its font is missing.");
    return out;
}

std::vector<std::uint8_t> rawBytes(const AdoptedImage& image) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(2 * image.pixels.size());
    for (const auto pixel : image.pixels) {
        bytes.push_back(static_cast<std::uint8_t>(pixel & 0xff));
        bytes.push_back(static_cast<std::uint8_t>(pixel >> 8));
    }
    return bytes;
}

// @return the SOP Instance UID of a DICOM file
std::string writeImage(const std::string& format, const std::string& target, const ExamRecord& record,
                       const ExamImage& image, const Exported& exported, bool force) {
    const auto& pixels = exported.image;
    if (format == "raw") {
        writeSafely(target, rawBytes(pixels), force);
        return {};
    }
    if (format == "png") {
        DisplayOptions options;
        options.curve = exported.curve;
        writeSafely(target, encode(display(pixels, exported.window, options), PictureFormat::png), force);
        return {};
    }
    DicomImage dicom;
    dicom.width = pixels.width;
    dicom.height = pixels.height;
    dicom.pixels = pixels.pixels;
    dicom.windowCenter = exported.window.center;
    dicom.windowWidth = exported.window.width;
    dicom.curve = exported.curve;
    dicom.source = dataSetOf(record.studies[static_cast<std::size_t>(image.study)], *image.series);
    dicom.marksBurned = !image.image().marks.empty();
    dicom.derivation = dicom.marksBurned ? "adopted to 14 bits, marks burned in" : "adopted to 14 bits";
    const double spacing = image.image().attributes.PixelSpacing / 1000.0;
    if (spacing > 0) dicom.spacing = {spacing, spacing};
    return writeDicom(target, dicom, force);
}

void makeFolder(const std::string& path) {
    std::error_code error;
    fs::create_directory(path, error);
    std::error_code statusError;
    const auto status = fs::status(path, statusError);
    if (status.type() == fs::file_type::directory) return;
    if (status.type() == fs::file_type::none) error = statusError;
    throw Failure(Exit::notWritten, path, "not written", error ? error.message() : "it is no folder",
                  "Nothing was changed.");
}

}  // namespace

const std::vector<std::pair<std::string, std::string>>& exportFormats() {
    static const std::vector<std::pair<std::string, std::string>> formats = {
        {"png", "the picture as displayed, at the image's size"},
        {"raw", "the 14-bit pixels, 16 bits little-endian, bottom row first"},
        {"dcm", "DICOM, as a derived image with a new UID"},
    };
    return formats;
}

Exit exportExam(const ExportRequest& request, const Common& common, Console& console) {
    const ExamFolder folder(request.exam);
    const ExamLock lock(folder.path(), ExamLock::Use::reading);  // records and pixels are of one exam
    ExamRecord record = folder.read();
    const auto images = imagesOf(record);
    std::vector<std::string> uids;
    for (const auto& image : images) uids.push_back(image.uid());
    const auto target = [&](const std::string& uid) {
        return fmt::format("{}/{}.{}", request.folder, uid, request.format);
    };
    makeFolder(request.folder);
    const ExamFiles own(folder);
    for (const auto& uid : uids) {  // all or nothing
        if (own.hold(target(uid)))
            throw Failure(Exit::refused, target(uid), "not written",
                          "it is one of the exam's own files, or lies among them", "Name another folder.");
        checkTarget(target(uid), "", common.force);
    }

    std::size_t next = 0;
    return forEachFile(uids, common, console, [&](const std::string& uid) {
        const ExamImage& image = images[next++];
        const Exported exported = reopened(folder, record, image);
        const auto uidWritten =
            writeImage(request.format, target(uid), record, image, exported, common.force);
        const std::string summary =
            fmt::format("{} x {}  window {}/{}", exported.image.width, exported.image.height,
                        exported.window.center, exported.window.width);
        if (common.json)
            console.object({{"file", request.exam},
                            {"sop_instance_uid", uid},
                            {"output", target(uid)},
                            {"output_uid", uidWritten},
                            {"marks", image.image().marks.size()},
                            {"result", "ok"}});
        else if (!common.quiet)
            console.result(fmt::format("{}  {}\n", printable(target(uid)), summary));
        return summary;
    });
}

}  // namespace qvr::tool
