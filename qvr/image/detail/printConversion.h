// Print bitmaps: a region of a buffer through a lookup table, one pixel for one.
#pragma once

#include <cstdint>
#include <span>

#include "qvr/image/detail/bitmapRows.h"
#include "qvr/image/detail/displayTable.h"
#include "qvr/platform/detail/codePath.h"

namespace qvr {

/// Fills every bitmap pixel from `table`, values beyond its last entry taking that one.
/// @param source  the region's bottom left value
/// @param stride  values from one source row to the next
/// @param ramp    what the table says, as arithmetic; null when it is not linear
void convertRegion(const std::uint16_t* source, std::int64_t stride, std::span<const std::uint8_t> table,
                   const BitmapRows& bitmap, const GreyRamp* ramp = nullptr,
                   CodePath path = CodePath::fastest);

}  // namespace qvr
