// Rows of pixel values, or of block sums, to grey levels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "qvr/image/detail/bitmapRows.h"
#include "qvr/image/detail/displayTable.h"
#include "qvr/image/detail/greySteps.h"
#include "qvr/platform/detail/codePath.h"

namespace qvr {

/// How values become grey: through a table, values beyond its last entry taking that one. `ramp` says the same by
/// arithmetic, for a linear table; null for a curve. `steps` says the same in vectors; null when nobody made them.
struct GreyMap {
    std::span<const std::uint8_t> table;
    const GreyRamp* ramp = nullptr;
    const GreySteps* steps = nullptr;
};

/// A map, and its steps where they pay: on processors that look them up, for a rising curve and enough pixels.
class SteppedMap {
public:
    SteppedMap(const GreyMap& map, std::int64_t pixels, CodePath path);
    SteppedMap(const SteppedMap&) = delete;
    SteppedMap& operator=(const SteppedMap&) = delete;
    const GreyMap& map() const { return m_map; }

private:
    GreyMap m_map;
    std::optional<GreySteps> m_steps;
};

/// One grey level for each of `count` values.
void greyRow(const std::uint16_t* values, std::size_t count, const GreyMap& map, std::uint8_t* out,
             CodePath path = CodePath::fastest);

/// As greyRow for every row of a bitmap.
/// @param stride  values from row to row of the source, which has a row for every one of the bitmap
void greyRows(const std::uint16_t* values, std::int64_t stride, const GreyMap& map, const BitmapRows& bitmap,
              CodePath path = CodePath::fastest);

/// One grey level for each of `count` block sums: that of sum / pixels, truncated.
/// @param pixels  of a block, 1 … 65536
void greyOfSums(const std::uint32_t* sums, std::size_t count, std::uint32_t pixels, const GreyMap& map,
                std::uint8_t* out, CodePath path = CodePath::fastest);

}  // namespace qvr
