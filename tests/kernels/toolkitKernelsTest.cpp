// Counting, turns, mirrors, copies and fills against their rules.
#include <algorithm>
#include <string>
#include <utility>

#include "kernels/kernelTest.h"
#include "qvr/toolkit/detail/histogramWindow.h"
#include "qvr/toolkit/detail/mirror.h"
#include "qvr/toolkit/detail/pixelRectangles.h"
#include "qvr/toolkit/detail/quarterTurn.h"

namespace {

using kernels::Random;
using kernels::same;

void expectSameCounts(const qvr::PixelRows& rows) {
    const auto expected = std::make_unique<qvr::Histogram>();
    const auto actual = std::make_unique<qvr::Histogram>();
    actual->counts.fill(5);
    qvr::countPixels(rows, *expected, qvr::CodePath::plain);
    qvr::countPixels(rows, *actual);
    ASSERT_EQ(expected->counted, actual->counted) << rows.width << " x " << rows.rows;
    ASSERT_TRUE(same(std::span<const std::uint32_t>(expected->counts),
                     std::span<const std::uint32_t>(actual->counts)))
        << rows.width << " x " << rows.rows;
}

TEST(CountPixels, AtEveryOddWidthAndStride) {
    Random random(1);
    for (int width = 0; width <= 67; ++width)
        for (const int gap : {0, 1, 5}) {
            const int rows = random.between(0, 9);
            const auto pixels = random.pixels(std::int64_t{width + gap} * rows);
            expectSameCounts({pixels.data(), width, rows, width + gap});
        }
}

TEST(CountPixels, MoreEqualPixelsThanASmallCounterHolds) {
    for (const int value : {1, 700, 16382, 16383, 16384, 65535}) {
        std::vector<std::uint16_t> pixels(600'001, static_cast<std::uint16_t>(value));
        expectSameCounts({pixels.data(), 600'001, 1, 600'001});
        expectSameCounts({pixels.data(), 1, 300'000, 2});
        expectSameCounts({pixels.data(), 17, 30'000, 20});
        for (std::size_t i = 0; i < pixels.size(); i += 2) pixels[i] = 12;  // no four alike
        expectSameCounts({pixels.data(), 777, 772, 777});
    }
}

TEST(QuarterTurn, AtEverySizeAroundATile) {
    Random random(2);
    std::vector<int> sides;
    for (int side = 0; side <= 67; ++side) sides.push_back(side);
    sides.insert(sides.end(), {127, 128, 129, 130, 191, 192, 193, 255, 256, 257});
    const auto expectSame = [&](int width, int height, bool clockwise) {
        const auto source = random.pixels(std::int64_t{width} * height);
        auto expected = source;
        ASSERT_TRUE(qvr::turnQuarter(expected.data(), width, height, clockwise, qvr::CodePath::plain));
        for (const auto path : {qvr::CodePath::fastest, qvr::CodePath::portable}) {
            auto actual = source;
            ASSERT_TRUE(qvr::turnQuarter(actual.data(), width, height, clockwise, path));
            ASSERT_TRUE(same(expected, actual))
                << width << " x " << height << (clockwise ? " right" : " left");
        }
    };
    for (const bool clockwise : {false, true})
        for (const auto& [width, height] :
             {std::pair{64, 192}, {210, 140}, {320, 128}, {195, 260}, {128, 64}})
            expectSame(width, height, clockwise);  // rectangles of squares
    for (const int side : sides)
        for (const bool clockwise : {false, true}) {
            expectSame(side, side, clockwise);
            for (int i = 0; i < 6; ++i)
                expectSame(
                    side,
                    sides[static_cast<std::size_t>(random.between(0, static_cast<int>(sides.size()) - 1))],
                    clockwise);
        }
}

TEST(Mirror, AtEveryOddSize) {
    Random random(3);
    for (int width = 0; width <= 200; width += width < 70 ? 1 : 13)
        for (const int height : {0, 1, 2, 5, 8}) {
            const auto source = random.pixels(std::int64_t{width} * height);
            auto expected = source;
            auto actual = source;
            qvr::mirrorRows(expected.data(), width, height, qvr::CodePath::plain);
            qvr::mirrorRows(actual.data(), width, height);
            ASSERT_TRUE(same(expected, actual)) << "rows of " << width << " x " << height;
            qvr::mirrorColumns(expected.data(), width, height, qvr::CodePath::plain);
            qvr::mirrorColumns(actual.data(), width, height);
            ASSERT_TRUE(same(expected, actual)) << "columns of " << width << " x " << height;
            const auto maximum = static_cast<std::uint16_t>(random.between(0, 65535));
            qvr::invertValues(expected.data(), expected.size(), maximum, qvr::CodePath::plain);
            qvr::invertValues(actual.data(), actual.size(), maximum);
            ASSERT_TRUE(same(expected, actual)) << "negative of " << width << " x " << height;
        }
}

struct Copy {
    const char* name;
    int left, bottom, width, height, outputWidth;
    std::ptrdiff_t overlap;  // where the output starts in the source; -1 apart from it
};
class CopyArea : public testing::TestWithParam<Copy> {};

// 2000 x 1500: large enough for stores past the caches, at starts that no line of memory fits.
TEST_P(CopyArea, CopiesEveryRow) {
    const Copy& copy = GetParam();
    constexpr int kWidth = 2000;
    constexpr int kHeight = 1500;
    Random random(4);
    const auto source = random.pixels(std::int64_t{kWidth} * kHeight);
    const auto outputSize =
        static_cast<std::size_t>(copy.outputWidth) * static_cast<std::size_t>(copy.height);
    std::vector<std::uint16_t> expected =
        copy.overlap < 0 ? std::vector<std::uint16_t>(outputSize + 3, 77) : source;
    std::vector<std::uint16_t> actual = expected;
    const std::ptrdiff_t start = copy.overlap < 0 ? 1 : copy.overlap;  // an odd start
    for (std::ptrdiff_t row = 0; row < copy.height; ++row)
        std::copy_n(source.begin() + (copy.bottom + row) * kWidth + copy.left, copy.width,
                    expected.begin() + start + row * copy.outputWidth);
    qvr::copyArea(copy.overlap < 0 ? source.data() : actual.data(), kWidth,
                  {copy.left, copy.bottom, copy.width, copy.height}, actual.data() + start, copy.outputWidth);
    EXPECT_TRUE(same(expected, actual));
}
INSTANTIATE_TEST_SUITE_P(Shapes, CopyArea,
                         testing::Values(Copy{"large", 7, 3, 1971, 1480, 1971, -1},
                                         Copy{"wideRows", 0, 0, 1999, 1500, 2000, -1},
                                         Copy{"small", 5, 5, 67, 33, 67, -1},
                                         Copy{"narrow", 5, 5, 3, 1400, 3, -1},
                                         Copy{"inItselfDown", 100, 90, 1800, 1400, 2000, 2000 * 40 + 10},
                                         Copy{"inItselfUp", 3, 2, 1800, 1400, 2000, 2000 * 60 + 150},
                                         Copy{"inItselfRight", 100, 90, 1800, 1400, 2000, 2000 * 90 + 140},
                                         Copy{"cutInItself", 11, 9, 1700, 1450, 1700, 0}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(FillOutside, KeepsTheAreaAlone) {
    Random random(5);
    for (int round = 0; round < 412; ++round) {
        const bool large = round >= 400;  // stores past the caches
        const int width = large ? random.between(1001, 1400) : random.between(1, 67);
        const int height = large ? 1500 : random.between(1, 20);
        const auto source = random.pixels(std::int64_t{width} * height);
        const int left = random.between(0, width);
        const int bottom = random.between(0, height);
        const qvr::PixelArea area{left, bottom, random.between(0, width - left),
                                  random.between(0, height - bottom)};
        const std::uint16_t value = round % 3 == 0 ? 0 : round % 3 == 1 ? 65535 : 300;
        auto expected = source;
        for (std::int64_t y = 0; y < height; ++y)
            for (std::int64_t x = 0; x < width; ++x)
                if (x < area.left || x >= area.left + area.width || y < area.bottom ||
                    y >= area.bottom + area.height)
                    expected[static_cast<std::size_t>(y * width + x)] = value;
        auto actual = source;
        qvr::fillOutside(actual.data(), width, height, area, value);
        ASSERT_TRUE(same(expected, actual)) << width << " x " << height << ", area " << area.left << ','
                                            << area.bottom << ' ' << area.width << " x " << area.height;
    }
}

}  // namespace
