// From bytes to placed glyphs: decoding, kerning, order, faces and marks.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/textTools.h"
#include "qvr/platform/detail/textDecoding.h"
#include "qvr/platform/detail/textLayout.h"

namespace {

std::string utf8(char32_t c) {
    const auto byte = [](char32_t value) { return static_cast<char>(value); };
    if (c < 0x80) return {byte(c)};
    if (c < 0x800) return {byte(0xC0 | c >> 6), byte(0x80 | (c & 0x3F))};
    return {byte(0xE0 | c >> 12), byte(0x80 | (c >> 6 & 0x3F)), byte(0x80 | (c & 0x3F))};
}

qvr::LineLayout layout(const std::string& text, const char* face) {
    const auto search = qvr::facesFor(face, 400);
    if (!search || !search->primary()) return {};
    return qvr::layOutLine(qvr::decodedLine(text), *search);
}

bool someFaceHas(char32_t character) {
    const auto search = qvr::facesFor("Arial", 400);
    return search && search->covering(std::span(&character, 1)) != nullptr;
}

TEST(Text, LettersAreKerned) {
    for (const char* face : {"Arial", "DejaVu Sans"}) {
        const auto search = qvr::facesFor(face, 400);
        ASSERT_TRUE(search && search->primary());
        // Hebrew letters tell DejaVu Sans from what stands in for it.
        if (face != std::string("Arial") && !search->primary()->covers(U'\u05d0')) continue;
        const int sum = 3 * extentOf("A", 100, face).cx + 2 * extentOf("V", 100, face).cx;
        EXPECT_LT(extentOf("AVAVA", 100, face).cx, sum - 10) << face;
        EXPECT_LE(std::abs(extentOf("HHHHH", 100, face).cx - 5 * extentOf("H", 100, face).cx), 5) << face;
    }
}

TEST(Text, MixedDirectionsAreOrdered) {
    struct {
        const char32_t* typed;
        const char32_t* seen;  // from left to right
    } const lines[] = {{U"abc", U"abc"},           {U"אבג", U"גבא"},
                       {U"abאב", U"abבא"},         {U"אבab", U"abבא"},
                       {U"ab אב 12", U"ab 12 בא"}, {U"אב 12 גד", U"דג 12 בא"},
                       {U"ab אב cd", U"ab בא cd"}, {U"א-ב", U"ב-א"}};
    const auto search = qvr::facesFor("DejaVu Sans", 400);
    ASSERT_TRUE(search && search->primary());
    for (const auto& line : lines) {
        std::string text;
        std::vector<std::uint32_t> expected, found;
        for (const char32_t* c = line.typed; *c; ++c) text += utf8(*c);
        for (const char32_t* c = line.seen; *c; ++c) {
            if (!search->primary()->covers(*c)) GTEST_SKIP() << "DejaVu Sans is not installed";
            hb_codepoint_t glyph = 0;
            hb_font_get_nominal_glyph(search->primary()->shaper(), *c, &glyph);
            expected.push_back(glyph);
        }
        std::int64_t last = -1;
        for (const qvr::PlacedGlyph& glyph : qvr::layOutLine(qvr::decodedLine(text), *search).glyphs) {
            found.push_back(glyph.glyph);
            EXPECT_GT(glyph.x, last) << text;
            last = glyph.x;
        }
        EXPECT_EQ(found, expected) << text;
    }
}

TEST(Text, MissingGlyphsComeFromAnotherFace) {
    for (const char32_t character : {U'左', U'א', U'✓', U'ش', U'한'}) {
        if (!someFaceHas(character)) continue;
        const qvr::LineLayout line = layout("L" + utf8(character) + "R", "Arial");
        ASSERT_EQ(line.glyphs.size(), 3u);
        for (const qvr::PlacedGlyph& glyph : line.glyphs) EXPECT_NE(glyph.glyph, 0u) << utf8(character);
    }
    if (!someFaceHas(U'左')) GTEST_SKIP() << "no face with Chinese characters is installed";
    const qvr::LineLayout line = layout("L左R", "Arial");
    EXPECT_EQ(line.glyphs[0].face, line.glyphs[2].face);
    EXPECT_NE(line.glyphs[0].face, line.glyphs[1].face);
    const CSize size{120, 100};
    EXPECT_GT(drawn("左", {0, 0, 120, 100}, 80, 0, true, size).sum, 300);
}

TEST(Text, CharactersOfNoFaceShowAsABox) {
    const char32_t unassigned = 0x0378;
    ASSERT_FALSE(someFaceHas(unassigned));
    EXPECT_GT(drawn(utf8(unassigned).c_str(), {0, 0, 100, 60}, 50, 0, false, {100, 60}).sum, 10);
}

TEST(Text, InvalidBytesBecomeReplacementCharacters) {
    struct {
        std::string bytes;
        std::u32string characters;
    } const rows[] = {
        {"A\xC3\xA9Z", U"A\u00E9Z"},
        {"\xE5\xB7\xA6", U"\u5DE6"},
        {"\xF0\x9F\x98\x80", U"\U0001F600"},
        {"\xFF", U"\uFFFD"},
        {"\xC3", U"\uFFFD"},                                // cut short
        {"\xE5\xB7", U"\uFFFD\uFFFD"},                      // cut short
        {"\x80Z", U"\uFFFDZ"},                              // continuation alone
        {"\xC3(", U"\uFFFD("},                              // wrong continuation
        {"\xC0\x80", U"\uFFFD\uFFFD"},                      // overlong
        {"\xE0\x80\xAF", U"\uFFFD\uFFFD\uFFFD"},            // overlong
        {"\xED\xA0\x80", U"\uFFFD\uFFFD\uFFFD"},            // surrogate
        {"\xF4\x90\x80\x80", U"\uFFFD\uFFFD\uFFFD\uFFFD"},  // above U+10FFFF
        {"a\tb\r\nc" + std::string(1, '\0') + "\x7F", U"a b  c  "},
        {"\xE2\x80\xA8", U" "},  // line separator
        {"", U""},
    };
    for (const auto& row : rows) {
        const std::vector<char32_t> found = qvr::decodedLine(row.bytes);
        EXPECT_EQ(std::u32string(found.begin(), found.end()), row.characters)
            << testing::PrintToString(row.bytes);
    }
    // A view that ends within a sequence, though the memory goes on.
    const auto cut = qvr::decodedLine(std::string_view("\xE5\xB7\xA6").substr(0, 2));
    EXPECT_EQ(std::u32string(cut.begin(), cut.end()), U"\uFFFD\uFFFD");
    EXPECT_EQ(extentOf("L\xFFR", 40), extentOf("L\uFFFDR", 40));
}

TEST(Text, MarksStandOnTheirBase) {
    for (const char* face : {"Arial", "DejaVu Sans"}) {
        EXPECT_EQ(extentOf("e\u0301", 100, face), extentOf("\u00E9", 100, face)) << face;
    }
    EXPECT_EQ(extentOf("x\u0323", 100, "DejaVu Sans"), extentOf("x", 100, "DejaVu Sans"));
    std::string pile = "e";
    for (int i = 0; i < 1000; ++i) pile += "\u0301";
    EXPECT_EQ(drawn(pile.c_str(), {0, 0, 100, 60}, 50, 0, true, {100, 60}).height, 60);
}

}  // namespace
