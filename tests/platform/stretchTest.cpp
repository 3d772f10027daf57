// Stretching bitmaps, checked pixel by pixel against a plain loop at every depth.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/paddedSurface.h"

namespace {

// A bitmap whose bytes follow no pattern, so that any misplaced pixel shows. Its colours are fewer than its pixel values:
// the values beyond are black.
class TestBitmap {
public:
    TestBitmap(int width, int height, int bits, bool bottomUp)
        : m_width(width), m_height(height), m_bits(bits), m_bottomUp(bottomUp) {
        m_pixels.resize(stride() * static_cast<std::size_t>(height));
        for (std::size_t i = 0; i < m_pixels.size(); ++i)
            m_pixels[i] = static_cast<std::uint8_t>((i + 1) * 2654435761u >> 13);
        m_info.header = {
            .biSize = 40, .biWidth = width, .biHeight = bottomUp ? height : -height, .biPlanes = 1};
        m_info.header.biBitCount = static_cast<std::uint16_t>(bits);
        m_info.header.biClrUsed = colours();
        for (std::uint32_t i = 0; i < colours(); ++i) {
            const auto byte = [i](unsigned n) {
                return static_cast<std::uint8_t>(i * (37 + 2 * n) + 50 * n);
            };
            m_info.colours[i] = {byte(0), byte(1), byte(2), 0x77};
        }
    }

    BITMAPINFO* info() { return reinterpret_cast<BITMAPINFO*>(&m_info); }
    const void* bits() const { return m_pixels.data(); }
    int width() const { return m_width; }
    int height() const { return m_height; }

    // The colour at a place from the top as seen, as 0x00BBGGRR.
    COLORREF colour(std::int64_t x, std::int64_t y) const {
        const std::size_t row = static_cast<std::size_t>(m_bottomUp ? m_height - 1 - y : y) * stride();
        const std::size_t bit = static_cast<std::size_t>(x) * static_cast<std::size_t>(m_bits);
        const auto byte = [&](std::size_t i) -> std::uint32_t { return m_pixels[row + bit / 8 + i]; };
        const auto bgr = [](std::uint32_t b, std::uint32_t g, std::uint32_t r) {
            return b << 16 | g << 8 | r;
        };
        if (m_bits >= 24) return bgr(byte(0), byte(1), byte(2));
        if (m_bits == 16) {
            const auto wide = [v = byte(0) | byte(1) << 8](int shift) {
                return (v >> shift & 31) * 8 + (v >> shift & 31) / 4;
            };
            return bgr(wide(0), wide(5), wide(10));
        }
        const std::uint32_t value = (byte(0) << bit % 8 & 255) >> (8 - m_bits);
        const RGBQUAD& entry = m_info.colours[value];
        return value < colours() ? bgr(entry.rgbBlue, entry.rgbGreen, entry.rgbRed) : 0;
    }

private:
    std::size_t stride() const { return static_cast<std::size_t>((m_width * m_bits + 31) / 32 * 4); }
    std::uint32_t colours() const { return m_bits > 8 ? 0 : m_bits == 8 ? 200 : m_bits == 4 ? 13 : 2; }

    int m_width, m_height, m_bits;
    bool m_bottomUp;
    std::vector<std::uint8_t> m_pixels;
    struct {
        BITMAPINFOHEADER header;
        RGBQUAD colours[256];
    } m_info{};
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

TEST(Surface, ReadsNoMoreColoursThanPixelsCanHave) {
    TestBitmap bitmap(29, 17, 8, true);
    bitmap.info()->bmiHeader.biClrUsed = 0x80000000u;
    PaddedSurface surface(kWidth, kHeight, 32);
    EXPECT_EQ(surface.dc.StretchDIBits(0, 0, 9, 9, 0, 0, 9, 9, bitmap.bits(), bitmap.info(), SRCCOPY), 9);
}

TEST(Surface, RefusesBitmapsThatItCannotRead) {
    struct Change {
        const char* name;
        void (*apply)(BITMAPINFOHEADER&);
    };
    const Change changes[] = {
        {"size", [](BITMAPINFOHEADER& h) { h.biSize = 12; }},
        {"compressed", [](BITMAPINFOHEADER& h) { h.biCompression = 1; }},
        {"bit count 2", [](BITMAPINFOHEADER& h) { h.biBitCount = 2; }},
        {"no width", [](BITMAPINFOHEADER& h) { h.biWidth = 0; }},
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
