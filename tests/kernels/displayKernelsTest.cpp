// Block sums, grey rows and the whole conversion: at odd sizes, random windows, curves, ratios and offsets.
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <string>

#include "kernels/kernelTest.h"
#include "qvr/image/detail/blockConversion.h"
#include "qvr/image/detail/blockSums.h"
#include "qvr/image/detail/greyRow.h"
#include "qvr/image/detail/printConversion.h"
#include "qvr/platform/detail/processor.h"
#include "reference/blockMeans.h"

namespace {

using kernels::kFastPaths;
using kernels::nameOf;
using kernels::Random;
using kernels::same;

struct Shades {
    qvr::DisplayTable table{};
    std::optional<qvr::GreyRamp> ramp;
    const qvr::GreyRamp* rampOrNull() const { return ramp ? &*ramp : nullptr; }
};

Shades shadesOf(const qvr::DisplayWindow& window, const qvr::Curve& curve) {
    Shades shades;
    qvr::fillDisplayTable(window, curve, shades.table, qvr::CodePath::plain);
    shades.ramp = qvr::greyRamp(window, curve, 14);
    return shades;
}

Shades randomShades(Random& random) {
    using Int = std::numeric_limits<int>;
    const int farAway = random.between(0, 1) ? Int::min() : Int::max();
    const int center = random.between(0, 9) == 0 ? farAway : random.between(-3000, 19000);
    return shadesOf({random.between(-40, random.between(0, 1) ? 300 : 40000), center},
                    {random.between(0, 4), random.between(-3, 6), random.between(-3, 14)});
}

TEST(GreyRow, RampAndTableAgreeForEveryValue) {
    std::vector<std::uint16_t> all(65536);
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint16_t>(i);
    std::vector<std::uint8_t> expected(all.size());
    std::vector<std::uint8_t> actual(all.size());
    Random random(1);
    for (int round = 0; round < 400; ++round) {
        const int width = round < 200 ? round : random.between(0, 70000);
        const qvr::DisplayWindow window{width, random.between(-100, 17000)};
        const Shades shades = shadesOf(window, {});
        const qvr::GreyMap map{shades.table, shades.rampOrNull()};
        qvr::greyRow(all.data(), all.size(), map, expected.data(), qvr::CodePath::plain);
        qvr::greyRow(all.data(), all.size(), map, actual.data());
        ASSERT_TRUE(same(expected, actual)) << "window " << window.width << '/' << window.center;

        std::array<std::uint8_t, qvr::kTable12Bits> table12;
        qvr::fillDisplayTable(window, {}, table12, qvr::CodePath::plain);
        const auto ramp12 = qvr::greyRamp(window, {}, 12);
        const qvr::GreyMap map12{table12, ramp12 ? &*ramp12 : nullptr};
        qvr::greyRow(all.data(), all.size(), map12, expected.data(), qvr::CodePath::plain);
        qvr::greyRow(all.data(), all.size(), map12, actual.data());
        ASSERT_TRUE(same(expected, actual)) << "12 bits, window " << window.width << '/' << window.center;
    }
}

// Curves as steps, for every value that there is. Most rising tables have steps; the count tells that they were tried.
TEST(GreySteps, AgreeWithTheTableForEveryValue) {
    std::vector<std::uint16_t> all(65536 + 64);
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint16_t>(i);
    all.pop_back();  // an odd length
    std::vector<std::uint8_t> expected(all.size());
    std::vector<std::uint8_t> actual(all.size());
    Random random(7);
    int stepped = 0;
    for (int round = 0; round < 2000; ++round) {
        Shades shades = randomShades(random);
        if (round % 50 == 0) shades.table.fill(static_cast<std::uint8_t>(round));
        if (round % 50 == 1) shades.table.back() = 255;  // the only rise is the last
        if (round % 50 == 2) std::reverse(shades.table.begin(), shades.table.end());
        const std::span<const std::uint8_t> table(
            shades.table.data(), round % 2 ? shades.table.size() : std::size_t{qvr::kTable12Bits});
        const auto steps = qvr::greySteps(table);
        if (!steps || !qvr::hasAvx512Permutes()) continue;
        ++stepped;
        qvr::greyRow(all.data(), all.size(), {table}, expected.data(), qvr::CodePath::plain);
        qvr::greyRow(all.data(), all.size(), {table, nullptr, &*steps}, actual.data());
        ASSERT_TRUE(same(expected, actual)) << "round " << round;
    }
    if (qvr::hasAvx512Permutes()) {
        EXPECT_GT(stepped, 500);
    }
}

TEST(GreyRow, OddLengths) {
    Random random(2);
    for (int count = 0; count <= 130; ++count) {
        const auto values = random.pixels(count);
        const Shades shades = randomShades(random);
        std::vector<std::uint8_t> expected(values.size() + 1, 77);
        std::vector<std::uint8_t> actual(values.size() + 1, 77);
        const qvr::GreyMap map{shades.table, shades.rampOrNull()};
        qvr::greyRow(values.data(), values.size(), map, expected.data(), qvr::CodePath::plain);
        qvr::greyRow(values.data(), values.size(), map, actual.data());
        ASSERT_TRUE(same(expected, actual)) << count << " values";
    }
}

// Sums right beside a multiple of the block's pixels are where a quotient could be truncated wrongly.
TEST(GreyOfSums, QuotientsAreThoseOfIntegers) {
    Shades shades;
    for (std::size_t i = 0; i < shades.table.size(); ++i) shades.table[i] = static_cast<std::uint8_t>(i * 37);
    for (const std::uint32_t pixels :
         {1U, 2U, 3U, 6U, 7U, 9U, 12U, 25U, 49U, 63U, 64U, 65U, 81U, 256U, 257U, 1000U, 4095U, 65536U}) {
        std::vector<std::uint32_t> sums;
        for (std::uint64_t mean = 0; mean <= 65535; mean += mean < 16400 ? 1 : 997) {
            const std::uint64_t sum = mean * pixels;
            if (sum > 0) sums.push_back(static_cast<std::uint32_t>(sum - 1));
            sums.push_back(static_cast<std::uint32_t>(sum));
        }
        std::vector<std::uint8_t> expected(sums.size());
        std::vector<std::uint8_t> actual(sums.size());
        const qvr::GreyMap map{shades.table, nullptr};
        qvr::greyOfSums(sums.data(), sums.size(), pixels, map, expected.data(), qvr::CodePath::plain);
        qvr::greyOfSums(sums.data(), sums.size(), pixels, map, actual.data());
        ASSERT_TRUE(same(expected, actual)) << pixels << " pixels";
    }
}

// Columns that start at random distances, the source ending with the last block.
TEST(BlockSums, EveryVersionAddsTheSame) {
    Random random(3);
    for (int round = 0; round < 3000; ++round) {
        const int length = random.between(1, 11);
        const int step = random.between(0, 9);
        std::vector<std::int32_t> first{random.between(0, 40)};
        for (int i = random.between(0, 100); i > 0; --i)
            first.push_back(first.back() + random.between(step / 2, step));
        const qvr::BlockColumns columns = qvr::blockColumns(first, length);
        const int rowCount = random.between(1, 6);
        const int stride = static_cast<int>(columns.width()) + random.between(0, 3);
        const auto source = random.pixels(std::int64_t{stride} * (rowCount - 1) + columns.width());
        const qvr::BlockRows rows{source.data(), stride, rowCount, 0};
        const std::size_t count = first.size();

        std::vector<std::uint32_t> expected(count + qvr::kBlockPadding);
        std::vector<std::uint32_t> actual(count + qvr::kBlockPadding);
        std::vector<std::uint32_t> scratch(static_cast<std::size_t>(columns.width()));
        qvr::sumBlocks(rows, columns, scratch.data(), expected.data(), qvr::CodePath::plain);
        for (const qvr::CodePath path : kFastPaths) {
            qvr::sumBlocks(rows, columns, scratch.data(), actual.data(), path);
            ASSERT_TRUE(same(std::span<const std::uint32_t>(expected.data(), count), {actual.data(), count}))
                << nameOf(path) << ", round " << round << ", length " << length;
        }
        std::vector<std::uint16_t> values(count + qvr::kBlockPadding);
        std::vector<std::uint16_t> row(source.begin(), source.begin() + columns.width());
        row.resize(row.size() + qvr::kBlockPadding);
        for (const qvr::CodePath path : kFastPaths) {
            qvr::pickValues(rows, columns, values.data(), path);
            for (std::size_t i = 0; i < count; ++i)
                ASSERT_EQ(values[i], source[static_cast<std::size_t>(first[i])])
                    << nameOf(path) << ", block " << i;
            qvr::sumColumns(row.data(), columns, values.data(), path);
            for (std::size_t i = 0; i < count; ++i) {
                std::uint16_t sum = 0;
                for (int k = 0; k < length; ++k)
                    sum = static_cast<std::uint16_t>(sum + row[static_cast<std::size_t>(first[i] + k)]);
                ASSERT_EQ(values[i], sum) << nameOf(path) << ", block " << i << ", round " << round;
            }
        }
    }
}

struct Conversion {
    int width, height, bitmapWidth, bitmapHeight;
    reference::View view;
};

std::string describe(const Conversion& c) {
    return std::to_string(c.width) + " x " + std::to_string(c.height) + " to " +
           std::to_string(c.bitmapWidth) + " x " + std::to_string(c.bitmapHeight) + ", ratios " +
           std::to_string(c.view.xRatio) + ' ' + std::to_string(c.view.yRatio) + ", offsets " +
           std::to_string(c.view.xOffset) + ' ' + std::to_string(c.view.yOffset);
}

// All three versions against the mean of every block taken alone; bytes behind a row stay.
void expectSame(const Conversion& c, Random& random) {
    const auto pixels = random.pixels(std::int64_t{c.width} * c.height);
    const Shades shades = randomShades(random);
    const auto columns = qvr::blockSpans(c.bitmapWidth, c.width, c.view.xOffset, c.view.xRatio);
    const auto rows = qvr::blockSpans(c.bitmapHeight, c.height, c.view.yOffset, c.view.yRatio);
    const auto means =
        reference::blockMeans(pixels, c.width, c.height, c.view, c.bitmapWidth, c.bitmapHeight);
    const std::size_t stride = (static_cast<std::size_t>(c.bitmapWidth) + 3) / 4 * 4;
    std::vector<std::uint8_t> expected(stride * static_cast<std::size_t>(c.bitmapHeight), 77);
    for (std::size_t y = 0; y < static_cast<std::size_t>(c.bitmapHeight); ++y)
        for (std::size_t x = 0; x < static_cast<std::size_t>(c.bitmapWidth); ++x) {
            const int mean = means[y * static_cast<std::size_t>(c.bitmapWidth) + x];
            expected[y * stride + x] =
                mean < 0 ? std::uint8_t{0} : shades.table[static_cast<std::size_t>(mean)];
        }
    for (const qvr::CodePath path : {qvr::CodePath::plain, qvr::CodePath::portable, qvr::CodePath::fastest}) {
        std::vector<std::uint8_t> actual(expected.size(), 77);
        const qvr::BitmapRows bitmap{actual.data(), c.bitmapWidth, c.bitmapHeight, stride};
        qvr::convertBlocks(pixels.data(), c.width, columns, rows, shades.table, bitmap, shades.rampOrNull(),
                           path);
        ASSERT_TRUE(same(expected, actual)) << nameOf(path) << ": " << describe(c);
    }
}

TEST(BlockConversion, FittedAtEveryOddWidth) {
    Random random(4);
    for (int width = 1; width <= 67; ++width)
        for (int bitmapWidth = 1; bitmapWidth <= width; bitmapWidth += 1 + width / 9) {
            const int height = random.between(1, 20);
            const int bitmapHeight = random.between(1, height);
            expectSame({width,
                        height,
                        bitmapWidth,
                        bitmapHeight,
                        {0, 0, static_cast<float>(bitmapWidth) / static_cast<float>(width),
                         static_cast<float>(bitmapHeight) / static_cast<float>(height)}},
                       random);
        }
}

TEST(BlockConversion, RandomRatiosAndOffsets) {
    Random random(5);
    for (int round = 0; round < 1500; ++round) {
        const int width = random.between(1, 400);
        const int height = random.between(1, 30);
        const auto ratio = [&] {
            const float small = static_cast<float>(random.between(1, 1000)) / 1000.0f;
            return random.between(0, 5) == 0 ? small * 3.0f : random.between(0, 5) == 0 ? 1.0f : small;
        };
        expectSame({width,
                    height,
                    random.between(1, 200),
                    random.between(1, 12),
                    {random.between(-60, width + 10), random.between(-9, height + 3), ratio(), ratio()}},
                   random);
    }
}

// Large enough for everything that pays for large bitmaps only.
TEST(BlockConversion, LargeBitmaps) {
    Random random(8);
    for (int round = 0; round < 40; ++round) {
        const bool whole = round % 4 == 0;
        const float ratio = whole ? 1.0f : static_cast<float>(random.between(300, 1100)) / 1000.0f;
        expectSame({random.between(400, 900),
                    random.between(400, 600),
                    random.between(380, 420),
                    random.between(350, 400),
                    {random.between(-3, 9), random.between(-3, 9), ratio, ratio}},
                   random);
    }
}

TEST(PrintConversion, EqualsTheTable) {
    Random random(6);
    for (int width = 1; width <= 67; ++width) {
        const int height = width % 16 == 0 ? 140000 / width : random.between(1, 5);
        const int stride = width + random.between(0, 9);
        const auto pixels = random.pixels(std::int64_t{stride} * height);
        const Shades shades = randomShades(random);
        const std::size_t rowBytes = (static_cast<std::size_t>(width) + 3) / 4 * 4;
        std::vector<std::uint8_t> expected(rowBytes * static_cast<std::size_t>(height), 77);
        std::vector<std::uint8_t> actual(expected);
        qvr::convertRegion(pixels.data(), stride, shades.table, {expected.data(), width, height, rowBytes},
                           nullptr, qvr::CodePath::plain);
        qvr::convertRegion(pixels.data(), stride, shades.table, {actual.data(), width, height, rowBytes},
                           shades.rampOrNull());
        ASSERT_TRUE(same(expected, actual)) << width << " x " << height;
    }
}

}  // namespace
