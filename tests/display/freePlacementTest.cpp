// Free placement as one table, and what no placement may leave.
#include "qvr/display/detail/freePlacement.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>

namespace qvr {
void PrintTo(const FreePlacement& p, std::ostream* out) {
    *out << p.width << 'x' << p.height << " at " << p.x << ',' << p.y << " from " << p.sourceWidth << 'x'
         << p.sourceHeight << " at " << p.sourceX << ',' << p.sourceY;
}
}  // namespace qvr

namespace {

using Place = qvr::FreePlacement;
constexpr int kLow = std::numeric_limits<int>::min(), kHigh = std::numeric_limits<int>::max();

struct Case {
    const char* name;
    int width, height;  // of the bitmap
    RECT rectangle;
    CPoint offset;
    std::optional<Place> expected;
};

constexpr RECT kRoom{0, 0, 500, 400}, kShifted{10, 20, 510, 420};
constexpr auto kNothing = std::nullopt;

TEST(FreePlacementTest, IsAsWorkedOutByHand) {
    const Case rows[] = {
        {"smaller", 200, 100, kRoom, {50, 30}, Place{50, 30, 200, 100, 0, 0, 200, 100}},
        {"smallerRightBottom", 200, 100, kRoom, {400, 350}, Place{400, 350, 100, 50, 0, 50, 100, 50}},
        {"smallerLeftTop", 200, 100, kRoom, {-50, -30}, Place{0, 0, 150, 70, 50, 0, 150, 70}},
        {"wide", 1000, 500, kShifted, {0, 0}, Place{10, 20, 500, 250, 0, 0, 1000, 500}},
        {"wideRightBottom", 1000, 500, kShifted, {30, 300}, Place{40, 320, 470, 100, 0, 300, 940, 200}},
        {"wideLeftTop", 1000, 500, kShifted, {-30, -40}, Place{10, 20, 470, 210, 60, 0, 940, 420}},
        {"tallLeftTop", 500, 1000, kShifted, {-30, -40}, Place{10, 20, 170, 360, 75, 0, 425, 900}},
        {"tallRightBottom", 500, 1000, kShifted, {350, 40}, Place{360, 60, 150, 360, 0, 100, 375, 900}},
        {"filling", 1000, 800, kShifted, {0, 0}, Place{10, 20, 500, 400, 0, 0, 1000, 800}},
        {"lastColumnAndRow", 200, 100, kRoom, {499, 399}, Place{499, 399, 1, 1, 0, 99, 1, 1}},
        {"beyondLeft", 200, 100, kRoom, {-200, 0}, kNothing},
        {"beyondTop", 200, 100, kRoom, {0, -100}, kNothing},
        {"farAway", 200, 100, kRoom, {kHigh, kLow}, kNothing},
        {"emptyRectangle", 200, 100, {5, 5, 5, 50}, {0, 0}, kNothing},
        {"tooLargeRectangle", 200, 100, {kLow, kLow, kHigh, kHigh}, {0, 0}, kNothing},
        {"emptyBitmap", 0, 100, kRoom, {0, 0}, kNothing}};
    for (const Case& c : rows) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(qvr::placeFree(c.offset, c.rectangle, c.width, c.height), c.expected);
    }
}

TEST(FreePlacement, NothingLeavesTheRectangleOrTheBitmap) {
    int drawn = 0;
    for (const RECT& r : {RECT{0, 0, 97, 61}, RECT{-13, 7, 40, 90}, RECT{5, -300, 105, -200}})
        for (const int width : {1, 53, 96, 97, 98, 100, 200, 301, 1000})
            for (const int height : {1, 61, 62, 83, 100, 122, 200, 301, 999})
                for (const int x : {-400, -96, -31, -1, 0, 1, 29, 52, 96, 400})
                    for (const int y : {-400, -96, -31, -1, 0, 1, 29, 52, 96, 400}) {
                        const auto p = qvr::placeFree({x, y}, r, width, height);
                        if (!p) continue;
                        ++drawn;
                        ASSERT_TRUE(p->x >= r.left && p->y >= r.top && p->x + p->width <= r.right &&
                                    p->y + p->height <= r.bottom);
                        ASSERT_TRUE(p->sourceX >= 0 && p->sourceY >= 0 && p->width > 0 && p->height > 0 &&
                                    p->sourceX + p->sourceWidth <= width &&
                                    p->sourceY + p->sourceHeight <= height);
                    }
    EXPECT_GT(drawn, 5000);
}

}  // namespace
