// Masks and inversion, in place: what is kept is moved first, then the rest is filled.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "qvr/platform/detail/numbers.h"
#include "qvr/toolkit/QVR_DISP.h"
#include "qvr/toolkit/detail/mirror.h"
#include "qvr/toolkit/detail/pixelRectangles.h"

namespace {

constexpr std::int64_t kSmallestKept = 11;  // columns and rows

std::uint16_t fillValue(int mode) {
    return mode == 0 ? 65535 : 0;
}

// The rectangle by its left and bottom edges and the distances of the others; nothing when it is too small.
bool areaOf(const RECT& rectangle, qvr::PixelArea& area) {
    area = {rectangle.left, rectangle.bottom, std::llabs(std::int64_t{rectangle.right} - rectangle.left),
            std::llabs(std::int64_t{rectangle.bottom} - rectangle.top)};
    return area.width >= kSmallestKept && area.height >= kSmallestKept;
}

}  // namespace

int QVR_DISP_Mask(int width, int height, std::uint16_t* pixels, const RECT* rectangle, int mode) {
    qvr::PixelArea area;
    if (!pixels || !rectangle || !qvr::pixelCount(width, height)) return 0;
    if (!areaOf(*rectangle, area) || !area.inside(width, height)) return 0;

    const qvr::PixelArea middle{(width - area.width) / 2, (height - area.height) / 2, area.width,
                                area.height};
    qvr::copyArea(pixels, width, area, pixels + middle.bottom * width + middle.left, width);
    qvr::fillOutside(pixels, width, height, middle, fillValue(mode));
    return 1;
}

int QVR_DISP_Cut_Mask(int width, int height, const std::uint16_t* pixels, const RECT* cut, const RECT* keep,
                      int outputWidth, int outputHeight, std::uint16_t* output, int mode) {
    if (!cut || !keep || !qvr::pixelCount(outputWidth, outputHeight)) return 0;
    const std::int64_t rows = std::max<std::int64_t>(std::int64_t{cut->top} - cut->bottom, 0);
    if (rows > outputHeight) return 0;
    if (!QVR_DISP_Cut(width, height, pixels, cut, outputWidth, 0, output)) return 0;

    qvr::PixelArea kept;
    if (!areaOf(*keep, kept)) return 0;
    if (keep->bottom > keep->top) {
        kept = {};
    } else {
        kept.left -= cut->left;
        kept.bottom -= cut->bottom;
        if (!kept.inside(outputWidth, rows)) return 0;
    }
    qvr::fillOutside(output, outputWidth, outputHeight, kept, fillValue(mode));
    return 1;
}

int QVR_DISP_Invert(int width, int height, std::uint16_t* pixels, int bitsStored, int center,
                    int& newCenter) {
    if (bitsStored != 10 && bitsStored != 12 && bitsStored != 14 && bitsStored != 16) return 0;
    const int maximum = (1 << bitsStored) - 1;
    if (width > 0 && height > 0) {
        const auto count = qvr::pixelCount(width, height);
        if (!pixels || !count) return 0;
        qvr::invertValues(pixels, *count, static_cast<std::uint16_t>(maximum));
    }
    newCenter = qvr::saturated(std::int64_t{maximum} - center);
    return 1;
}
