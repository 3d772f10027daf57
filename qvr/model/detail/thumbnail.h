// Reduced pictures of a display bitmap.
#pragma once

#include <cstdint>
#include <memory>

#include "qvr/image/CDib.h"
#include "qvr/image/detail/bitmapRows.h"
#include "qvr/platform/detail/codePath.h"

namespace qvr {

/// A fifth of the display: each pixel is the mean of the first 4 x 4 bytes of a 5 x 5 cell. Its width counts the
/// display's padded rows.
/// @return null for an unusable bitmap, a side that would be 0, or without memory
std::unique_ptr<CDib> makeThumbnail(const CDib* display, CDC* surface);

/// The longer side 600 pixels (of the padded rows), each pixel the mean of a block.
/// @return null for a display of 600000 pixels or less, and as makeThumbnail
std::unique_ptr<CDib> makePreview(const CDib* display, CDC* surface);

/// Fills `target`: every pixel (x, y) becomes the mean of the block * block bytes at (trunc(x * step), trunc(y * step)).
/// @param source  holds every block, rows taken with their padding
void reducePicture(const BitmapRows& source, float step, std::int64_t block, const BitmapRows& target,
                   CodePath path = CodePath::fastest);

}  // namespace qvr
