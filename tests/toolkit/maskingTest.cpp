// Masks and inversion against their plain versions, and what must be refused.
#include <gtest/gtest.h>

#include <limits>
#include <utility>

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

struct MaskCase {
    const char* name;
    int width, height;
    RECT rectangle;
    int result;
};

TEST(MaskTest, KeepsOrRefuses) {
    const MaskCase rows[] = {
        {"whole", 40, 30, {0, 30, 40, 0}, 1},          {"smallest", 40, 30, {29, 30, 40, 19}, 1},
        {"upsideDown", 40, 30, {3, 2, 23, 17}, 0},     {"upsideDownInside", 40, 30, {3, 2, 23, 13}, 1},
        {"rightToLeft", 40, 30, {20, 15, 5, 1}, 1},    {"tenColumns", 40, 30, {5, 20, 15, 0}, 0},
        {"tenRows", 40, 30, {5, 20, 30, 10}, 0},       {"rightOutside", 40, 30, {21, 20, 41, 0}, 0},
        {"topOutside", 40, 30, {0, 31, 20, 11}, 0},    {"extreme", 40, 30, {kLow, kHigh, kHigh, kLow}, 0},
        {"negativeWidth", -40, 30, {0, 20, 20, 0}, 0}, {"tooLarge", kHigh, kHigh, {0, 20, 20, 0}, 0}};
    for (const MaskCase& c : rows) {
        SCOPED_TRACE(c.name);
        const Picture from = picture(40, 30);
        for (const auto& [mode, fill] : {std::pair(0, 65535), std::pair(1, 0), std::pair(-1, 0)}) {
            auto expected = from.values, buffer = from.values;
            if (c.result)
                expected = reference::masked(from, c.rectangle, static_cast<std::uint16_t>(fill)).values;
            EXPECT_EQ(QVR_DISP_Mask(c.width, c.height, buffer.data(), &c.rectangle, mode), c.result);
            EXPECT_TRUE(samePicture(expected, buffer.data(), 40, 30)) << "mode " << mode;
        }
    }
}

struct CutMaskCase {
    const char* name;
    RECT cut, keep;
    int outputWidth, outputHeight;
    enum Outcome { masked, plainCut, untouched, filled } outcome;
};  // Rectangles are left, top, right, bottom.
TEST(CutMaskTest, LeavesWhatIsPromised) {
    const CutMaskCase rows[] = {
        {"inside", {5, 25, 30, 5}, {8, 20, 25, 7}, 25, 20, CutMaskCase::masked},
        {"rightToLeft", {5, 25, 30, 5}, {8, 20, -6, 7}, 25, 20, CutMaskCase::masked},
        {"keepUpsideDown", {5, 25, 30, 5}, {8, 7, 25, 20}, 25, 20, CutMaskCase::filled},
        {"keepTooSmall", {5, 25, 30, 5}, {8, 17, 25, 7}, 25, 20, CutMaskCase::plainCut},
        {"keepLeft", {5, 25, 30, 5}, {4, 20, 20, 7}, 25, 20, CutMaskCase::plainCut},
        {"keepAbove", {5, 25, 30, 5}, {8, 26, 25, 7}, 25, 20, CutMaskCase::plainCut},
        {"keepExtreme", {5, 25, 30, 5}, {kLow, kHigh, kHigh, kLow}, 25, 20, CutMaskCase::plainCut},
        {"cutOutside", {20, 25, 45, 5}, {22, 20, 35, 7}, 25, 20, CutMaskCase::untouched},
        {"outputTooLow", {5, 25, 30, 5}, {8, 20, 25, 7}, 25, 19, CutMaskCase::untouched},
        {"negativeOutput", {5, 25, 30, 5}, {8, 20, 25, 7}, -25, 20, CutMaskCase::untouched}};
    for (const CutMaskCase& c : rows) {
        SCOPED_TRACE(c.name);
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
        EXPECT_EQ(QVR_DISP_Cut_Mask(40, 30, from.values.data(), &c.cut, &c.keep, c.outputWidth,
                                    c.outputHeight, output.data(), 1),
                  succeeds ? 1 : 0);
        EXPECT_TRUE(samePicture(expected, output.data(), 40, 30));
    }
}

struct Inversion {
    const char* name;
    int width, height, bits, center;
    int result, newCenter;
    bool inverts;
};

TEST(InvertTest, TurnsValuesRound) {
    const Inversion rows[] = {{"bits14", 7, 3, 14, 3000, 1, 13383, true},
                              {"bits12", 7, 3, 12, 3000, 1, 1095, true},
                              {"lowestCenter", 7, 3, 14, kLow, 1, kHigh, true},
                              {"highestCenter", 7, 3, 14, kHigh, 1, 16383 - kHigh, true},
                              {"noColumns", 0, 3, 14, 3000, 1, 13383, false},
                              {"negativeSides", -2, -3, 12, 95, 1, 4000, false},
                              {"bits11", 7, 3, 11, 5, 0, -77, false},
                              {"bitsNegative", 1, 3, kLow, 5, 0, -77, false}};
    for (const Inversion& c : rows) {
        SCOPED_TRACE(c.name);
        std::vector<std::uint16_t> from = ramp(7, 3);
        from.front() = 0;
        from.back() = 65535;  // above the maximum of most depths: goes round modulo 65536
        auto buffer = from, expected = from;
        if (c.inverts)
            for (auto& v : expected) v = static_cast<std::uint16_t>(((1 << c.bits) - 1 - v + 65536) % 65536);
        int center = -77;
        EXPECT_EQ(QVR_DISP_Invert(c.width, c.height, buffer.data(), c.bits, c.center, center), c.result);
        EXPECT_EQ(center, c.newCenter);
        EXPECT_EQ(buffer, expected);
    }
}

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

}  // namespace
