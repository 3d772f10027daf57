// Seven images are two more than the exam keeps in memory: some leave it, and have to come back whole.
#include "tools/demo/examRoad.h"

#include <cstddef>
#include <string>
#include <utility>

#include "tools/demo/bitmaps.h"
#include "tools/demo/check.h"
#include "tools/demo/pixelTools.h"

namespace qvr {
namespace {

constexpr std::size_t kExposures = 7;
constexpr int kRejected = 2;
constexpr int kSheetColumns = 5;
constexpr CSize kViewCell{300, 250};
constexpr CSize kThumbCell{240, 240};
constexpr CSize kPreviewCell{300, 300};

void acquireAll(ExamHost& host) {
    host.plan();
    host.residency().note("planned");
    for (int i = 0; i < host.count(); ++i) {
        host.acquire(i);
        host.residency().note("image " + std::to_string(i + 1) + " acquired");
    }
    require(host.exam().IsRAMFull() && host.exam().GetSeriesInRAMCount() < host.count(),
            "no image had to leave memory: the demo shows less than it should");
}

void activate(ExamHost& host, int position) {
    host.activate(position);
    host.residency().note("image " + std::to_string(position + 1) + " activated");
}

void saveSmallPictures(ExamHost& host) {
    const auto folder = host.folder() / "thumbnails";
    makeFolder(folder);
    ContactSheet thumbs(host.count(), kThumbCell);
    ContactSheet previews(host.count(), kPreviewCell);
    int bitmaps = 0;
    for (int i = 0; i < host.count(); ++i) {
        const std::string& name = host.sample(i).name;
        for (CDib* bitmap : {host.series(i).GetThumb(), host.series(i).GetPreview()}) {
            const bool small = bitmap == host.series(i).GetThumb();
            if (!bitmap) continue;
            writeBitmap(*bitmap, folder / (name + (small ? ".bmp" : "-preview.bmp")));
            Screen picture(sizeOf(*bitmap).cx, sizeOf(*bitmap).cy);
            showBitmap(*bitmap, picture);
            (small ? thumbs : previews).add(picture, name + (small ? "" : ", preview"));
            ++bitmaps;
        }
    }
    const auto thumbSheet = host.folder() / "thumbnails.png";
    const auto previewSheet = host.folder() / "previews.png";
    thumbs.save(thumbSheet);
    previews.save(previewSheet);
    tell(thumbSheet.string(), "all thumbnails, a protocol's bitmap for the rejected image");
    tell(previewSheet.string(), "all previews");
    tell(folder.string(), std::to_string(bitmaps) + " bitmap files, read back the same");
}

}  // namespace

void takeTheRoad(std::vector<Sample> samples, const std::filesystem::path& folder) {
    addMade(samples, kExposures);
    ContactSheet sheet(kSheetColumns, kViewCell);
    auto host = std::make_unique<ExamHost>(folder, samples, sheet);
    tellHeading("examination of " + std::to_string(host->count()) + " images");
    acquireAll(*host);

    activate(*host, 0);
    viewAndAdjust(*host, 0);
    turnAndUndo(*host, 0);
    activate(*host, kRejected);
    host->reject(kRejected);
    host->residency().note("image " + std::to_string(kRejected + 1) + " rejected");
    tell("image " + std::to_string(kRejected + 1) + " rejected",
         "its files are gone, the protocol's bitmap is back");
    saveSmallPictures(*host);
    closeAndReopen(std::move(host), samples, sheet);

    tellHeading("marks, export and film");
    const std::vector<Sample> one{samples.front()};
    ExamHost sender(folder / "sent", one, sheet);
    markExportAndPrint(sender, sheet);
    tellHeading("pixel tools and a display image of its own");
    showPixelTools(samples.front(), folder);
    placeFreely(samples.front(), folder, sheet);
    const auto path = folder / "sheet.png";
    sheet.save(path);
    tell(path.string(), "the pictures above on one sheet");
}

}  // namespace qvr
