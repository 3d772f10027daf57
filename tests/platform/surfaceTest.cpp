// The drawing surface: filling, lines, selections and compatible rasters.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <set>
#include <utility>

#include "platform/paddedSurface.h"

namespace {

TEST(Surface, FillsExactlyTheVisiblePartOfARectangle) {
    const RECT rects[] = {{2, 3, 9, 8},        {-5, -5, 4, 4}, {30, 20, 90, 90}, {kLow, kLow, kHigh, kHigh},
                          {kLow, 5, kHigh, 6}, {9, 9, 9, 12},  {9, 9, 3, 12},    {kHigh, kHigh, kLow, kLow},
                          {36, 22, 37, 23},    {37, 0, 40, 23}};
    for (const int bits : {8, 16, 24, 32}) {
        for (const RECT& r : rects) {
            PaddedSurface surface(kWidth, kHeight, bits), before(kWidth, kHeight, bits);
            surface.dc.FillSolidRect(&r, 0xC08040);
            for (int y = 0; y < kHeight; ++y) {
                for (int x = 0; x < kWidth; ++x) {
                    const bool inside = x >= r.left && x < r.right && y >= r.top && y < r.bottom;
                    ASSERT_EQ(surface.dc.GetPixel(x, y),
                              inside ? shown(0xC08040, bits) : before.dc.GetPixel(x, y))
                        << "(" << x << ", " << y << ") at " << bits << " bits";
                }
            }
            EXPECT_TRUE(surface.paddingIsUntouched());
        }
    }
    PaddedSurface surface(kWidth, kHeight, 32);
    surface.dc.FillSolidRect(nullptr, 0xFFFFFF);
    EXPECT_TRUE(surface.isUntouched());
}

TEST(Surface, ImpossibleSizesGiveAnEmptySurface) {
    std::uint32_t pixel = 7;
    struct {
        int width, height, bits;
    } const sizes[] = {{0, 5, 32}, {5, -1, 32},     {kHigh, kHigh, 32}, {1 << 15, 1 << 15, 8},
                       {5, 5, 4},  {kLow, kLow, 16}};
    for (const auto& size : sizes) {
        CRasterDC owned(size.width, size.height, size.bits);
        CRasterDC hosted(&pixel, size.width, size.height, std::numeric_limits<std::size_t>::max(), size.bits);
        for (CRasterDC* dc : {&owned, &hosted}) {
            const RECT all{kLow, kLow, kHigh, kHigh};
            dc->FillSolidRect(&all, 0xFFFFFF);
            dc->DrawText("L", -1, &all, DT_CENTER);
            EXPECT_EQ(dc->GetWidth(), 0);
            EXPECT_EQ(dc->GetHeight(), 0);
            EXPECT_EQ(dc->GetRow(0), nullptr);
            EXPECT_EQ(dc->GetPixel(0, 0), 0u);
        }
    }
    EXPECT_EQ(CRasterDC(&pixel, 2, 1, 4, 32).GetWidth(), 0) << "rows overlap";
    EXPECT_EQ(CRasterDC(nullptr, 2, 1, 8, 32).GetWidth(), 0);
    EXPECT_EQ(pixel, 7u);
}

// A surface with the two necessary operations only: it remembers which pixels were filled.
class PlainDC : public CDC {
public:
    void FillSolidRect(const RECT* rect, COLORREF colour) override {
        for (int y = rect->top; y < rect->bottom; ++y) {
            for (int x = rect->left; x < rect->right; ++x) filled.emplace(std::pair(x, y), colour);
        }
        ++calls;
    }
    int StretchDIBits(int, int, int, int, int, int, int, int, const void*, const BITMAPINFO*,
                      std::uint32_t) override {
        return 0;
    }
    int GetBitsPerPixel() const override { return bits; }

