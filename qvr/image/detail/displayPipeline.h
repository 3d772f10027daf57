// The display pipeline: pixels, window, curve and view become a bitmap, and the bitmap comes onto a surface. Every
// class that shows an image goes through here.
#pragma once

#include <cstdint>
#include <memory>

#include "qvr/image/CDib.h"
#include "qvr/image/detail/displayFit.h"
#include "qvr/image/detail/displayTable.h"

namespace qvr {

/// What is shown and how; all but `pixels` are plain settings of a host and may hold anything.
struct DisplaySource {
    const std::uint16_t* pixels = nullptr;  ///< width * height values, bottom row first, or null
    int width = 0;
    int height = 0;
    int bitsStored = 0;
    DisplayWindow window;
    Curve curve;
};

enum class Built { refused, unfilled, filled };

/// Fits the image into the rectangle. @return the bitmap size, with the ratios of `view` set; (0, 0) with `view` as it
/// was when `rectangle` is null or the image cannot be fitted
CSize fitView(int width, int height, const RECT* rectangle, DisplayView& view);

/// Makes a new bitmap for the view and fills it.
/// @param reset  true: the fitted view; false: the view as it is, fitted only when both its ratios are 0
/// @return filled; refused with view and bitmap as they were when no size can be found for the rectangle (null, empty or
///         inverted); unfilled with the new view and a black bitmap when the pixels are not 14 bits, and with no bitmap
///         when there is no memory
Built buildDisplay(const DisplaySource& source, const RECT* rectangle, bool reset, DisplayView& view,
                   std::shared_ptr<CDib>& bitmap);
/// Realizes the palette of a bitmap that was built. What comes last: a surface may call back and change the image, whose
/// newer view and bitmap must stay.
/// @return 1 when it was filled
int realized(Built built, std::shared_ptr<CDib> bitmap, CDC* surface);

/// Fills an existing bitmap. @return false, with the bitmap as it was, for a null or unusable bitmap, null pixels, a
/// ratio that is not finite and above 0, or without memory
bool convertDisplay(const DisplaySource& source, const DisplayView& view, const CDib* bitmap);

/// Draws a bitmap into a rectangle, centred and letter-boxed in black.
/// @return the result of CDib::Draw; 0, with nothing drawn, without surface, rectangle or usable bitmap
int drawFitted(CDib* bitmap, const RECT* rectangle, CDC* surface, std::uint32_t rop);

}  // namespace qvr
