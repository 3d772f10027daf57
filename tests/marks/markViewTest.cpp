// The two frames and the conversions of a view, worked out by hand.
#include "qvr/marks/detail/markView.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>

#include "support/pictures.h"

namespace {

constexpr int kLow = std::numeric_limits<int>::min(), kHigh = std::numeric_limits<int>::max();

struct Frames {
    const char* name;
    int bitmapWidth, bitmapHeight;
    RECT rectangle;
    std::pair<int, int> placementInset, editingInset;
};
class FramesTest : public testing::TestWithParam<Frames> {};

TEST_P(FramesTest, LieAsWorkedOut) {
    const Frames& c = GetParam();
    qvr::MarkView view{.bitmapWidth = c.bitmapWidth, .bitmapHeight = c.bitmapHeight};
    const RECT& r = c.rectangle;
    const auto is = [&](const qvr::MarkFrame& frame, std::pair<int, int> inset) {
        EXPECT_EQ(std::pair(frame.xInset, frame.yInset), (std::pair<std::int64_t, std::int64_t>(inset)));
        EXPECT_EQ(std::pair(frame.left, frame.top), std::pair(r.left + frame.xInset, r.top + frame.yInset));
        EXPECT_EQ(std::pair(frame.right, frame.bottom),
                  std::pair(r.right - frame.xInset, r.bottom - frame.yInset));
    };
    is(qvr::placementFrame(view, r), c.placementInset);
    is(qvr::editingFrame(view, r), c.editingInset);
}
INSTANTIATE_TEST_SUITE_P(
    MarkView, FramesTest,
    testing::Values(Frames{"evenRows", 200, 100, {0, 0, 300, 200}, {50, 50}, {50, 50}},
                    Frames{"paddedRows", 197, 100, {10, 20, 310, 220}, {50, 50}, {51, 50}},
                    Frames{"largerBothWays", 410, 320, {0, 0, 400, 300}, {0, 0}, {-5, -10}},
                    Frames{"largerOneWay", 410, 100, {0, 0, 400, 300}, {-6, 100}, {-5, 100}},
                    Frames{"paddingIsNotLarger", 398, 301, {0, 0, 400, 300}, {0, 0}, {1, 0}},
                    Frames{"paddingIsLarger", 401, 301, {0, 0, 402, 300}, {0, 0}, {0, 0}},
                    Frames{"negativeHalves", 403, 300, {0, 0, 400, 305}, {-2, 2}, {-1, 2}}),
    nameOf);

TEST(MarkView, NewMarksStandSideBySide) {
    const auto columns = [](float ratio) {
        const qvr::MarkView view{.xRatio = ratio};
        return std::vector{qvr::newMarkColumn(view, 0), qvr::newMarkColumn(view, 1),
                           qvr::newMarkColumn(view, 2)};
    };
    EXPECT_EQ(columns(0.5f), (std::vector{10, 90, 171}));
    EXPECT_EQ(columns(1.0f), (std::vector{10, 50, 91}));
    EXPECT_EQ(columns(0.3f), (std::vector{10, 143, 277}));
    EXPECT_EQ(columns(FLT_TRUE_MIN), (std::vector{10, kHigh, kHigh}));
}

TEST(MarkView, PositionsGoBetweenSurfaceAndImage) {
    const qvr::MarkView view{400, 1000, 30, 100, 0.5f, 0.25f, 200, 150};
    const RECT r{100, 50, 500, 250};
    const auto placement = qvr::placementFrame(view, r);  // insets 100, 25
    // x: (90 - 30) * 0.5 + 100 + 100; y: 150 - 900 * 0.25 + 50 + 25
    EXPECT_EQ(qvr::newMarkPosition(view, r, placement, 90), (CPoint{230, 0}));
    // Truncated toward zero, before and after the insets: (11 - 30) * 0.5 = -9.5
    EXPECT_EQ(qvr::newMarkPosition(view, {0, 0, 200, 150}, {}, 11).x, -9);
    const auto editing = qvr::editingFrame(view, r);
    EXPECT_EQ(qvr::imagePosition(view, editing, {211, 88}), (CPoint{52, 152}));
    EXPECT_EQ(qvr::imagePosition({.xRatio = 0.3f, .yRatio = 0.3f}, {}, {-1, -2}), (CPoint{-3, -6}));
}

TEST(MarkView, ExtremesSaturate) {
    for (const float ratio : {FLT_TRUE_MIN, 1e-6f, 1.0f, FLT_MAX})
        for (const int value : {kLow, -1, 0, 1, kHigh})
            for (const RECT& r : {RECT{kLow, kLow, kHigh, kHigh}, RECT{kHigh, kHigh, kLow, kLow}, RECT{}}) {
                const qvr::MarkView view{kHigh, kHigh, value, value, ratio, ratio, kHigh, kHigh};
                const auto editing = qvr::editingFrame(view, r);
                const CPoint p = qvr::imagePosition(view, editing, {value, value});
                const double x =
                    (value - static_cast<double>(editing.left)) / static_cast<double>(ratio) + value;
                EXPECT_EQ(p.x, x <= kLow ? kLow : x >= kHigh ? kHigh : static_cast<int>(x));
                const CPoint placed = qvr::newMarkPosition(view, r, qvr::placementFrame(view, r), value);
                EXPECT_TRUE(r != RECT{} || ratio < FLT_MAX || value == kHigh || placed.y == kLow) << placed.y;
            }
}

TEST(MarkView, IsUsableWithBitmapAndRatios) {
    const auto usable = [](float x, float y, int w, int h) {
        return qvr::MarkView{1, 1, 0, 0, x, y, w, h}.usable();
    };
    EXPECT_TRUE(usable(0.5f, FLT_MAX, 1, 1));
    for (const float bad : {0.0f, -0.5f, NAN, INFINITY, -INFINITY}) {
        EXPECT_FALSE(usable(bad, 1, 1, 1)) << bad;
        EXPECT_FALSE(usable(1, bad, 1, 1)) << bad;
    }
    EXPECT_FALSE(usable(1, 1, 0, 1));
    EXPECT_FALSE(usable(1, 1, 1, 0));
}

}  // namespace
