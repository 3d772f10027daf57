// Measuring and drawing a text in one call, for tests.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <vector>

#include "qvr/platform/CRasterDC.h"

inline constexpr int kHigh = std::numeric_limits<int>::max();

inline CSize extentOf(const char* text, int height, const char* face = "Arial", int weight = 400) {
    CRasterDC dc(1, 1);
    CFont font(height, weight, face, 1);
    dc.SelectObject(&font);
    return dc.GetTextExtent(text, -1);
}

// Coverage of every pixel of a 32-bit raster with white text.
struct Ink {
    int width, height;
    std::vector<std::uint8_t> pixels;
    double sum = 0;
    RECT box{kHigh, kHigh, -1, -1};

    std::uint8_t at(int x, int y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }
};

inline Ink drawn(const char* text, const RECT& rect, int height, unsigned flags, bool smoothed, CSize size,
                 const char* face = "Arial", int weight = 400) {
    CRasterDC dc(size.cx, size.cy);
    CFont font(height, weight, face, 1);
    dc.SelectObject(&font);
    dc.SetTextColor(0xFFFFFF);
    dc.SetTextSmoothing(smoothed);
    EXPECT_EQ(dc.DrawText(text, -1, &rect, flags), static_cast<int>(std::abs(static_cast<long>(height))));
    Ink ink{size.cx, size.cy, {}};
    for (int y = 0; y < size.cy; ++y) {
        for (int x = 0; x < size.cx; ++x) {
            const auto value = static_cast<std::uint8_t>(dc.GetPixel(x, y) & 0xFF);
            ink.pixels.push_back(value);
            ink.sum += value / 255.0;
            if (value == 0) continue;
            ink.box = {std::min(ink.box.left, x), std::min(ink.box.top, y), std::max(ink.box.right, x + 1),
                       std::max(ink.box.bottom, y + 1)};
        }
    }
    return ink;
}
