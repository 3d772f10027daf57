// The two exported automatic windows: what depends on the bit depth, and which rows are looked at.
#include <cstdint>
#include <cstdlib>

#include "qvr/platform/detail/numbers.h"
#include "qvr/toolkit/QVR_DISP.h"
#include "qvr/toolkit/detail/histogramWindow.h"

namespace {

constexpr int kSmallestRegion = 51;  // columns and rows

// The upper bound of a depth whose window is its full range; 0 for any other depth.
int fullRange(int bitsStored) {
    return bitsStored == 10 || bitsStored == 12 || bitsStored == 16 ? (1 << bitsStored) - 1 : 0;
}

int boundsOf(int& low, int& high, const qvr::PixelRows& pixels, int bitsStored, float lowFraction,
             float highFraction) {
    if (const int range = fullRange(bitsStored)) {
        low = 0;
        high = range;
        return 1;
    }
    const auto count = qvr::pixelCount(pixels.width, pixels.rows);
    if (bitsStored != 14 || !pixels.first || !count) return 0;

    qvr::Histogram histogram;
    if (*count > 0) qvr::countPixels(pixels, histogram);  // a side of 0 leaves the other one meaningless
    const auto bounds =
        qvr::histogramWindow(histogram, static_cast<std::int64_t>(*count), lowFraction, highFraction);
    low = bounds.low;
    high = bounds.high;
    return 1;
}

}  // namespace

int QVR_DISP_AutoWL(int& low, int& high, int width, int height, const std::uint16_t* pixels, int bitsStored,
                    float lowFraction, float highFraction) {
    return boundsOf(low, high, {pixels, width, height, width}, bitsStored, lowFraction, highFraction);
}

int QVR_DISP_AutoWLByROI(int& low, int& high, int width, int height, const std::uint16_t* pixels,
                         int bitsStored, CPoint first, CPoint second, float lowFraction, float highFraction) {
    const std::int64_t columns = std::int64_t{second.x} - first.x;
    const std::int64_t rows = std::int64_t{first.y} - second.y;
    if (columns < kSmallestRegion || std::llabs(rows) < kSmallestRegion) return 0;

    // From bottom to top no row lies in between: an empty region, which counts no pixel.
    qvr::PixelRows region{pixels, columns, 0, width};
    if (rows > 0) {
        const bool inside =
            first.x >= 0 && second.x <= width && second.y >= 0 && (height <= 0 || first.y <= height);
        if (!inside) return 0;
        if (pixels) region.first = pixels + std::int64_t{second.y} * width + first.x;
        region.rows = rows;
    }
    return boundsOf(low, high, region, bitsStored, lowFraction, highFraction);
}