    std::set<std::pair<std::pair<int, int>, COLORREF>> filled;
    int calls = 0;
    int bits = 32;
};

TEST(Surface, LinesStartAtTheirPositionAndLeaveOutTheirEnd) {
    const CPoint ends[] = {{9, 0},  {-9, 0},   {0, 7},  {0, -7}, {5, 5}, {-5, 5},
                           {10, 3}, {-3, -10}, {7, -4}, {1, 0},  {0, 0}};
    CPen pen(PS_SOLID, 1, 0x00FF00);
    for (const CPoint& end : ends) {
        PlainDC dc;
        dc.SelectObject(&pen);
        dc.MoveTo(20, 30);
        dc.LineTo(20 + end.x, 30 + end.y);
        const int longer = std::max(std::abs(end.x), std::abs(end.y));
        EXPECT_EQ(dc.filled.size(), static_cast<std::size_t>(longer)) << end.x << ", " << end.y;
        EXPECT_EQ(dc.filled.count({{20, 30}, 0x00FF00}), longer > 0 ? 1u : 0u);
        EXPECT_EQ(dc.filled.count({{20 + end.x, 30 + end.y}, 0x00FF00}), 0u);
        for (const auto& [pixel, colour] : dc.filled) {
            // No pixel is farther than half a pixel from the true line along the shorter direction.
            const int aside = (pixel.first - 20) * end.y - (pixel.second - 30) * end.x;
            EXPECT_LE(2 * std::abs(aside), longer);
        }
        dc.LineTo(20 + end.x + 1, 30 + end.y);  // goes on from the end point
        EXPECT_EQ(dc.filled.count({{20 + end.x, 30 + end.y}, 0x00FF00}), 1u);
    }
}

TEST(Surface, ExtremeLinesReturnAtOnceAndPassThroughTheSurface) {
    CRasterDC dc(100, 100);
    CPen pen(PS_SOLID, 1, 0xFFFFFF);
    dc.SelectObject(&pen);
    dc.MoveTo(kLow, kLow);
    dc.LineTo(kHigh, kHigh);
    dc.MoveTo(kHigh, 50);
    dc.LineTo(kLow, 50);
    dc.MoveTo(kLow, kHigh);
    dc.LineTo(kLow, kLow);
    for (int y = 0; y < 100; ++y) {
        for (int x = 0; x < 100; ++x)
            ASSERT_EQ(dc.GetPixel(x, y), x == y || y == 50 ? 0xFFFFFFu : 0u) << x << ", " << y;
    }
}

TEST(Surface, LinesFarOffAskForNothing) {
    // A rectangle one row high cannot be told there: its end would be beyond the integers.
    PlainDC dc;
    for (const int level : {kLow, kHigh}) {
        dc.MoveTo(0, level);
        dc.LineTo(90, level);
        dc.MoveTo(level, 0);
        dc.LineTo(level, 90);
    }
    EXPECT_EQ(dc.calls, 0);
}

TEST(Surface, ALineGoesOnWhereAHostsFillThrows) {
    class ThrowingDC : public PlainDC {
        void FillSolidRect(const RECT* rect, COLORREF colour) override {
            PlainDC::FillSolidRect(rect, colour);
            throw 5;
        }
    } dc;
    dc.LineTo(9, 3);
    EXPECT_EQ(dc.filled.size(), 9u);
}

TEST(Surface, SelectionReturnsThePreviousObject) {
    CRasterDC dc(10, 10);
    const RGBQUAD colours[3] = {{1, 2, 3, 0}, {4, 5, 6, 0}, {7, 8, 9, 0}};
    CPalette palette(colours, 3);
    CPalette* const stockPalette = dc.SelectPalette(&palette, 1);
    EXPECT_EQ(dc.RealizePalette(), 3u);
    EXPECT_EQ(dc.SelectPalette(stockPalette, 0), &palette);
    EXPECT_EQ(palette.GetEntry(1), 0x040506u);
    EXPECT_EQ(palette.GetEntry(3), 0u);
    EXPECT_EQ(CPalette(colours, -4).GetEntryCount() + CPalette(nullptr, 5).GetEntryCount(), 0);
    EXPECT_EQ(dc.SetStretchBltMode(4), 3);
    EXPECT_EQ(dc.SetStretchBltMode(3), 4);
    EXPECT_EQ(dc.SetBkMode(TRANSPARENT), OPAQUE);
    EXPECT_EQ(dc.SetTextColor(0x123456), 0u);
}

TEST(Surface, DestroyedSelectionsFallBackToTheStockObjects) {
    CRasterDC dc(10, 10);
    auto font = std::make_unique<CFont>(77, 400, "Arial", 1);
    auto pen = std::make_unique<CPen>(PS_SOLID, 1, 0xFFFFFF);
    const RGBQUAD colour{};
    auto palette = std::make_unique<CPalette>(&colour, 1);
    CFont* const stockFont = dc.SelectObject(font.get());
    CPen* const stockPen = dc.SelectObject(pen.get());
    CPalette* const stockPalette = dc.SelectPalette(palette.get(), 0);
    font.reset();
    pen.reset();
    palette.reset();
    EXPECT_EQ(dc.GetTextExtent("", 0).cy, stockFont->GetHeight());
    dc.LineTo(5, 0);
    EXPECT_EQ(dc.GetPixel(2, 0), 0u);
    EXPECT_EQ(dc.RealizePalette(), 0u);
    CFont next(20, 400, "Arial", 1);
    EXPECT_EQ(dc.SelectObject(&next), stockFont);
    EXPECT_EQ(dc.SelectObject(static_cast<CPen*>(nullptr)), stockPen);
    EXPECT_EQ(dc.SelectPalette(nullptr, 0), stockPalette);
}

TEST(Surface, CompatibleRastersSuitTheirSurface) {
    for (const auto& [bits, expected] : {std::pair{8, 8}, {16, 16}, {24, 32}, {32, 32}, {1, 32}, {0, 32}}) {
        PlainDC dc;
        dc.bits = bits;
        const auto raster = dc.CreateCompatibleRaster(7, 5);
        ASSERT_TRUE(raster && raster->GetWidth() == 7 && raster->GetHeight() == 5) << bits;
        EXPECT_EQ(raster->GetBitsPerPixel(), expected);
        EXPECT_EQ(raster->GetPixel(6, 4), 0u);
    }
    PlainDC dc;
    EXPECT_FALSE(dc.CreateCompatibleRaster(0, 5));
    EXPECT_FALSE(dc.CreateCompatibleRaster(5, -1));
    EXPECT_FALSE(dc.CreateCompatibleRaster(kHigh, kHigh));
}

TEST(Surface, PlainSurfaceDrawsTheTextOfACompatibleRaster) {
    PlainDC plain;
    CFont font(40, 400, "Arial", 1);
    const auto raster = plain.CreateCompatibleRaster(300, 60);
    ASSERT_TRUE(raster);
    const RECT rect{5, 3, 290, 57};
    for (CDC* dc : {static_cast<CDC*>(&plain), static_cast<CDC*>(raster.get())}) {
        dc->SelectObject(&font);
        dc->SetTextColor(0xFFFFFF);
        ASSERT_EQ(dc->DrawText("Left 12", -1, &rect, 0x10025), 40);
    }
    ASSERT_FALSE(plain.filled.empty());
    EXPECT_LT(plain.calls, static_cast<int>(plain.filled.size()));  // runs, not pixels
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 300; ++x) {
            ASSERT_EQ(raster->GetPixel(x, y) != 0, plain.filled.count({{x, y}, 0xFFFFFF}) == 1)
                << x << ", " << y;
        }
    }
    const RECT endless{kLow, kLow, kHigh, kHigh};
    CFont huge(kHigh, 400, "Arial", 1);
    plain.SelectObject(&huge);
    EXPECT_EQ(plain.DrawText("L", -1, &endless, 0), 0) << "too many pixels to say that it was drawn";
}

}  // namespace
