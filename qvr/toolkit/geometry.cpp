// Quarter turns, mirrors and cuts: what is asked for is checked here, the work is done in detail/.
#include <cstdint>

#include "qvr/platform/detail/numbers.h"
#include "qvr/toolkit/QVR_DISP.h"
#include "qvr/toolkit/detail/mirror.h"
#include "qvr/toolkit/detail/pixelRectangles.h"
#include "qvr/toolkit/detail/quarterTurn.h"

int QVR_DISP_Rotate(int width, int height, std::uint16_t* pixels, int& newWidth, int& newHeight,
                    int direction) {
    if (!pixels || !qvr::pixelCount(width, height)) return 0;
    if (!qvr::turnQuarter(pixels, width, height, direction == 0)) return 0;
    newWidth = height;
    newHeight = width;
    return 1;
}

int QVR_DISP_Mirror(int width, int height, std::uint16_t* pixels, int mode) {
    if (!pixels || !qvr::pixelCount(width, height)) return 0;
    if (mode == 0)
        qvr::mirrorRows(pixels, width, height);
    else
        qvr::mirrorColumns(pixels, width, height);
    return 1;
}

int QVR_DISP_Cut(int width, int height, const std::uint16_t* pixels, const RECT* rectangle, int outputWidth,
                 int outputHeight, std::uint16_t* output) {
    if (!pixels || !rectangle || !output || width < 0 || outputWidth < 0) return 0;
    const std::int64_t rows = std::int64_t{rectangle->top} - rectangle->bottom;
    if (rows <= 0) return 1;
    const qvr::PixelArea area{rectangle->left, rectangle->bottom, outputWidth, rows};
    if (!area.inside(width, height > 0 ? height : qvr::kUnknownHeight)) return 0;
    if (outputHeight > 0 && rows > outputHeight) return 0;
    qvr::copyArea(pixels, width, area, output, outputWidth);
    return 1;
}
