// The window that an image gets when none is given: bounds become width and centre here and nowhere else.
#include "qvr/image/detail/automaticWindow.h"

#include "qvr/toolkit/QVR_DISP.h"

namespace qvr {

namespace {

constexpr int kNarrowest = 50;  // a window up to this width shows noise: the full range is taken instead
constexpr DisplayWindow kFullRange{16384, 8192};

}  // namespace

DisplayWindow automaticWindow(int width, int height, const std::uint16_t* pixels, int bitsStored) {
    int low = 0;
    int high = 0;
    if (!QVR_DISP_AutoWL(low, high, width, height, pixels, bitsStored, 0.05f, 0.95f)) {
        low = 0;
        high = kLargestValue14Bits;
    }
    const DisplayWindow window{high - low + 1, (low + high) / 2};
    return window.width <= kNarrowest ? kFullRange : window;
}

}  // namespace qvr
