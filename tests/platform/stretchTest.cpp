// Stretching bitmaps, checked pixel by pixel against a plain loop at every depth.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "platform/paddedSurface.h"

namespace {

// A bitmap whose pixel values follow no pattern, so that any misplaced pixel shows.
class TestBitmap {
public:
    TestBitmap(int width, int height, int bits, bool bottomUp)
        : m_width(width), m_height(height), m_bits(bits) {
        m_stride = (width * bits + 31) / 32 * 4;
        m_pixels.assign(static_cast<std::size_t>(m_stride) * static_cast<std::size_t>(height), 0xEE);
        for (int y = 0; y < height; ++y) {
            std::uint8_t* row = m_pixels.data() + (bottomUp ? height - 1 - y : y) * m_stride;
            for (int x = 0; x < width; ++x) put(row, x, value(x, y));
        }
        // Fewer colours than pixel values: the values beyond are black.
        const std::uint32_t colours = bits == 8 ? 200 : bits == 4 ? 13 : 2;
        BITMAPINFOHEADER header{
            .biSize = 40, .biWidth = width, .biHeight = bottomUp ? height : -height, .biPlanes = 1};
        header.biBitCount = static_cast<std::uint16_t>(bits);
        if (bits <= 8) header.biClrUsed = colours;
        m_info.assign(sizeof(header) + (bits <= 8 ? 4 * colours : 0), 0);
        std::memcpy(m_info.data(), &header, sizeof(header));
        for (std::uint32_t i = 0; bits <= 8 && i < colours; ++i) {
            const RGBQUAD entry{entryByte(i, 0), entryByte(i, 1), entryByte(i, 2), 0x77};
            std::memcpy(m_info.data() + sizeof(header) + 4 * i, &entry, 4);
        }
    }

    BITMAPINFO* info() { return reinterpret_cast<BITMAPINFO*>(m_info.data()); }
    const void* bits() const { return m_pixels.data(); }
    int width() const { return m_width; }
    int height() const { return m_height; }

    // The colour at a place from the top as seen, as 0x00BBGGRR.
    COLORREF colour(std::int64_t x, std::int64_t y) const {
        const std::uint32_t v = value(static_cast<int>(x), static_cast<int>(y));
        const auto bgr = [](std::uint32_t b, std::uint32_t g, std::uint32_t r) {
            return b << 16 | g << 8 | r;
        };
        if (m_bits <= 8) {
            if (v >= (m_bits == 8 ? 200u : m_bits == 4 ? 13u : 2u)) return 0;
            return bgr(entryByte(v, 0), entryByte(v, 1), entryByte(v, 2));
        }
        if (m_bits == 16) {
            const auto wide = [](std::uint32_t five) { return five * 8 + five / 4; };
            return bgr(wide(v & 31), wide(v >> 5 & 31), wide(v >> 10 & 31));
        }
        return bgr(v & 255, v >> 8 & 255, v >> 16 & 255);
    }

private:
    std::uint32_t value(int x, int y) const {
        const auto mixed =
            static_cast<std::uint32_t>(x) * 2654435761u ^ static_cast<std::uint32_t>(y) * 40503u * 65537u;
        return (mixed ^ mixed >> 15) & (m_bits == 32 ? 0xFFFFFFFFu : (1u << m_bits) - 1);
    }
    static std::uint8_t entryByte(std::uint32_t entry, unsigned channel) {
        return static_cast<std::uint8_t>(entry * (37 + 2 * channel) + 50 * channel + 11);
    }
    void put(std::uint8_t* row, int x, std::uint32_t v) const {
        if (m_bits >= 8) {
            std::memcpy(row + x * (m_bits / 8), &v, static_cast<std::size_t>(m_bits / 8));
            return;
        }
        const int perByte = 8 / m_bits;
        const int shift = 8 - m_bits * (x % perByte + 1);
        std::uint8_t& byte = row[x / perByte];
        byte = static_cast<std::uint8_t>((byte & ~(((1 << m_bits) - 1) << shift)) | static_cast<int>(v)
                                                                                        << shift);
    }

