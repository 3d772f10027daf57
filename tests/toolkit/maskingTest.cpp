// Masks and inversion against their plain versions, and what must be refused.
#include <gtest/gtest.h>

#include <limits>

#include "qvr/toolkit/QVR_DISP.h"
#include "reference/pixelTools.h"
#include "support/pictures.h"

namespace {

using reference::Picture;

constexpr int kLow = std::numeric_limits<int>::min(), kHigh = std::numeric_limits<int>::max();
constexpr std::uint16_t kUntouched = 0xBEEF;

Picture picture(int width, int height) {
    return {width, height, ramp(width, height)};
}
std::uint16_t fillOf(int mode) {
    return mode == 0 ? 65535 : 0;
}

TEST(Masking, EverySizeEqualsThePlainVersion) {
    for (int width = 11; width <= 67; width += 2)
        for (int height = 11; height <= 67; height += width % 5 + 2)
            for (const int mode : {0, 1, -1})
                for (const int inset : {0, 1, 7, 20}) {
                    const RECT r{inset / 2, height - inset, width - inset,
                                 inset / 3};  // left, top, right, bottom
                    if (r.right - r.left < 11 || r.top - r.bottom < 11) continue;
                    SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height) + " inset " +
                                 std::to_string(inset));
                    const Picture from = picture(width, height);
                    auto buffer = from.values;
                    ASSERT_EQ(QVR_DISP_Mask(width, height, buffer.data(), &r, mode), 1);
                    ASSERT_TRUE(samePicture(reference::masked(from, r, fillOf(mode)).values, buffer.data(),
                                            width, height));

                    const RECT keep{r.left + (r.right - r.left - 11) / 2, r.bottom + 11, r.right, r.bottom};
                    const int cutWidth = r.right - r.left, cutHeight = r.top - r.bottom;
                    for (const RECT k : {keep, r}) {
                        std::vector<std::uint16_t> out(static_cast<std::size_t>(cutWidth * cutHeight),
                                                       kUntouched);
                        ASSERT_EQ(QVR_DISP_Cut_Mask(width, height, from.values.data(), &r, &k, cutWidth,
                                                    cutHeight, out.data(), mode),
                                  1);
                        ASSERT_TRUE(samePicture(reference::cutMasked(from, r, k, fillOf(mode)).values,
                                                out.data(), cutWidth, cutHeight));
                    }
                }
}

TEST(Masking, KeptRectangleMovesToTheMiddle) {
    for (const int mode : {0, 1}) {
        const auto before = ramp(100, 100);
        auto buffer = before;
        const RECT r{0, 20, 20, 0};
        ASSERT_EQ(QVR_DISP_Mask(100, 100, buffer.data(), &r, mode), 1);
        for (std::size_t y = 0; y < 100; ++y)
            for (std::size_t x = 0; x < 100; ++x) {
                const bool kept = x >= 40 && x < 60 && y >= 40 && y < 60;
                ASSERT_EQ(buffer[y * 100 + x], kept ? before[(y - 40) * 100 + x - 40] : fillOf(mode))
                    << x << ' ' << y;
            }
    }
}

struct MaskCase {
    const char* name;
    int width, height;
    RECT rectangle;
    int result;
};
class MaskTest : public testing::TestWithParam<MaskCase> {};

