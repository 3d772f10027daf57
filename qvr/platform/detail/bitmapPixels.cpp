// Reading a bitmap. The header comes from a host or a file, so nothing in it is trusted or assumed to be aligned.
#include "qvr/platform/detail/bitmapPixels.h"

#include <algorithm>
#include <cstring>

namespace qvr {

namespace {

constexpr std::int64_t kLargestSide = std::int64_t{1} << 30;

bool isKnownBitCount(int bits) {
    return bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

}  // namespace

std::optional<BitmapPixels> BitmapPixels::read(const void* bits, const BITMAPINFO* info) {
    if (!bits || !info) return std::nullopt;
    BITMAPINFOHEADER header;
    std::memcpy(&header, static_cast<const void*>(info), sizeof(header));
    const std::int64_t signedHeight = header.biHeight;
    const std::int64_t height = signedHeight < 0 ? -signedHeight : signedHeight;
    if (header.biSize != sizeof(header) || header.biCompression != 0) return std::nullopt;
    if (!isKnownBitCount(header.biBitCount)) return std::nullopt;
    if (header.biWidth < 1 || header.biWidth > kLargestSide) return std::nullopt;
    if (height < 1 || height > kLargestSide) return std::nullopt;

    BitmapPixels bitmap;
    bitmap.m_bits = static_cast<const std::uint8_t*>(bits);
    bitmap.m_width = header.biWidth;
    bitmap.m_height = height;
    bitmap.m_stride = (static_cast<std::size_t>(header.biWidth) * header.biBitCount + 31) / 32 * 4;
    bitmap.m_bottomUp = signedHeight > 0;
    bitmap.m_bitCount = header.biBitCount;
    if (header.biBitCount <= 8) bitmap.readTable(info, header);
    return bitmap;
}

void BitmapPixels::readTable(const BITMAPINFO* info, const BITMAPINFOHEADER& header) {
    const std::uint32_t all = 1u << m_bitCount;
    const std::uint32_t count = header.biClrUsed == 0 ? all : std::min(header.biClrUsed, all);
    const auto* entries = reinterpret_cast<const std::uint8_t*>(info) + sizeof(BITMAPINFOHEADER);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint8_t* entry = entries + i * sizeof(RGBQUAD);
        m_table[i] = rgb(entry[2], entry[1], entry[0]);
    }
}

Rgb BitmapPixels::colour(const std::uint8_t* row, std::size_t column) const {
    switch (m_bitCount) {
        case 1:
            return m_table[row[column / 8] >> (7 - column % 8) & 1u];
        case 4:
            return m_table[column % 2 == 0 ? row[column / 2] >> 4 : row[column / 2] & 0xFu];
        case 16: {
            const std::uint32_t pixel = PixelFormat<16>::load(row + 2 * column);
            return rgb(widened5(pixel >> 10 & 0x1F), widened5(pixel >> 5 & 0x1F), widened5(pixel & 0x1F));
        }
        case 24:
            return PixelFormat<24>::load(row + 3 * column);
        default:
            return PixelFormat<32>::load(row + 4 * column) & 0xFFFFFF;
    }
}

}  // namespace qvr
