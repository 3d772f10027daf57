// Rectangular parts of a buffer: inside or not, copied, and everything else filled.
#pragma once

#include <cstdint>

namespace qvr {

/// The height of a buffer when its caller does not tell it.
inline constexpr std::int64_t kUnknownHeight = std::int64_t{1} << 40;

/// Columns left … left + width - 1 and rows bottom … bottom + height - 1, rows counted upward.
struct PixelArea {
    std::int64_t left = 0;
    std::int64_t bottom = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;

    constexpr bool inside(std::int64_t bufferWidth, std::int64_t bufferHeight) const {
        return left >= 0 && bottom >= 0 && width >= 0 && height >= 0 && left + width <= bufferWidth &&
               bottom + height <= bufferHeight;
    }
};

/// Copies an area of a buffer with rows of `stride` values to `output` with rows of `outputStride` values, right also
/// when the two overlap in any way.
void copyArea(const std::uint16_t* pixels, std::int64_t stride, const PixelArea& area, std::uint16_t* output,
              std::int64_t outputStride);

/// Fills everything of a buffer of width * height values outside an area that lies inside it.
void fillOutside(std::uint16_t* pixels, std::int64_t width, std::int64_t height, const PixelArea& area,
                 std::uint16_t value);

}  // namespace qvr
