// A rising table in so few bytes that vectors can look it up: 256 cells of equal length, each with the grey level that it
// starts with and the places where that rises by one.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace qvr {

struct GreySteps {
    static constexpr std::size_t kMostRises =
        4;  ///< within a cell; looking up more takes as long as the table

    std::uint16_t low = 0;   ///< values up to here have the first entry
    std::uint16_t high = 0;  ///< and from here on the last one
    unsigned shift = 0;      ///< a cell has 2^shift values, the first one those from `low` on
    std::size_t rises = 0;   ///< the most that a cell has
    using Cells = std::array<std::uint8_t, 256>;
    alignas(64) Cells first = {};
    /// Place in the cell from which on the grey level is one higher; 255 where it does not rise.
    alignas(64) std::array<Cells, kMostRises> rise = {};
};

/// The same table, or nothing when it has more than 16384 entries, falls somewhere or rises too steeply.
std::optional<GreySteps> greySteps(std::span<const std::uint8_t> table);

namespace avx512 {

/// One grey level for each of `count` values, a multiple of 64. To be called only when hasAvx512Permutes().
void stepsRow(const std::uint16_t* values, std::size_t count, const GreySteps& steps, std::uint8_t* out);

}  // namespace avx512

}  // namespace qvr
