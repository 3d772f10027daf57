// Print bitmaps: a region through the table of its depth; regions that leave the source are refused.
#include <gtest/gtest.h>

#include <limits>

#include "qvr/image/detail/bitmapRows.h"
#include "qvr/image/rawImage.h"
#include "reference/displayTable.h"
#include "support/pictures.h"

namespace {

constexpr int kLow = std::numeric_limits<int>::min(), kHigh = std::numeric_limits<int>::max();
using Print = int (*)(int, int, const std::uint16_t*, int, int, int, int, int, int, int, CDib*);

struct Depth {
    Print print;
    int bits, largest;
};
const Depth kDepths[] = {{rawImage::CreatePrintImage14Bits, 14, 16383},
                         {rawImage::CreatePrintImage12Bits, 12, 4095}};

TEST(PrintTest, TakesItsRegionRowByRow) {
    const auto pixels = ramp(1000, 90);
    for (const Depth& depth : kDepths)
        for (const auto& [width, height] : {std::pair(100, 50), {99, 50}, {1, 1}, {990, 70}}) {
            SCOPED_TRACE(testing::Message() << depth.bits << " bits, " << width << " x " << height);
            const auto bitmap = qvr::makeGreyBitmap(width, height, nullptr);
            const int center = 9000 % (depth.largest + 1);
            ASSERT_EQ(depth.print(1000, 90, pixels.data(), 10, 20, 700, center, 0, 1, 5, bitmap.get()), 1);
            const auto table = reference::Table::ofWindow(700, center, 0, 1, 5, depth.bits);
            const auto rows = qvr::rowsOf(bitmap.get());
            for (int r = 0; r < height; ++r) {
                for (int c = 0; c < width; ++c) {
                    const int v = pixels[static_cast<std::size_t>((20 + r) * 1000 + 10 + c)];
                    ASSERT_EQ(rows.row(r)[c], table(std::min(v, depth.largest))) << c << ", " << r;
                }
                for (std::size_t c = static_cast<std::size_t>(width); c < rows.stride; ++c)
                    ASSERT_EQ(rows.row(r)[c], 0) << "padding";
            }
        }
}

TEST(PrintTest, RefusesWhatItCannotFill) {
    const auto pixels = ramp(40, 30);
    for (const Depth& depth : kDepths) {
        const auto bitmap = qvr::makeGreyBitmap(20, 10, nullptr);
        std::fill_n(bitmap->Bits, 200, std::uint8_t{99});
        CDib empty, headerOnly(20, 10, 8), colour(20, 10, 24);
        colour.CreateSection(nullptr);
        const auto print = [&](int width, int height, int column, int row, CDib* target) {
            return depth.print(width, height, pixels.data(), column, row, 100, 100, 0, 1, 5, target);
        };
        EXPECT_EQ(print(40, 30, 21, 0, bitmap.get()), 0);
        EXPECT_EQ(print(40, 30, 0, 21, bitmap.get()), 0);
        EXPECT_EQ(print(40, 30, -1, 0, bitmap.get()), 0);
        EXPECT_EQ(print(40, 30, 0, -1, bitmap.get()), 0);
        EXPECT_EQ(print(40, 30, kHigh, kHigh, bitmap.get()), 0);
        EXPECT_EQ(print(40, 30, kLow, kLow, bitmap.get()), 0);
        EXPECT_EQ(print(19, 30, 0, 0, bitmap.get()), 0);
        EXPECT_EQ(print(-40, 30, 0, 0, bitmap.get()), 0);
        EXPECT_EQ(print(40, 30, 0, 0, nullptr), 0);
        EXPECT_EQ(print(40, 30, 0, 0, &empty), 0);
        EXPECT_EQ(print(40, 30, 0, 0, &headerOnly), 0);
        EXPECT_EQ(print(40, 30, 0, 0, &colour), 0);
        EXPECT_EQ(depth.print(40, 30, nullptr, 0, 0, 100, 100, 0, 1, 5, bitmap.get()), 0);
        EXPECT_EQ(std::count(bitmap->Bits, bitmap->Bits + 200, 99), 200);
        EXPECT_EQ(print(40, 30, 20, 20, bitmap.get()), 1);  // up to the last column and row
        std::fill_n(bitmap->Bits, 200, std::uint8_t{99});
        EXPECT_EQ(print(40, 0, 20, 20, bitmap.get()), 1);  // the height is not given
        EXPECT_EQ(std::count(bitmap->Bits, bitmap->Bits + 200, 99), 0);
    }
}

}  // namespace
