// Quarter turns, mirrors and cuts against their plain versions; what must be refused, and what memory must not lose.
#include <gtest/gtest.h>

#include <limits>

#include "qvr/toolkit/QVR_DISP.h"
#include "reference/pixelTools.h"
#include "support/pictures.h"

namespace {

using reference::Picture;

constexpr int kLow = std::numeric_limits<int>::min(), kHigh = std::numeric_limits<int>::max();
constexpr std::uint16_t kBeyond = 0xBEEF;  // behind every buffer, and never to be touched

Picture picture(int width, int height) {
    return {width, height, ramp(width, height)};
}

// Runs an operation in place on a copy of the values with a guard behind it.
template <class Operation>
testing::AssertionResult becomes(const Picture& expected, const Picture& from, Operation&& operation) {
    auto buffer = from.values;
    buffer.push_back(kBeyond);
    if (!operation(buffer.data())) return testing::AssertionFailure() << "refused";
    if (buffer.back() != kBeyond) return testing::AssertionFailure() << "written behind the buffer";
    return samePicture(expected.values, buffer.data(), expected.width, expected.height);
}

TEST(Geometry, EverySizeEqualsThePlainVersion) {
    for (int width = 1; width <= 67; width += 2)
        for (int height = 1; height <= 67; height += width % 3 + 1) {
            SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height));
            const Picture from = picture(width, height);
            for (const int mode : {0, 1, -7}) {
                int newWidth = -1, newHeight = -1;
                const auto rotate = [&](std::uint16_t* p) {
                    return QVR_DISP_Rotate(width, height, p, newWidth, newHeight, mode);
                };
                ASSERT_TRUE(becomes(reference::turned(from, mode == 0), from, rotate)) << mode;
                ASSERT_EQ(std::pair(newWidth, newHeight), std::pair(height, width));
                const auto mirror = [&](std::uint16_t* p) { return QVR_DISP_Mirror(width, height, p, mode); };
                ASSERT_TRUE(becomes(reference::mirrored(from, mode != 0), from, mirror)) << mode;
            }
            const RECT r{width / 3, height - height / 4, width, height / 3};
            for (const int columns : {0, 1, width - r.left}) {
                Picture output = Picture::filled(columns, r.top - r.bottom, 1);
                const auto cut = [&](std::uint16_t* p) {
                    return QVR_DISP_Cut(width, height, from.values.data(), &r, columns, 0, p);
                };
                ASSERT_TRUE(becomes(reference::cut(from, r, columns), output, cut)) << columns;
            }
        }
}

TEST(Geometry, TurnsAsSeenOnTheDisplay) {
    const Picture from{3, 2, {'a', 'b', 'c', 'd', 'e', 'f'}};
    int w = 0, h = 0;
    const auto turn = [&](int direction) {
        return [&, direction](std::uint16_t* p) { return QVR_DISP_Rotate(3, 2, p, w, h, direction); };
    };
    EXPECT_TRUE(becomes({2, 3, {'d', 'a', 'e', 'b', 'f', 'c'}}, from, turn(1)));
    EXPECT_TRUE(becomes({2, 3, {'c', 'f', 'b', 'e', 'a', 'd'}}, from, turn(0)));
    EXPECT_EQ(std::pair(w, h), std::pair(2, 3));
}

TEST(Geometry, EmptyPicturesChangeNothing) {
    std::uint16_t value = 7;
    for (const auto& [width, height] : {std::pair(0, 5), std::pair(5, 0), std::pair(0, 0)}) {
        int w = -1, h = -1;
        EXPECT_EQ(QVR_DISP_Rotate(width, height, &value, w, h, 0), 1);
        EXPECT_EQ(std::pair(w, h), std::pair(height, width));
        EXPECT_EQ(QVR_DISP_Mirror(width, height, &value, 0), 1);
        EXPECT_EQ(QVR_DISP_Mirror(width, height, &value, 1), 1);
    }
    EXPECT_EQ(value, 7);
}

struct CutCase {
    const char* name;
    int width, height;
    RECT rectangle;  // left, top, right, bottom
    int outputWidth, outputHeight;
    int result;
    bool copies;
};

TEST(CutTest, CopiesOrRefuses) {
    const CutCase rows[] = {{"example", 40, 30, {5, 20, 0, 10}, 30, 10, 1, true},
                            {"rightIsNotRead", 40, 30, {5, 20, kLow, 10}, 30, 0, 1, true},
                            {"heightsNotGiven", 40, 0, {5, 20, 0, 10}, 30, -1, 1, true},
                            {"noRows", 40, 30, {5, 10, 35, 10}, 30, 10, 1, false},
                            {"upsideDown", 40, 30, {5, kLow, 35, kHigh}, 30, 10, 1, false},
                            {"leftOutside", 40, 30, {-1, 20, 29, 10}, 30, 10, 0, false},
                            {"bottomOutside", 40, 30, {5, 9, 35, -1}, 30, 10, 0, false},
                            {"bottomOutsideNotGiven", 40, 0, {5, 9, 35, -1}, 30, 0, 0, false},
                            {"tooManyRows", 40, 30, {5, 20, 35, 10}, 30, 9, 0, false},
                            {"extremeRows", 40, 30, {0, kHigh, 40, kLow}, 40, 0, 0, false},
                            {"negativeWidth", -40, 30, {0, 20, 30, 10}, 30, 10, 0, false}};
    for (const CutCase& c : rows) {
        SCOPED_TRACE(c.name);
        const Picture from = picture(40, 30);
        std::vector<std::uint16_t> output(40 * 31, kBeyond);
        std::vector<std::uint16_t> expected = output;
        if (c.copies) {
            const auto part = reference::cut(from, c.rectangle, c.outputWidth).values;
            std::copy(part.begin(), part.end(), expected.begin());
        }
        EXPECT_EQ(QVR_DISP_Cut(c.width, c.height, from.values.data(), &c.rectangle, c.outputWidth,
                               c.outputHeight, output.data()),
                  c.result);
        EXPECT_TRUE(samePicture(expected, output.data(), 40, 31));
    }
}

TEST(Geometry, CutMayOverwriteItsSource) {
    const Picture from = picture(37, 23);
    for (const RECT r : {RECT{0, 23, 37, 0}, RECT{3, 20, 30, 2}, RECT{0, 23, 5, 1}, RECT{1, 2, 37, 0}}) {
        auto buffer = from.values;
        const int width = r.right - r.left;
        ASSERT_EQ(QVR_DISP_Cut(37, 23, buffer.data(), &r, width, r.top - r.bottom, buffer.data()), 1);
        EXPECT_TRUE(
            samePicture(reference::cut(from, r, width).values, buffer.data(), width, r.top - r.bottom));
    }
    // To any place in it: behind the first rows of the part and before its last ones, above all.
    const RECT part{2, 17, 16, 1};
    for (std::ptrdiff_t at = 0; at < 37 * 23 - 14 * 16; ++at) {
        auto buffer = from.values;
        ASSERT_EQ(QVR_DISP_Cut(37, 23, buffer.data(), &part, 14, 16, buffer.data() + at), 1);
        ASSERT_TRUE(samePicture(reference::cut(from, part, 14).values, buffer.data() + at, 14, 16)) << at;
    }
}

}  // namespace
