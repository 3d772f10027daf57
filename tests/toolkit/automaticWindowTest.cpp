// The automatic window: its worked examples and its rules for depth and region.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

#include "qvr/toolkit/QVR_DISP.h"
#include "qvr/toolkit/detail/histogramWindow.h"
#include "support/pictures.h"

namespace {

constexpr int kUntouched = -77;

// Bounds and result of a call; the bounds stay kUntouched when they are not written.
struct Answer {
    int result = 0;
    int low = kUntouched;
    int high = kUntouched;
    friend bool operator==(const Answer&, const Answer&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Answer& a) {
        return out << "result " << a.result << ", " << a.low << " ... " << a.high;
    }
};

Answer window(int width, int height, const std::uint16_t* pixels, int bits, float low = 0.05f,
              float high = 0.95f) {
    Answer answer;
    answer.result = QVR_DISP_AutoWL(answer.low, answer.high, width, height, pixels, bits, low, high);
    return answer;
}

Answer regionWindow(int width, int height, const std::uint16_t* pixels, int bits, CPoint first,
                    CPoint second) {
    Answer answer;
    answer.result = QVR_DISP_AutoWLByROI(answer.low, answer.high, width, height, pixels, bits, first, second,
                                         0.05f, 0.95f);
    return answer;
}

struct Cluster {
    int first, last, pixelsEach;
};

std::vector<std::uint16_t> pixelsOf(const std::vector<Cluster>& clusters) {
    std::vector<std::uint16_t> pixels;
    for (const Cluster& c : clusters)
        for (int value = c.first; value <= c.last; ++value)
            pixels.insert(pixels.end(), static_cast<std::size_t>(c.pixelsEach),
                          static_cast<std::uint16_t>(value));
    return pixels;
}

struct Example {
    const char* name;
    std::vector<Cluster> clusters;
    int low, high;
};

TEST(HistogramTest, GivesTheBounds) {
    const Example rows[] = {
        {"nothingCounted", {{0, 0, 500}, {16383, 16383, 300}, {65535, 65535, 9}}, 0, 0},
        {"oneLowValue", {{1, 1, 30}}, 1, 1},
        {"oneValue1999", {{1999, 1999, 30}}, 1999, 1999},
        {"oneValue2000", {{2000, 2000, 30}}, 1801, 2100},
        {"oneValue16283", {{16283, 16283, 40}}, 16084, 16383},
        {"oneValue16284", {{16284, 16284, 40}}, 0, 16383},
        {"mainPeakAbove", {{2000, 4000, 5}, {11990, 12009, 100}, {12000, 12000, 20000}}, 3800, 12100},
        {"mainPeakBelow",
         {{990, 1010, 100}, {1000, 1000, 20000}, {7900, 7999, 3}, {8000, 10000, 50}},
         7999,
         9978},
        {"noValley", {{990, 1010, 100}, {1000, 1000, 20000}, {8000, 10000, 50}}, 811, 9978},
        {"peaksTooNear", {{1000, 1000, 5000}, {1500, 1500, 3000}}, 1000, 1500},
        // Second peak of 999 has the threshold 99, so 45 is an edge; one of 1000 has 30, so it is not.
        {"smallSecondPeak", {{1000, 1000, 9000}, {8000, 8000, 999}, {7990, 7990, 45}}, 7790, 8100},
        {"ofEqualPeaksTheHigher",
         {{3000, 3000, 1500}, {9500, 9500, 5}, {10500, 10500, 5}, {12000, 12000, 20000}},
         3000,
         12000},
        {"highSecondPeak", {{1000, 1000, 9000}, {8000, 8000, 1000}, {7990, 7990, 45}}, 801, 8100}};
    for (const Example& row : rows) {
        SCOPED_TRACE(row.name);
        auto pixels = pixelsOf(row.clusters);
        std::shuffle(pixels.begin(), pixels.end(), std::mt19937(1));
        EXPECT_EQ(window(static_cast<int>(pixels.size()), 1, pixels.data(), 14),
                  (Answer{1, row.low, row.high}));
    }
}

struct Depth {
    const char* name;
    int bits;
    Answer answer;
};

TEST(DepthTest, IsLookedAtBeforeThePixels) {
    const Depth rows[] = {{"ten", 10, {1, 0, 1023}},
                          {"twelve", 12, {1, 0, 4095}},
                          {"fourteen", 14, {1, 500, 500}},
                          {"sixteen", 16, {1, 0, 65535}},
                          {"eleven", 11, {}},
                          {"thirteen", 13, {}},
                          {"negative", std::numeric_limits<int>::min(), {}}};
    for (const Depth& row : rows) {
        SCOPED_TRACE(row.name);
        const auto& [name, bits, expected] = row;
        const std::vector<std::uint16_t> pixels(60 * 60, 500);
        EXPECT_EQ(window(60, 60, pixels.data(), bits), expected);
        EXPECT_EQ(regionWindow(60, 60, pixels.data(), bits, {0, 60}, {60, 0}), expected);
        if (bits == 14) continue;
        EXPECT_EQ(window(-3, std::numeric_limits<int>::max(), nullptr, bits), expected);
    }
}

// 70 x 65, all zero but for one block: columns 3 ... 53 and rows 5 ... 57 hold 700, the frame around it holds 60.
class RegionTest : public testing::Test {
protected:
    RegionTest() {
        for (int row = 4; row <= 58; ++row)
            for (int column = 2; column <= 54; ++column)
                m_pixels[static_cast<std::size_t>(row * 70 + column)] =
                    row >= 5 && row <= 57 && column >= 3 && column <= 53 ? 700 : 60;
    }
    Answer region(CPoint first, CPoint second, int bits = 14, int height = 65) {
        return regionWindow(70, height, m_pixels.data(), bits, first, second);
    }
    std::vector<std::uint16_t> m_pixels = std::vector<std::uint16_t>(70 * 65);
};

TEST_F(RegionTest, TakesItsColumnsAndRowsOnly) {
    EXPECT_EQ(region({3, 58}, {54, 5}), (Answer{1, 700, 700}));
    // Two columns and a row more on each side bring enough of the frame for the low bound to show it.
    EXPECT_EQ(region({1, 59}, {56, 4}).low, 60);
}

TEST_F(RegionTest, IsAtLeast51PixelsWideAndHighAndInside) {
    constexpr int kMin = std::numeric_limits<int>::min(), kMax = std::numeric_limits<int>::max();
    const Answer whole = region({0, 65}, {70, 0}), found{1, 700, 700};
    EXPECT_EQ(whole.result, 1);
    EXPECT_EQ(region({3, 56}, {54, 5}), found);
    EXPECT_EQ(region({0, 65}, {70, 0}, 14, 0), whole) << "a height of 0 is no height";
    EXPECT_EQ(region({3, 5}, {54, 58}), (Answer{1, 0, 0})) << "from bottom to top there is no pixel";
    EXPECT_EQ(region({3, 58}, {53, 5}, 12), Answer{}) << "the size comes before the depth";
    for (const auto& [first, second] : {std::pair{CPoint{3, 58}, CPoint{53, 5}},
                                        {{3, 55}, {54, 5}},
                                        {{54, 58}, {3, 5}},
                                        {{-1, 65}, {70, 0}},
                                        {{0, 65}, {71, 0}},
                                        {{0, 65}, {70, -1}},
                                        {{0, 66}, {70, 0}},
                                        {{kMin, kMax}, {kMax, kMin}}})
        EXPECT_EQ(region(first, second), Answer{})
            << first.x << ',' << first.y << ' ' << second.x << ',' << second.y;
    EXPECT_EQ(regionWindow(70, 65, nullptr, 14, {0, 65}, {70, 0}), Answer{});
}

}  // namespace
