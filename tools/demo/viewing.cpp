// Views are checked in two ways: at 1:1 against the film of the same region, which is made another way, and by coming
// back to a view, which must give every pixel of the first picture again.
#include <algorithm>
#include <string>
#include <vector>

#include "tools/demo/bitmaps.h"
#include "tools/demo/check.h"
#include "tools/demo/examRoad.h"

namespace qvr {
namespace {

using FrameBuffer = std::vector<std::uint32_t>;
constexpr int kSigmoid = 4;
constexpr const char* kSameAsFilm = ", same bytes as its film";

std::string window(const rawImage& image) {
    return "window " + std::to_string(image.GetWindowCenter()) + "/" + std::to_string(image.GetWindowWidth());
}

/// At 1:1 the display and the film of its region are the same bytes.
void requireSameAsFilm(const rawImage& image, const std::string& view) {
    require(image.GetDIB() != nullptr, view + ": there is no display");
    const CSize size = sizeOf(*image.GetDIB());
    CDib film(size.cx, size.cy, 8);
    require(film.CreateSection(nullptr) != nullptr, view + ": there is no memory for the film");
    require(rawImage::CreatePrintImage14Bits(image.GetWidth(), image.GetHeight(), image.GetPixelData(),
                                             image.GetXOffset(), image.GetYOffset(), image.GetWindowWidth(),
                                             image.GetWindowCenter(), image.GetLUTType(),
                                             image.GetLUTParamK(), image.GetLUTParamC(), &film),
            view + ": the film of what is displayed could not be made");
    require(sameBitmap(film, *image.GetDIB()), view + ": what is displayed is not what its film shows");
}

void enlarge(ExamHost& host, int position) {
    const rawImage& image = host.raw(position);
    require(host.series(position).UpdateImage(1.0f, 1.0f, host.window(), host.surface()),
            "the image could not be enlarged");
    require(image.GetXOffset() == std::max(0, (image.GetWidth() - kExamWindow.cx) / 2) &&
                image.GetYOffset() == std::max(0, (image.GetHeight() - kExamWindow.cy) / 2),
            "the enlarged view is not the middle of the image");
    requireSameAsFilm(image, "zoom");
    host.show(position);
    host.keep("zoom", "1:1, the middle of the image" + std::string(kSameAsFilm));
}

void windowAndCurve(ExamHost& host, int position) {
    dcmSeries& series = host.series(position);
    const rawImage& image = host.raw(position);
    const FrameBuffer before = host.show(position);
    require(!series.IsChanged(), "the series is marked as changed before anything was");
    require(series.UpdateImage(image.GetWindowWidth() / 2,
                               image.GetWindowCenter() + image.GetWindowWidth() / 6, host.surface()),
            "the window could not be changed");
    const FrameBuffer boneWindow = host.show(position);
    require(boneWindow != before, "the bone window shows the same picture");
    require(series.IsChanged(), "a changed window does not mark its series as changed");
    requireSameAsFilm(image, "window");
    host.keep("window", window(image) + kSameAsFilm);

    host.exam().SetLUT(0, kSigmoid, 8, 5);
    require(series.UpdateImage(host.surface()), "the curve could not be changed");
    require(host.show(position) != boneWindow, "the sigmoid curve shows the same picture as the linear one");
    requireSameAsFilm(image, "curve");
    host.keep("curve", "sigmoid" + std::string(kSameAsFilm));
}

void pan(ExamHost& host, int position) {
    const rawImage& image = host.raw(position);
    const FrameBuffer before = host.show(position);
    require(host.series(position).UpdateImage(image.GetXOffset() / 2, image.GetYOffset() * 3 / 2,
                                              host.window(), host.surface()),
            "the view could not be moved");
    require(host.show(position) != before, "the moved view shows the same picture");
    requireSameAsFilm(image, "pan");
    host.keep("pan", "to the upper left" + std::string(kSameAsFilm));
}

}  // namespace

void viewAndAdjust(ExamHost& host, int position) {
    const std::vector<std::uint16_t>& acquired = host.sample(position).pixels;
    require(host.raw(position).IsReadInRAM() &&
                std::equal(acquired.begin(), acquired.end(), host.raw(position).GetPixelData()),
            host.sample(position).name + ": the pixels that came back are not those that were acquired");
    const FrameBuffer fitted = host.show(position);
    host.keep("activated", window(host.raw(position)) + ", back from the disk with the pixels acquired");

    const rawImage& image = host.raw(position);
    const int width = image.GetWindowWidth();
    const int center = image.GetWindowCenter();
    enlarge(host, position);
    windowAndCurve(host, position);
    pan(host, position);

    dcmSeries& series = host.series(position);
    host.exam().SetLUT(0, 0, 1, 5);
    require(series.UpdateImage(0.0f, 0.0f, host.window(), host.surface()) &&
                series.UpdateImage(width, center, host.surface()),
            "the first view could not be restored");
    require(host.show(position) == fitted, "the first view, restored, is another picture");
    tell("zoom, window, curve and pan taken back", "the first picture again, every pixel");
}

void turnAndUndo(ExamHost& host, int position) {
    dcmSeries& series = host.series(position);
    const rawImage& image = host.raw(position);
    const FrameBuffer before = host.show(position);
    require(series.SaveUndoData(), "the undo copy could not be kept");

    std::vector<std::uint16_t> turned = host.sample(position).pixels;
    int width = 0;
    int height = 0;
    require(QVR_DISP_Rotate(image.GetWidth(), image.GetHeight(), turned.data(), width, height, 0) &&
                series.UpdateImage(width, height, turned.data(), image.GetBitsStored(), image.GetHighBit(),
                                   image.GetWindowWidth(), image.GetWindowCenter(), host.window(),
                                   host.surface()),
            "the image could not be turned");
    require(host.show(position) != before, "the turned image shows the same picture");
    require(image.GetWidth() == host.sample(position).height,
            "the turned image is not as wide as it was high");
    host.keep("turned", "a quarter turn, an undo copy kept before");

    require(series.ReadUndoData(host.window(), host.surface()), "the undo copy could not be taken back");
    const std::vector<std::uint16_t>& acquired = host.sample(position).pixels;
    require(image.GetWidth() == host.sample(position).width &&
                std::equal(acquired.begin(), acquired.end(), image.GetPixelData()),
            "the undo copy does not hold the pixels from before");
    require(host.show(position) == before, "the picture after the undo is not the one from before");
    tell("undo", "the pixels and the picture from before");
}

}  // namespace qvr