TEST_P(MaskTest, KeepsOrRefuses) {
    const MaskCase& c = GetParam();
    const Picture from = picture(40, 30);
    auto buffer = from.values;
    EXPECT_EQ(QVR_DISP_Mask(c.width, c.height, buffer.data(), &c.rectangle, 0), c.result);
    const auto& expected = c.result ? reference::masked(from, c.rectangle, 65535).values : from.values;
    EXPECT_TRUE(samePicture(expected, buffer.data(), 40, 30));
}
INSTANTIATE_TEST_SUITE_P(Masking, MaskTest,
                         testing::Values(MaskCase{"smallest", 40, 30, {29, 30, 40, 19}, 1},
                                         MaskCase{"whole", 40, 30, {0, 30, 40, 0}, 1},
                                         MaskCase{"upsideDown", 40, 30, {3, 2, 23, 17}, 0},
                                         MaskCase{"upsideDownInside", 40, 30, {3, 2, 23, 13}, 1},
                                         MaskCase{"rightToLeft", 40, 30, {20, 15, 5, 1}, 1},
                                         MaskCase{"tenColumns", 40, 30, {5, 20, 15, 0}, 0},
                                         MaskCase{"tenRows", 40, 30, {5, 20, 30, 10}, 0},
                                         MaskCase{"leftOutside", 40, 30, {-1, 20, 19, 0}, 0},
                                         MaskCase{"rightOutside", 40, 30, {21, 20, 41, 0}, 0},
                                         MaskCase{"bottomOutside", 40, 30, {0, 19, 20, -1}, 0},
                                         MaskCase{"topOutside", 40, 30, {0, 31, 20, 11}, 0},
                                         MaskCase{"extreme", 40, 30, {kLow, kHigh, kHigh, kLow}, 0},
                                         MaskCase{"negativeWidth", -40, 30, {0, 20, 20, 0}, 0},
                                         MaskCase{"negativeBoth", -40, -30, {0, 20, 20, 0}, 0},
                                         MaskCase{"tooLarge", kHigh, kHigh, {0, 20, 20, 0}, 0}),
                         nameOf);

struct CutMaskCase {
    const char* name;
    RECT cut, keep;
    int outputWidth, outputHeight;
    enum Outcome { masked, plainCut, untouched, filled } outcome;
};
class CutMaskTest : public testing::TestWithParam<CutMaskCase> {};

TEST_P(CutMaskTest, LeavesWhatIsPromised) {
    const CutMaskCase& c = GetParam();
    const Picture from = picture(40, 30);
    std::vector<std::uint16_t> output(40 * 30, kUntouched);
    auto expected = output;
    const auto place = [&](const std::vector<std::uint16_t>& values) {
        std::copy(values.begin(), values.end(), expected.begin());
    };
    if (c.outcome == CutMaskCase::masked) place(reference::cutMasked(from, c.cut, c.keep, 0).values);
    if (c.outcome == CutMaskCase::plainCut) place(reference::cut(from, c.cut, c.outputWidth).values);
    if (c.outcome == CutMaskCase::filled)
        std::fill_n(expected.begin(), c.outputWidth * c.outputHeight, std::uint16_t{0});
    const bool succeeds = c.outcome == CutMaskCase::masked || c.outcome == CutMaskCase::filled;
    EXPECT_EQ(QVR_DISP_Cut_Mask(40, 30, from.values.data(), &c.cut, &c.keep, c.outputWidth, c.outputHeight,
                                output.data(), 1),
              succeeds ? 1 : 0);
    EXPECT_TRUE(samePicture(expected, output.data(), 40, 30));
}
// Rectangles are left, top, right, bottom.
INSTANTIATE_TEST_SUITE_P(
    Masking, CutMaskTest,
    testing::Values(
        CutMaskCase{"inside", {5, 25, 30, 5}, {8, 20, 25, 7}, 25, 20, CutMaskCase::masked},
        CutMaskCase{"keepsAll", {5, 25, 30, 5}, {5, 25, 30, 5}, 25, 20, CutMaskCase::masked},
        CutMaskCase{"rightToLeft", {5, 25, 30, 5}, {8, 20, -6, 7}, 25, 20, CutMaskCase::masked},
        CutMaskCase{"keepUpsideDown", {5, 25, 30, 5}, {8, 7, 25, 20}, 25, 20, CutMaskCase::filled},
        CutMaskCase{"keepTooSmall", {5, 25, 30, 5}, {8, 17, 25, 7}, 25, 20, CutMaskCase::plainCut},
        CutMaskCase{"keepTooNarrow", {5, 25, 30, 5}, {8, 20, 18, 7}, 25, 20, CutMaskCase::plainCut},
        CutMaskCase{"keepLeft", {5, 25, 30, 5}, {4, 20, 20, 7}, 25, 20, CutMaskCase::plainCut},
        CutMaskCase{"keepRight", {5, 25, 30, 5}, {15, 20, 31, 7}, 25, 20, CutMaskCase::plainCut},
        CutMaskCase{"keepBelow", {5, 25, 30, 5}, {8, 20, 25, 4}, 25, 20, CutMaskCase::plainCut},
        CutMaskCase{"keepAbove", {5, 25, 30, 5}, {8, 26, 25, 7}, 25, 20, CutMaskCase::plainCut},
        CutMaskCase{"keepExtreme", {5, 25, 30, 5}, {kLow, kHigh, kHigh, kLow}, 25, 20, CutMaskCase::plainCut},
        CutMaskCase{"cutOutside", {20, 25, 45, 5}, {22, 20, 35, 7}, 25, 20, CutMaskCase::untouched},
        CutMaskCase{"outputTooLow", {5, 25, 30, 5}, {8, 20, 25, 7}, 25, 19, CutMaskCase::untouched},
        CutMaskCase{"negativeOutput", {5, 25, 30, 5}, {8, 20, 25, 7}, -25, 20, CutMaskCase::untouched}),
    nameOf);

