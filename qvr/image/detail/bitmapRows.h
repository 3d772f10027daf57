// The one way to the pixel rows of an 8-bit bitmap.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "qvr/image/CDib.h"

namespace qvr {

/// Rows of an 8-bit bottom-up bitmap; row 0 is the bottom row of the picture. Empty (null bytes) when header and
/// storage of the bitmap do not agree, since a host may have changed them.
struct BitmapRows {
    std::uint8_t* bytes = nullptr;
    int width = 0;
    int height = 0;
    std::size_t stride = 0;  ///< bytes from row to row, width rounded up to a multiple of 4

    explicit operator bool() const { return bytes != nullptr; }
    std::uint8_t* row(int y) const { return bytes + static_cast<std::size_t>(y) * stride; }
};

/// @param bitmap  may be null
BitmapRows rowsOf(const CDib* bitmap) noexcept;

/// @return bytes of a row of `width` pixels, padded to a multiple of 4
constexpr std::int64_t rowStride(std::int64_t width, int bitCount) {
    return (width * bitCount + 31) / 32 * 4;
}

/// Makes a black 8-bit bitmap with a 256-step grey colour table, its palette realized on `surface` unless that is null.
/// @return null for a side below 1, too large a size or without memory
std::unique_ptr<CDib> makeGreyBitmap(int width, int height, CDC* surface);

/// Selects and realizes the bitmap's palette on a surface, and selects back the one before. Null does nothing.
void realizePalette(CDib& bitmap, CDC* surface);

}  // namespace qvr
