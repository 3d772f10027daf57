// Marks in the pixels: the text becomes the brightest value of the bit depth.
#pragma once

#include <cstdint>
#include <functional>

#include "qvr/marks/CMark.h"
#include "qvr/platform/CDC.h"

namespace qvr {

/// Burns one mark's text at its image position, in the size at which it was shown. What lies outside the image is left
/// out.
/// @param pixels      width * height values, bottom row first
/// @param bitsStored  10, 12, 14 or 16
/// @param ratio       display pixels per image pixel, finite and above 0
/// @param surface     whose compatible raster and fonts the text is drawn with
/// @return 1; 0, with no pixel changed, for another depth or ratio, for null, a bad size, a font height that rounds to 0,
///         without a usable font, and without memory
int BurnInMark(int width, int height, std::uint16_t* pixels, int bitsStored, const CMark* mark, float ratio,
               CDC* surface);
/// The same for pixels that a surface may replace while the text is drawn on it.
/// @param pixels  asked after every call of the surface; null: they are gone, and the result is 0
int BurnInMark(int width, int height, const std::function<std::uint16_t*()>& pixels, int bitsStored,
               const CMark* mark, float ratio, CDC* surface);

}  // namespace qvr
