// Stretching a bitmap onto pixel memory, colour-on-colour.
#pragma once

#include <cstdint>

#include "qvr/platform/detail/bitmapPixels.h"
#include "qvr/platform/detail/codePath.h"
#include "qvr/platform/detail/pixelFormat.h"

namespace qvr {

/// Destination rectangle on the surface and source rectangle in the bitmap, as a caller gave them.
struct StretchRectangles {
    std::int64_t dx, dy, dw, dh;
    std::int64_t sx, sy, sw, sh;  // sy counts from the bottom row of a bottom-up bitmap
};

/// Destination column i of dw takes source column floor(i * sw / dw), likewise rows from the top as seen. What lies
/// outside the surface or takes its source from outside the bitmap is left as it is.
/// @return rows drawn; 0 for a side below 1, nothing visible or no memory for the column map
[[nodiscard]] int stretchBitmap(const PixelMemory& surface, const StretchRectangles& rectangles,
                                const BitmapPixels& bitmap, CodePath path = CodePath::fastest);

}  // namespace qvr
