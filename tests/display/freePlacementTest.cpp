// Free placement as one table, and every kind and sign of offset against the four rules written out.
#include "qvr/display/detail/freePlacement.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>

#include "support/pictures.h"

namespace qvr {
void PrintTo(const FreePlacement& p, std::ostream* out) {
    *out << p.width << 'x' << p.height << " at " << p.x << ',' << p.y << " from " << p.sourceWidth << 'x'
         << p.sourceHeight << " at " << p.sourceX << ',' << p.sourceY;
}
}  // namespace qvr

namespace {

using qvr::FreePlacement;
constexpr int kLow = std::numeric_limits<int>::min(), kHigh = std::numeric_limits<int>::max();

struct Case {
    const char* name;
    int width, height;  // of the bitmap
    RECT rectangle;
    CPoint offset;
    std::optional<FreePlacement> expected;
};
class FreePlacementTest : public testing::TestWithParam<Case> {};

TEST_P(FreePlacementTest, IsAsWorkedOutByHand) {
    const Case& c = GetParam();
    EXPECT_EQ(qvr::placeFree(c.offset, c.rectangle, c.width, c.height), c.expected);
}

constexpr RECT kRoom{0, 0, 500, 400}, kShifted{10, 20, 510, 420};
constexpr auto kNothing = std::nullopt;
INSTANTIATE_TEST_SUITE_P(
    Table, FreePlacementTest,
    testing::Values(
        Case{"smaller", 200, 100, kRoom, {50, 30}, FreePlacement{50, 30, 200, 100, 0, 0, 200, 100}},
        Case{"smallerRightBottom",
             200,
             100,
             kRoom,
             {400, 350},
             FreePlacement{400, 350, 100, 50, 0, 50, 100, 50}},
        Case{"smallerLeftTop", 200, 100, kRoom, {-50, -30}, FreePlacement{0, 0, 150, 70, 50, 0, 150, 70}},
        Case{"smallerJustFits",
             200,
             100,
             kRoom,
             {300, 300},
             FreePlacement{300, 300, 200, 100, 0, 0, 200, 100}},
        Case{"wide", 1000, 500, kShifted, {0, 0}, FreePlacement{10, 20, 500, 250, 0, 0, 1000, 500}},
        Case{"wideRight", 1000, 500, kShifted, {30, 40}, FreePlacement{40, 60, 470, 250, 0, 0, 940, 500}},
        Case{"wideRightBottom",
             1000,
             500,
             kShifted,
             {30, 300},
             FreePlacement{40, 320, 470, 100, 0, 300, 940, 200}},
        Case{
            "wideLeftTop", 1000, 500, kShifted, {-30, -40}, FreePlacement{10, 20, 470, 210, 60, 0, 940, 420}},
        Case{
            "tallLeftTop", 500, 1000, kShifted, {-30, -40}, FreePlacement{10, 20, 170, 360, 75, 0, 425, 900}},
        Case{"tallRightBottom",
             500,
             1000,
             kShifted,
             {350, 40},
             FreePlacement{360, 60, 150, 360, 0, 100, 375, 900}},
        Case{"tallFits", 500, 1000, kShifted, {300, 0}, FreePlacement{310, 20, 200, 400, 0, 0, 500, 1000}},
        Case{"filling", 1000, 800, kShifted, {0, 0}, FreePlacement{10, 20, 500, 400, 0, 0, 1000, 800}},
        Case{"fillingRightBottom",
             1000,
             800,
             kShifted,
             {30, 40},
             FreePlacement{40, 60, 470, 360, 0, 80, 940, 720}},
        Case{"fillingLeftTop",
             1000,
             800,
             kShifted,
             {-30, -40},
             FreePlacement{10, 20, 470, 360, 60, 0, 940, 720}},
        Case{"lastColumnAndRow", 200, 100, kRoom, {499, 399}, FreePlacement{499, 399, 1, 1, 0, 99, 1, 1}},
        Case{"beyondRight", 200, 100, kRoom, {500, 0}, kNothing},
        Case{"beyondBottom", 200, 100, kRoom, {0, 400}, kNothing},
        Case{"beyondLeft", 200, 100, kRoom, {-200, 0}, kNothing},
        Case{"beyondTop", 200, 100, kRoom, {0, -100}, kNothing},
        Case{"wideBeyondTop", 1000, 500, kShifted, {0, -250}, kNothing},
        Case{"tallBeyondLeft", 500, 1000, kShifted, {-200, 0}, kNothing},
        Case{"farAway", 200, 100, kRoom, {kHigh, kLow}, kNothing},
        Case{"emptyRectangle", 200, 100, {5, 5, 5, 50}, {0, 0}, kNothing},
        Case{"invertedRectangle", 200, 100, {50, 50, 5, 5}, {0, 0}, kNothing},
        Case{"tooLargeRectangle", 200, 100, {kLow, kLow, kHigh, kHigh}, {0, 0}, kNothing},
        Case{"emptyBitmap", 0, 100, kRoom, {0, 0}, kNothing}),
    nameOf);

// The four rules as they are put down, one after the other.
FreePlacement byRules(long px, long py, const RECT& r, long w, long h) {
    const long rw = r.right - r.left, rh = r.bottom - r.top;
    const auto ax = static_cast<float>(static_cast<double>(w) / static_cast<double>(rw));
    const auto ay = static_cast<float>(static_cast<double>(h) / static_cast<double>(rh));
    long dx = r.left + (px >= 0 ? px : 0), dy = r.top + (py >= 0 ? py : 0), dw, dh, sx = 0, sy = 0, sw, sh;
    if (ax > ay && w >= rw) {
        const long shown = rw * h / w;
        if (px >= 0)
            dw = rw - px, sw = w - px * w / rw;
        else
            dw = rw + px, sx = -px * w / rw, sw = w - sx;
        if (py < 0)
            dh = shown + py, sh = h - -py * w / rw;
        else if (py + shown <= rh)
            dh = shown, sh = h;
        else
            dh = rh - py, sh = (rh - py) * w / rw, sy = h - sh;
    } else if (ax < ay && h >= rh) {
        const long shown = rh * w / h;
        if (px < 0)
            dw = shown + px, sx = -px * h / rh, sw = w - sx;
        else if (px + shown <= rw)
            dw = shown, sw = w;
        else
            dw = rw - px, sw = (rw - px) * h / rh;
        if (py >= 0)
            dh = rh - py, sy = py * h / rh, sh = h - sy;
        else
            dh = rh + py, sh = h - -py * h / rh;
    } else if (ax == ay && w >= rw) {
        if (px >= 0)
            dw = rw - px, sw = (rw - px) * w / rw;
        else
            dw = rw + px, sx = -px * w / rw, sw = w - sx;
        if (py >= 0)
            dh = rh - py, sh = (rh - py) * w / rw, sy = h - sh;
        else
            dh = rh + py, sh = (rh + py) * w / rw;
    } else {
        if (px >= 0)
            dw = sw = px + w <= rw ? w : rw - px;
        else
            dw = sw = w + px, sx = -px;
        if (py < 0)
            dh = sh = h + py;
        else if (py + h <= rh)
            dh = sh = h;
        else
            dh = sh = rh - py, sy = h + py - rh;
    }
    const auto i = [](long v) { return static_cast<int>(v); };
    return {i(dx), i(dy), i(dw), i(dh), i(sx), i(sy), i(sw), i(sh)};
}

TEST(FreePlacement, EveryKindAndOffsetFollowsTheRules) {
    int drawn = 0;
    for (const RECT& r : {RECT{0, 0, 97, 61}, RECT{-13, 7, 40, 90}, RECT{5, -300, 105, -200}})
        for (const int width : {1, 53, 96, 97, 98, 100, 200, 301, 1000})
            for (const int height : {1, 61, 62, 83, 100, 122, 200, 301, 999})
                for (const int x : {-400, -96, -31, -1, 0, 1, 29, 52, 96, 400})
                    for (const int y : {-400, -96, -31, -1, 0, 1, 29, 52, 96, 400}) {
                        const FreePlacement p = byRules(x, y, r, width, height);
                        const auto found = qvr::placeFree({x, y}, r, width, height);
                        const bool visible =
                            p.width > 0 && p.height > 0 && p.sourceWidth > 0 && p.sourceHeight > 0;
                        ASSERT_EQ(found, visible ? std::optional(p) : std::nullopt)
                            << width << 'x' << height << " at " << x << ',' << y;
                        if (!visible) continue;
                        ++drawn;
                        // Never outside the rectangle or the bitmap.
                        ASSERT_TRUE(p.x >= r.left && p.y >= r.top && p.x + p.width <= r.right &&
                                    p.y + p.height <= r.bottom);
                        ASSERT_TRUE(p.sourceX >= 0 && p.sourceY >= 0 && p.sourceX + p.sourceWidth <= width &&
                                    p.sourceY + p.sourceHeight <= height);
                    }
    EXPECT_GT(drawn, 5000);
}

}  // namespace
