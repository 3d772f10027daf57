// Rows of pixel values, or of block sums, to grey levels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "qvr/image/detail/displayTable.h"
#include "qvr/platform/detail/codePath.h"

namespace qvr {

/// How values become grey: through a table, values beyond its last entry taking that one. `ramp` says the same by
/// arithmetic, for a linear table; null for a curve.
struct GreyMap {
    std::span<const std::uint8_t> table;
    const GreyRamp* ramp = nullptr;
};

/// One grey level for each of `count` values.
void greyRow(const std::uint16_t* values, std::size_t count, const GreyMap& map, std::uint8_t* out,
             CodePath path = CodePath::fastest);

/// One grey level for each of `count` block sums: that of sum / pixels, truncated.
/// @param pixels  of a block, 1 … 65536
void greyOfSums(const std::uint32_t* sums, std::size_t count, std::uint32_t pixels, const GreyMap& map,
                std::uint8_t* out, CodePath path = CodePath::fastest);

}  // namespace qvr
