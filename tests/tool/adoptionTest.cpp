// The adoption of pixel words: one row per rule, values worked out by hand.
#include "adoption.h"

#include <gtest/gtest.h>

#include "support/pictures.h"

namespace qvr::tool {
namespace {

struct WordCase {
    const char* name;
    PixelFormat format;
    std::vector<std::pair<int, int>> words;  // stored word, adopted value
};

class AdoptionTest : public testing::TestWithParam<WordCase> {};

TEST_P(AdoptionTest, TurnsWordsIntoValues) {
    const Adoption adoption(GetParam().format);
    for (const auto& [word, value] : GetParam().words)
        EXPECT_EQ(adoption.value(static_cast<std::uint16_t>(word)), value) << "word " << word;
}

constexpr PixelFormat stored(int bits) {
    return {bits, bits - 1, false, false, {}};
}
constexpr PixelFormat asSigned(PixelFormat format) {
    return {format.bitsStored, format.highBit, true, format.inverse, {}};
}
constexpr PixelFormat asInverse(PixelFormat format) {
    return {format.bitsStored, format.highBit, format.isSigned, true, {}};
}

INSTANTIATE_TEST_SUITE_P(
    Words, AdoptionTest,
    testing::Values(
        WordCase{"tenBitsKept", stored(10), {{0, 0}, {1, 1}, {1023, 1023}}},
        WordCase{"twelveBitsKept", stored(12), {{118, 118}, {4095, 4095}}},
        WordCase{"sixteenBitsShifted", stored(16), {{3, 0}, {4, 1}, {65535, 16383}}},
        WordCase{"fifteenBitsShifted", stored(15), {{32767, 16383}, {3, 1}}},
        WordCase{
            "signedGetsOffset", asSigned(stored(12)), {{0, 2048}, {0x800, 0}, {0x7ff, 4095}, {0xfff, 2047}}},
        WordCase{"signExtendedWord", asSigned(stored(12)), {{0xffff, 2047}, {0xf800, 0}}},
        WordCase{"signedSixteen", asSigned(stored(16)), {{0x8000, 0}, {0, 8192}, {0x7fff, 16383}}},
        WordCase{"invertedAgainstOwnMaximum", asInverse(stored(10)), {{0, 1023}, {979, 44}, {1023, 0}}},
        WordCase{"invertedThenShifted", asInverse(stored(16)), {{0, 16383}, {65535, 0}, {65531, 1}}},
        WordCase{
            "signedAndInverted", asInverse(asSigned(stored(12))), {{0x800, 4095}, {0x7ff, 0}, {0, 2047}}},
        WordCase{"overlayBitsMasked", stored(12), {{0xf001, 1}, {0x1fff, 4095}}},
        WordCase{"highBitAtTheTop", {12, 15, false, false, {}}, {{0x0010, 1}, {0xfff0, 4095}, {0x000f, 0}}},
        WordCase{"paddingIsBlack",
                 {12, 11, false, true, std::pair(4000, 4095)},
                 {{4000, 0}, {4095, 0}, {3999, 96}}},
        WordCase{"signedPadding", {12, 11, true, false, std::pair(-2048, -2048)}, {{0x800, 0}, {0x801, 1}}}),
    nameOf);

struct ShiftCase {
    const char* name;
    PixelFormat format;
    double slope, intercept;
    StoredWindow stored;
    int center, width;
};

class StoredWindowTest : public testing::TestWithParam<ShiftCase> {};

// A window is moved so that it still spans the same pixels.
TEST_P(StoredWindowTest, FollowsThePixels) {
    const auto& test = GetParam();
    const auto window = Adoption(test.format).window(test.stored, test.slope, test.intercept);
    ASSERT_TRUE(window);
    EXPECT_EQ(window->center, test.center);
    EXPECT_EQ(window->width, test.width);
}

INSTANTIATE_TEST_SUITE_P(
    Windows, StoredWindowTest,
    testing::Values(ShiftCase{"kept", stored(12), 1, 0, {2048, 4096}, 2048, 4096},
                    ShiftCase{"inverted", asInverse(stored(10)), 1, 0, {550, 1024}, 474, 1024},
                    ShiftCase{"wholeRangeInverted", asInverse(stored(12)), 1, 0, {2048, 4096}, 2048, 4096},
                    ShiftCase{"shifted", stored(16), 1, 0, {32768, 65536}, 8192, 16384},
                    ShiftCase{"signedOffset", asSigned(stored(12)), 1, 0, {0, 400}, 2048, 400},
                    ShiftCase{"rescaled", stored(12), 1, -1024, {40, 400}, 1064, 400},
                    ShiftCase{"steep", stored(12), 2, 0, {2000.5, 800}, 1001, 400},
                    ShiftCase{"narrowStaysAWindow", stored(16), 1, 0, {400, 1}, 100, 1}),
    nameOf);

TEST(StoredWindow, ThatIsNoNumberIsNone) {
    EXPECT_FALSE(Adoption(stored(12)).window({1e300, 10}, 1, 0));
    EXPECT_FALSE(Adoption(stored(12)).window({10, std::numeric_limits<double>::quiet_NaN()}, 1, 0));
}

TEST(Adopt, TurnsTheRowsOfAFileButNotOfARawFile) {
    SourceImage source;
    source.columns = 3;
    source.rows = 2;
    source.words = {1, 2, 3, 4, 5, 6};
    const Adoption adoption(source.format);
    EXPECT_EQ(adopt(source, adoption).pixels, (std::vector<std::uint16_t>{4, 5, 6, 1, 2, 3}));
    source.bottomRowFirst = true;
    EXPECT_EQ(adopt(source, adoption).pixels, source.words);
    EXPECT_EQ(adopt(source, adoption).lowest, 1);
    EXPECT_EQ(adopt(source, adoption).highest, 6);
}

}  // namespace
}  // namespace qvr::tool
