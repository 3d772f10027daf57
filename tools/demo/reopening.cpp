// What a host must remember of an image is its record: size, window and the paths of its files. The work file is where
// a reopened image goes when it leaves memory, so that its image file stays as it was stored.
#include <string>
#include <utility>
#include <vector>

#include "tools/demo/bitmaps.h"
#include "tools/demo/check.h"
#include "tools/demo/examRoad.h"

namespace qvr {
namespace {

struct StoredImage {
    int position = 0;
    QVR_ST_IMAGE record;
    std::vector<std::uint32_t> picture;
};

StoredImage remember(ExamHost& host, int position) {
    host.activate(position);
    const dcmImage& image = *host.series(position).GetDcmImage();
    const rawImage& raw = host.raw(position);
    StoredImage stored{.position = position, .record = {}, .picture = host.show(position)};
    stored.record.SOPInstanceUID = image.GetSOPInstanceUID();
    stored.record.ContentDateTime = image.GetContentDateTime();
    // Of the raw image: the attributes do not follow an undo copy that is taken back.
    stored.record.Width = raw.GetWidth();
    stored.record.Height = raw.GetHeight();
    stored.record.BitsStored = raw.GetBitsStored();
    stored.record.HighBit = raw.GetHighBit();
    stored.record.WindowCenter = image.GetWindowCenter();
    stored.record.WindowWidth = image.GetWindowWidth();
    stored.record.BAKWidth = host.series(position).GetImageBAKWidth();
    stored.record.BAKHeight = host.series(position).GetImageBAKHeight();
    stored.record.FilePath = host.series(position).GetImageFilePath();
    stored.record.BAKFilePath = host.series(position).GetImageBAKFilePath();
    stored.record.WorkFilePath =
        (host.folder() / "Cache" / ("W." + std::string(image.GetSOPInstanceUID()) + ".raw")).c_str();
    return stored;
}

std::vector<StoredImage> close(ExamHost& host) {
    std::vector<StoredImage> images;
    for (int i = 0; i < host.count(); ++i) {
        if (host.series(i).IsImageExist()) images.push_back(remember(host, i));
    }
    while (host.residency().count() > 0) host.writeOut(host.residency().oldest());
    host.residency().note("all written out, exam closed");
    host.residency().printTable();
    return images;
}

void requireSamePicture(ExamHost& host, const StoredImage& image, const std::string& when) {
    require(host.show(image.position) == image.picture,
            host.sample(image.position).name + ": its picture " + when + " is not the one from before");
}

/// Images that leave memory once more go to their work files and come back from there.
void sendThroughWorkFiles(ExamHost& host, const std::vector<StoredImage>& images) {
    int workFiles = 0;
    for (const StoredImage& image : images) {
        host.activate(image.position);
        requireSamePicture(host, image, "from the work file");
    }
    for (const StoredImage& image : images) {
        workFiles += std::filesystem::exists(image.record.WorkFilePath.GetString()) ? 1 : 0;
    }
    require(workFiles > 0, "no reopened image went through a work file");
    host.residency().note("all activated and shown again");
    tell("pictures of the reopened images",
         "the same once more, " + std::to_string(workFiles) + " through work files");
}

void closeForGood(ExamHost& host, const std::vector<StoredImage>& images) {
    for (const StoredImage& image : images) {
        host.series(image.position).CloseImage();
        require(!std::filesystem::exists(image.record.WorkFilePath.GetString()),
                std::string(image.record.WorkFilePath) + ": the work file is still there after closing");
    }
    tell("images closed", "work files gone, image files and raw copies stay");
}

}  // namespace

void closeAndReopen(std::unique_ptr<ExamHost> host, const std::vector<Sample>& samples, ContactSheet& sheet) {
    const auto folder = host->folder();
    const auto images = close(*host);
    host.reset();

    tellHeading("the same examination, rebuilt from its files");
    ExamHost again(folder, samples, sheet);
    again.plan();
    for (const StoredImage& image : images) {
        again.open(image.position, image.record);
        requireSamePicture(again, image, "after reopening");
        again.residency().note("image " + std::to_string(image.position + 1) + " opened");
    }
    tell("examination reopened", std::to_string(images.size()) + " images, their pictures bit for bit");
    sendThroughWorkFiles(again, images);
    again.residency().printTable();
    closeForGood(again, images);
}

}  // namespace qvr