    int m_width, m_height, m_bits, m_stride;
    std::vector<std::uint8_t> m_info, m_pixels;
};

struct Stretch {
    const char* name;
    int dx, dy, dw, dh, sx, sy, sw, sh;
};

// The rule in plain words: the colour of each pixel, or nothing where it keeps its own.
std::vector<std::pair<bool, COLORREF>> plainStretch(const Stretch& s, const TestBitmap& bitmap,
                                                    bool bottomUp) {
    std::vector<std::pair<bool, COLORREF>> expected;
    for (std::int64_t y = 0; y < kHeight; ++y) {
        for (std::int64_t x = 0; x < kWidth; ++x) {
            const std::int64_t i = x - s.dx, j = y - s.dy;
            bool drawn = i >= 0 && i < s.dw && j >= 0 && j < s.dh;
            std::int64_t column = 0, row = 0;
            if (drawn) {
                column = s.sx + i * s.sw / s.dw;
                row = j * s.sh / s.dh + (bottomUp ? bitmap.height() - (std::int64_t{s.sy} + s.sh) : s.sy);
                drawn = column >= 0 && column < bitmap.width() && row >= 0 && row < bitmap.height();
            }
            expected.emplace_back(drawn, drawn ? bitmap.colour(column, row) : 0);
        }
    }
    return expected;
}

TEST(StretchTest, EveryDepthFollowsTheRule) {
    const Stretch cases[] = {
        {"whole", 3, 2, 29, 17, 0, 0, 29, 17},
        {"enlarged", 1, 1, 35, 22, 0, 0, 29, 17},
        {"reduced", 5, 4, 13, 7, 0, 0, 29, 17},
        {"part", 2, 2, 20, 20, 7, 3, 11, 5},
        {"beyond_left_top", -9, -8, 29, 17, 0, 0, 29, 17},
        {"beyond_right_bottom", 20, 15, 58, 34, 0, 0, 29, 17},
        {"source_before", 4, 4, 30, 15, -5, -4, 29, 17},
        {"huge_destination", -(1 << 30), -(1 << 30), kHigh, kHigh, 0, 0, 29, 17},
        {"huge_both", kLow, kLow, kHigh, kHigh, kLow, kLow, kHigh, kHigh},
        {"huge_unscaled", -(1 << 30), -(1 << 30), kHigh, kHigh, -(1 << 30), -(1 << 30), kHigh, kHigh},
        {"far_destination", kHigh, kHigh, kHigh, kHigh, 0, 0, 29, 17}};
    for (const Stretch& s : cases) {
        SCOPED_TRACE(s.name);
        for (const int sourceBits : {1, 4, 8, 16, 24, 32}) {
            for (const int bits : {8, 16, 24, 32}) {
                for (const bool bottomUp : {true, false}) {
                    TestBitmap bitmap(29, 17, sourceBits, bottomUp);
                    const auto expected = plainStretch(s, bitmap, bottomUp);
                    PaddedSurface surface(kWidth, kHeight, bits), before(kWidth, kHeight, bits);
                    const int rows = surface.dc.StretchDIBits(s.dx, s.dy, s.dw, s.dh, s.sx, s.sy, s.sw, s.sh,
                                                              bitmap.bits(), bitmap.info(), SRCCOPY);
                    int drawnRows = 0;
                    for (int y = 0; y < kHeight; ++y) {
                        bool any = false;
                        for (int x = 0; x < kWidth; ++x) {
                            const auto [drawn, colour] = expected[static_cast<std::size_t>(y * kWidth + x)];
                            const COLORREF wanted = drawn ? shown(colour, bits) : before.dc.GetPixel(x, y);
                            ASSERT_EQ(surface.dc.GetPixel(x, y), wanted)
                                << "(" << x << ", " << y << "), " << sourceBits << " bits on " << bits
                                << ", bottom-up " << bottomUp;
                            any |= drawn;
                        }
                        drawnRows += any;
                    }
                    EXPECT_EQ(rows, drawnRows);
                    EXPECT_TRUE(surface.paddingIsUntouched());
                }
            }
        }
    }
}

TEST(Surface, RefusesBitmapsThatItCannotRead) {
    struct Change {
        const char* name;
        void (*apply)(BITMAPINFOHEADER&);
    };
    const Change changes[] = {
        {"size", [](BITMAPINFOHEADER& h) { h.biSize = 12; }},
        {"compressed", [](BITMAPINFOHEADER& h) { h.biCompression = 1; }},
        {"bit count 0", [](BITMAPINFOHEADER& h) { h.biBitCount = 0; }},
        {"bit count 2", [](BITMAPINFOHEADER& h) { h.biBitCount = 2; }},
        {"no width", [](BITMAPINFOHEADER& h) { h.biWidth = 0; }},
        {"negative width", [](BITMAPINFOHEADER& h) { h.biWidth = -29; }},
        {"no height", [](BITMAPINFOHEADER& h) { h.biHeight = 0; }},
        {"lowest height", [](BITMAPINFOHEADER& h) { h.biHeight = kLow; }},
        {"too wide", [](BITMAPINFOHEADER& h) { h.biWidth = kHigh; }},
    };
    for (const Change& change : changes) {
        TestBitmap bitmap(29, 17, 8, true);
        PaddedSurface surface(kWidth, kHeight, 32);
        change.apply(bitmap.info()->bmiHeader);
        EXPECT_EQ(surface.dc.StretchDIBits(0, 0, 9, 9, 0, 0, 9, 9, bitmap.bits(), bitmap.info(), SRCCOPY), 0)
            << change.name;
        EXPECT_TRUE(surface.isUntouched()) << change.name;
    }
    TestBitmap bitmap(29, 17, 8, true);
    PaddedSurface surface(kWidth, kHeight, 32);
    const auto draw = [&](int dw, int dh, int sw, int sh, const void* bits, const BITMAPINFO* info,
                          std::uint32_t rop) {
        return surface.dc.StretchDIBits(0, 0, dw, dh, 0, 0, sw, sh, bits, info, rop);
    };
    EXPECT_EQ(draw(9, 9, 9, 9, nullptr, bitmap.info(), SRCCOPY), 0);
    EXPECT_EQ(draw(9, 9, 9, 9, bitmap.bits(), nullptr, SRCCOPY), 0);
    EXPECT_EQ(draw(9, 9, 9, 9, bitmap.bits(), bitmap.info(), 0x00660046), 0);
    EXPECT_EQ(draw(0, 9, 9, 9, bitmap.bits(), bitmap.info(), SRCCOPY), 0);
    EXPECT_EQ(draw(9, -9, 9, 9, bitmap.bits(), bitmap.info(), SRCCOPY), 0);
    EXPECT_EQ(draw(9, 9, kLow, 9, bitmap.bits(), bitmap.info(), SRCCOPY), 0);
    EXPECT_EQ(draw(9, 9, 9, 0, bitmap.bits(), bitmap.info(), SRCCOPY), 0);
    EXPECT_TRUE(surface.isUntouched());
}

}  // namespace
