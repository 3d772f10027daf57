// Print bitmaps: a region of an image, pixel for pixel, through window and curve, its marks in it.
#pragma once

#include <optional>
#include <string_view>

#include "markPlacing.h"

namespace qvr::tool {

/// A film in pixels.
/// Reads "8x10in@300dpi": width and height in in, cm or mm, each with or without decimals.
/// @return nothing for any other text, and for a film of more than 32767 pixels a side
std::optional<CSize> parseFilm(std::string_view text);

struct PrintJob {
    Region region;  ///< of the picture, y downward
    int bits = 14;  ///< 14 or 12
    Window window;
    Curve curve;
    std::optional<CSize> film;  ///< the bitmap is scaled to fit, in the middle of black
};

/// The marks go into a copy of the pixels, and the copy is printed. @throws Failure
/// @param shift  low bits to drop, so that the values fit into `bits`
GreyPicture print(const AdoptedImage& image, int shift, const PrintJob& job, MarkedImage* marked,
                  const std::string& file);

}  // namespace qvr::tool
