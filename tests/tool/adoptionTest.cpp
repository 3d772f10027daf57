// The adoption of pixel words: one row per rule, values worked out by hand.
#include "adoption.h"

#include <gtest/gtest.h>

namespace qvr::tool {
namespace {

struct WordCase {
    const char* name;
    PixelFormat format;
    std::vector<std::pair<int, int>> words;  // stored word, adopted value
};

constexpr PixelFormat stored(int bits) {
    return {bits, bits - 1, false, false, {}};
}
constexpr PixelFormat asSigned(PixelFormat format) {
    return {format.bitsStored, format.highBit, true, format.inverse, {}};
}
constexpr PixelFormat asInverse(PixelFormat format) {
    return {format.bitsStored, format.highBit, format.isSigned, true, {}};
}

TEST(AdoptionTest, TurnsWordsIntoValues) {
    const WordCase rows[] = {
        {"twelveBitsKept", stored(12), {{118, 118}, {4095, 4095}}},
        {"sixteenBitsShifted", stored(16), {{3, 0}, {4, 1}, {65535, 16383}}},
        {"signedGetsOffset", asSigned(stored(12)), {{0, 2048}, {0x800, 0}, {0x7ff, 4095}, {0xfff, 2047}}},
        {"invertedAgainstOwnMaximum", asInverse(stored(10)), {{0, 1023}, {979, 44}, {1023, 0}}},
        {"signedAndInverted", asInverse(asSigned(stored(12))), {{0x800, 4095}, {0x7ff, 0}, {0, 2047}}},
        {"overlayBitsMasked", stored(12), {{0xf001, 1}, {0x1fff, 4095}}},
        {"highBitAtTheTop", {12, 15, false, false, {}}, {{0x0010, 1}, {0xfff0, 4095}, {0x000f, 0}}},
        {"paddingIsBlack", {12, 11, false, true, std::pair(4000, 4095)}, {{4000, 0}, {4095, 0}, {3999, 96}}},
        {"signedPadding", {12, 11, true, false, std::pair(-2048, -2048)}, {{0x800, 0}, {0x801, 1}}}};
    for (const WordCase& row : rows) {
        SCOPED_TRACE(row.name);
        const Adoption adoption(row.format);
        for (const auto& [word, value] : row.words)
            EXPECT_EQ(adoption.value(static_cast<std::uint16_t>(word)), value) << "word " << word;
    }
}

struct ShiftCase {
    const char* name;
    PixelFormat format;
    double slope, intercept;
    StoredWindow stored;
    int center, width;
};

// A window is moved so that it still spans the same pixels.
TEST(StoredWindowTest, FollowsThePixels) {
    const ShiftCase rows[] = {{"inverted", asInverse(stored(10)), 1, 0, {550, 1024}, 474, 1024},
                              {"shifted", stored(16), 1, 0, {32768, 65536}, 8192, 16384},
                              {"signedOffset", asSigned(stored(12)), 1, 0, {0, 400}, 2048, 400},
                              {"steep", stored(12), 2, 0, {2000.5, 800}, 1001, 400},
                              {"narrowStaysAWindow", stored(16), 1, 0, {400, 1}, 100, 1}};
    for (const ShiftCase& test : rows) {
        SCOPED_TRACE(test.name);
        const auto window = Adoption(test.format).window(test.stored, test.slope, test.intercept);
        ASSERT_TRUE(window);
        EXPECT_EQ(window->center, test.center);
        EXPECT_EQ(window->width, test.width);
    }
}

TEST(StoredWindow, ThatIsNoNumberIsNone) {
    EXPECT_FALSE(Adoption(stored(12)).window({1e300, 10}, 1, 0));
    EXPECT_FALSE(Adoption(stored(12)).window({10, std::numeric_limits<double>::quiet_NaN()}, 1, 0));
}

}  // namespace
}  // namespace qvr::tool
