// Conversions and products that cannot overflow.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

namespace qvr {

/// The largest number of pixels of one image: more is refused before anything is allocated or opened.
inline constexpr std::int64_t kMaxPixels = (std::int64_t{1} << 30) - 1;

/// @return width * height; nothing for a negative side or a product above kMaxPixels
[[nodiscard]] constexpr std::optional<std::size_t> pixelCount(std::int64_t width, std::int64_t height) {
    if (width < 0 || height < 0) return std::nullopt;
    if (width == 0 || height == 0) return 0;
    if (width > kMaxPixels || height > kMaxPixels / width) return std::nullopt;
    return static_cast<std::size_t>(width * height);
}

/// The value within the range of an int.
[[nodiscard]] constexpr int saturated(std::int64_t value) {
    constexpr std::int64_t low = std::numeric_limits<int>::min();
    constexpr std::int64_t high = std::numeric_limits<int>::max();
    return static_cast<int>(value < low ? low : value > high ? high : value);
}

/// Truncates toward zero; not a number gives 0, a value out of range the nearest int.
[[nodiscard]] constexpr int toInt(double value) {
    if (value != value) return 0;
    if (value <= -2147483648.0) return std::numeric_limits<int>::min();
    if (value >= 2147483647.0) return std::numeric_limits<int>::max();
    return static_cast<int>(value);
}

/// As toInt, into 64 bits.
[[nodiscard]] constexpr std::int64_t toInt64(double value) {
    if (value != value) return 0;
    if (value <= -9223372036854775808.0) return std::numeric_limits<std::int64_t>::min();
    if (value >= 9223372036854775808.0) return std::numeric_limits<std::int64_t>::max();
    return static_cast<std::int64_t>(value);
}

/// True for a finite value above 0.
[[nodiscard]] constexpr bool isPositiveFinite(double value) {
    return value > 0.0 && value <= std::numeric_limits<double>::max();
}

}  // namespace qvr
