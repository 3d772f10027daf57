// Lookup tables from pixel values to 8-bit grey: the one place where window and curve become grey levels.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "qvr/platform/detail/codePath.h"

namespace qvr {

inline constexpr int kTable14Bits = 16384;  ///< entries for display and 14-bit print
inline constexpr int kTable12Bits = 4096;   ///< entries for 12-bit print
inline constexpr std::uint16_t kLargestValue14Bits = kTable14Bits - 1;

struct DisplayWindow {
    int width = 0;
    int center = 0;

    /// A window counts as given only when both values are not 0.
    constexpr bool given() const { return width != 0 && center != 0; }
    friend bool operator==(const DisplayWindow&, const DisplayWindow&) = default;
};

struct Curve {
    int type = 0;  ///< 1 power, 2 exponential, 3 logarithmic, 4 sigmoid, everything else linear
    int k = 1;     ///< exponent or steepness
    int c = 5;     ///< centre of the sigmoid in tenths of the window
};

/// A linear table as arithmetic: 0 below low, 255 above high, (step * (value - low)) >> shift between.
struct GreyRamp {
    int low = 0;   ///< these three within 2^30
    int high = 0;  ///< above low
    int step = 0;
    int shift = 14;

    /// True when 16-bit arithmetic is enough, for values of at most `shift` bits.
    constexpr bool fitsWords() const { return low >= 0 && low <= 65535 && step <= 65535; }
};

/// What a window does to values of `bits` bits, when it can be said as a ramp: a linear curve over more than one value.
std::optional<GreyRamp> greyRamp(const DisplayWindow& window, const Curve& curve, int bits);

using DisplayTable = std::array<std::uint8_t, kTable14Bits>;

/// The table for 14-bit pixels.
void fillDisplayTable(const DisplayWindow& window, const Curve& curve,
                      std::span<std::uint8_t, kTable14Bits> table,
                      CodePath path = CodePath::fastest) noexcept;
/// The table for 12-bit pixels.
void fillDisplayTable(const DisplayWindow& window, const Curve& curve,
                      std::span<std::uint8_t, kTable12Bits> table,
                      CodePath path = CodePath::fastest) noexcept;
/// The table of rawImage::Create8BitsLUT: bounds as given, and the factors of that operation.
void fillBoundsTable(int low, int high, const Curve& curve, std::span<std::uint8_t> table,
                     CodePath path = CodePath::fastest) noexcept;

}  // namespace qvr
