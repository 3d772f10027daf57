// Reads the pixels of a device-independent bitmap of 1, 4, 8, 16 (5-5-5), 24 or 32 bits.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

#include "qvr/platform/detail/pixelFormat.h"
#include "qvr/platform/types.h"

namespace qvr {

/// A bitmap whose header has been checked; rows are counted from the top as seen.
class BitmapPixels {
public:
    /// @param bits  all rows that the header promises, each padded to 4 bytes
    /// @param info  header and colour table
    /// @return nothing for a null pointer, a compressed bitmap, an unknown bit count or a side outside 1 … 2^30
    static std::optional<BitmapPixels> read(const void* bits, const BITMAPINFO* info);

    std::int64_t width() const { return m_width; }
    std::int64_t height() const { return m_height; }
    bool isBottomUp() const { return m_bottomUp; }
    int bitCount() const { return m_bitCount; }
    /// Colours of pixel values 0 … 255; black beyond the end of the colour table.
    const std::array<Rgb, 256>& table() const { return m_table; }

    const std::uint8_t* row(std::int64_t fromTop) const {
        const std::int64_t row = m_bottomUp ? m_height - 1 - fromTop : fromTop;
        return m_bits + static_cast<std::size_t>(row) * m_stride;
    }
    /// For every bit count but 8, whose pixels are looked up in table(). @param column  0 … width - 1
    Rgb colour(const std::uint8_t* row, std::size_t column) const;

private:
    BitmapPixels() = default;
    void readTable(const BITMAPINFO* info, const BITMAPINFOHEADER& header);

    const std::uint8_t* m_bits = nullptr;
    std::int64_t m_width = 0;
    std::int64_t m_height = 0;
    std::size_t m_stride = 0;
    bool m_bottomUp = true;
    int m_bitCount = 0;
    std::array<Rgb, 256> m_table = {};
};

}  // namespace qvr