TEST(Masking, NullIsRefused) {
    auto buffer = ramp(20, 20);
    const RECT r{0, 20, 20, 0};
    int center = 9;
    EXPECT_EQ(QVR_DISP_Mask(20, 20, nullptr, &r, 0), 0);
    EXPECT_EQ(QVR_DISP_Mask(20, 20, buffer.data(), nullptr, 0), 0);
    EXPECT_EQ(QVR_DISP_Cut_Mask(20, 20, nullptr, &r, &r, 20, 20, buffer.data(), 0), 0);
    EXPECT_EQ(QVR_DISP_Cut_Mask(20, 20, buffer.data(), nullptr, &r, 20, 20, buffer.data(), 0), 0);
    EXPECT_EQ(QVR_DISP_Cut_Mask(20, 20, buffer.data(), &r, nullptr, 20, 20, buffer.data(), 0), 0);
    EXPECT_EQ(QVR_DISP_Cut_Mask(20, 20, buffer.data(), &r, &r, 20, 20, nullptr, 0), 0);
    EXPECT_EQ(QVR_DISP_Invert(20, 20, nullptr, 14, 5, center), 0);
    EXPECT_EQ(center, 9);
    EXPECT_EQ(buffer, ramp(20, 20));
}

struct Inversion {
    const char* name;
    int width, height, bits, center;
    int result, newCenter;
    bool inverts;
};
class InvertTest : public testing::TestWithParam<Inversion> {};

TEST_P(InvertTest, TurnsValuesRound) {
    const Inversion& c = GetParam();
    for (int columns = 1; columns <= 67; columns += 2) {  // every tail of a vector loop
        std::vector<std::uint16_t> from = ramp(columns, 3);
        from.front() = 0;
        from.back() = 65535;  // above the maximum of most depths: goes round modulo 65536
        auto buffer = from;
        auto expected = from;
        if (c.inverts)
            for (auto& v : expected) v = static_cast<std::uint16_t>(((1 << c.bits) - 1 - v + 65536) % 65536);
        int center = -77;
        ASSERT_EQ(QVR_DISP_Invert(c.width > 0 ? columns : c.width, c.height, buffer.data(), c.bits, c.center,
                                  center),
                  c.result);
        ASSERT_EQ(center, c.newCenter);
        ASSERT_TRUE(samePicture(expected, buffer.data(), columns, 3));
    }
}
INSTANTIATE_TEST_SUITE_P(Masking, InvertTest,
                         testing::Values(Inversion{"bits14", 1, 3, 14, 3000, 1, 13383, true},
                                         Inversion{"bits12", 1, 3, 12, 3000, 1, 1095, true},
                                         Inversion{"bits10", 1, 3, 10, 1000, 1, 23, true},
                                         Inversion{"bits16", 1, 3, 16, 5, 1, 65530, true},
                                         Inversion{"lowestCenter", 1, 3, 14, kLow, 1, kHigh, true},
                                         Inversion{"highestCenter", 1, 3, 14, kHigh, 1, 16383 - kHigh, true},
                                         Inversion{"noColumns", 0, 3, 14, 3000, 1, 13383, false},
                                         Inversion{"negativeSides", -2, -3, 12, 95, 1, 4000, false},
                                         Inversion{"bits11", 1, 3, 11, 5, 0, -77, false},
                                         Inversion{"bits13", 1, 3, 13, 5, 0, -77, false},
                                         Inversion{"bits8", 1, 3, 8, 5, 0, -77, false},
                                         Inversion{"bits0", 1, 3, 0, 5, 0, -77, false},
                                         Inversion{"bitsNegative", 1, 3, kLow, 5, 0, -77, false}),
                         nameOf);

}  // namespace
