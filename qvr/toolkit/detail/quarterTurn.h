// Quarter turns of a pixel buffer.
#pragma once

#include <cstdint>

#include "qvr/platform/detail/codePath.h"

namespace qvr {

/// Turns width * height values in place: value (x, y) goes to column y of row width - 1 - x (clockwise as displayed), or
/// to column height - 1 - y of row x. A square needs no memory; sides with a common divisor of 64 or more need a byte
/// for every so many values; any other shape needs a buffer of its own size.
/// @return false, with nothing changed, when there is no memory
[[nodiscard]] bool turnQuarter(std::uint16_t* pixels, std::int64_t width, std::int64_t height, bool clockwise,
                               CodePath path = CodePath::fastest);

}  // namespace qvr
