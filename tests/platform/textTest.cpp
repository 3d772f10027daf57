// Text on surfaces: sizes, placement, coverage, and what must not hang or crash.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include "platform/textTools.h"
#include "qvr/platform/detail/textFaces.h"

namespace {

constexpr const char* kFaces[] = {
    "Arial", "Liberation Serif", "DejaVu Sans", "Noto Sans CJK SC", "No Such Face", "", nullptr};

TEST(Text, CellHeightIsExact) {
    for (const char* face : kFaces) {
        for (int height = 8; height <= 400; ++height) {
            for (const char* text : {"", "Hg", "左手", "שלום", "e\xCC\x81"}) {
                const CSize extent = extentOf(text, height, face);
                ASSERT_EQ(extent.cy, height) << (face ? face : "null") << ' ' << text;
                ASSERT_EQ(extent.cx > 0, *text != 0);
            }
        }
    }
    EXPECT_EQ(extentOf("L", -40), extentOf("L", 40));
    EXPECT_EQ(extentOf("L", 0), CSize{});
}

TEST(Text, InkLiesWithinTheExtentAndFillsIt) {
    const char* texts[] = {"L", "R", "Left AP 12:30", "gÅjÇ", "|H|", "MWH", "שלום", "左手", "Ελλ", "AVAVA"};
    for (const char* text : texts) {
        for (const int height : {12, 30, 40, 50, 160, 333}) {
            for (const bool smoothed : {false, true}) {
                const CSize extent = extentOf(text, height);
                const int m = height;  // room on every side
                const RECT rect{0, 0, extent.cx + 2 * m, extent.cy + 2 * m};
                const Ink ink =
                    drawn(text, rect, height, DT_CENTER | DT_VCENTER, smoothed, {rect.right, rect.bottom});
                EXPECT_GE(ink.box.left, m) << text << height;
                EXPECT_GE(ink.box.top, m) << text << height;
                EXPECT_LE(ink.box.right, m + extent.cx) << text << height;
                EXPECT_LE(ink.box.bottom, m + extent.cy) << text << height;
                // Side bearings are small: the extent belongs to what is drawn.
                EXPECT_GE(ink.box.right - ink.box.left, extent.cx - height / 4 - 1) << text << height;
            }
        }
    }
}

TEST(Text, LengthAndNullsAreRespected) {
    CRasterDC dc(100, 50);
    CFont font(40, 400, "Arial", 1);
    dc.SelectObject(&font);
    dc.SetTextColor(0xFFFFFF);
    const char letters[2] = {'L', 'R'};  // no ending 0
    EXPECT_EQ(dc.GetTextExtent(letters, 1), dc.GetTextExtent("L", -1));
    EXPECT_EQ(dc.GetTextExtent(letters, 0), (CSize{0, 40}));
    EXPECT_EQ(dc.GetTextExtent(nullptr, 5), CSize{});
    const RECT rect{0, 0, 100, 50};
    EXPECT_EQ(dc.DrawText(nullptr, 5, &rect, 0), 0);
    EXPECT_EQ(dc.DrawText("L", 1, nullptr, 0), 0);
}

TEST(Text, AlignmentAndClipping) {
    const CSize extent = extentOf("Lg", 40);
    const CSize size{200, 120};
    const Ink plain = drawn("Lg", {0, 0, 200, 120}, 40, 0, false, size);
    const Ink centred = drawn("Lg", {10, 20, 190, 110}, 40, 0x10025, false, size);
    const int dx = 10 + (180 - extent.cx) / 2, dy = 20 + (90 - 40) / 2;
    const RECT clip{30, 10, 45, 30};
    const Ink clipped = drawn("Lg", clip, 40, 0x10025, false, size);
    const int cx = 30 + (15 - extent.cx) / 2, cy = 10 + (20 - 40) / 2;
    const auto shifted = [&](int x, int y) {
        return x >= 0 && y >= 0 && x < 200 && y < 120 ? plain.at(x, y) : 0;
    };
    for (int y = 0; y < size.cy; ++y) {
        for (int x = 0; x < size.cx; ++x) {
            ASSERT_EQ(centred.at(x, y), shifted(x - dx, y - dy)) << x << ", " << y;
            const bool inside = x >= clip.left && x < clip.right && y >= clip.top && y < clip.bottom;
            ASSERT_EQ(clipped.at(x, y), inside ? shifted(x - cx, y - cy) : 0) << x << ", " << y;
        }
    }
    EXPECT_GT(clipped.sum, 0);
}

TEST(Text, SmoothedTextReachesItsColourAndBlends) {
    CRasterDC dc(120, 60, 32);
    const RECT all{0, 0, 120, 60};
    CFont font(50, 400, "Arial", 1);
    dc.SelectObject(&font);
    dc.FillSolidRect(&all, 0x102030);
    dc.SetTextColor(0xF0C0A0);
    ASSERT_EQ(dc.DrawText("RoS", -1, &all, 0), 50);
    int full = 0, edges = 0;
    for (int y = 0; y < 60; ++y) {
        for (int x = 0; x < 120; ++x) {
            const COLORREF c = dc.GetPixel(x, y);
            full += c == 0xF0C0A0;
            edges += c != 0xF0C0A0 && c != 0x102030;
            for (int shift = 0; shift < 24; shift += 8) {
                EXPECT_GE(c >> shift & 0xFF, 0x102030u >> shift & 0xFF);
                EXPECT_LE(c >> shift & 0xFF, 0xF0C0A0u >> shift & 0xFF);
            }
        }
    }
    EXPECT_GT(full, 200);
    EXPECT_GT(edges, 50);
}

TEST(Text, OneBitTextKeepsItsWeight) {
    for (const int height : {24, 30, 40, 50, 160, 400}) {
        const CSize extent = extentOf("Left 12", height);
        const RECT rect{0, 0, extent.cx, extent.cy};
        const double smooth = drawn("Left 12", rect, height, 0, true, extent).sum;
        EXPECT_NEAR(drawn("Left 12", rect, height, 0, false, extent).sum / smooth, 1.0, 2.5 / height)
            << height;
    }
    // Strokes thinner than a pixel do not break: every row of a small "l" has ink.
    const Ink thin = drawn("l", {0, 0, 20, 20}, 8, 0, false, {20, 20});
    for (int y = thin.box.top; y < thin.box.bottom; ++y) {
        int inked = 0;
        for (int x = 0; x < 20; ++x) inked += thin.at(x, y) != 0;
        EXPECT_GE(inked, 1) << y;
    }
}

TEST(Text, HugeHeightsSaturateAndDrawOnlyWhatIsVisible) {
    EXPECT_EQ(extentOf("L", kHigh).cy, kHigh);
    EXPECT_EQ(extentOf("LLLL", kHigh), (CSize{kHigh, kHigh}));
    EXPECT_EQ(extentOf("L", std::numeric_limits<int>::min()).cy, kHigh);
    EXPECT_NEAR(extentOf("L", 100000, "Liberation Sans").cx, 1139 * 100000.0 / 2288, 1.0);

    // The stem of "L" in Liberation Sans reaches from 168 to 359 of 2048; capitals start 445 below the cell's top.
    for (const int height : {3000, 16384, 16385, 40000, 100000000}) {
        const double unit = height / 2288.0;
        const auto pixelAt = [&](double x, double y) {
            const int left = -static_cast<int>(x * unit), top = -static_cast<int>(y * unit);
            const Ink ink = drawn("L", {left, top, 2, 2}, height, 0, false, {2, 2}, "Liberation Sans");
            return static_cast<int>(ink.at(0, 0));
        };
        EXPECT_EQ(pixelAt(160, 1000), 0) << height;
        EXPECT_EQ(pixelAt(175, 1000), 255) << height;
        EXPECT_EQ(pixelAt(350, 1000), 255) << height;
        EXPECT_EQ(pixelAt(368, 1000), 0) << height;
        EXPECT_EQ(pixelAt(250, 435), 0) << height;
        EXPECT_EQ(pixelAt(250, 455), 255) << height;
    }
}

// A broken font can ask for this: its ascent and descent may be next to nothing, its letters of any size.
TEST(Text, AnOutlineTooFarAwayIsRefused) {
    const auto search = qvr::facesFor("Arial", 400);
    ASSERT_TRUE(search && search->primary());
    const qvr::TextFace& face = *search->primary();
    hb_codepoint_t letter = 0;
    ASSERT_TRUE(hb_font_get_nominal_glyph(face.shaper(), 'H', &letter));
    std::vector<std::uint8_t> pixels(20 * 20);
    const qvr::CoverageTile tile{pixels.data(), 20, 20};
    for (const auto edges : {qvr::Edges::oneBit, qvr::Edges::smoothed}) {
        for (const auto& [em, x, y] : {std::tuple{20.0, 2147483630.0, 10.0},
                                       {20.0, 0.0, -2147483630.0},
                                       {1e7, 0.0, 0.0},
                                       {1e300, 0.0, 0.0},
                                       {20.0, -1e300, 0.0}})
            EXPECT_FALSE(face.drawGlyph({letter, em, x, y}, edges, tile)) << em << ' ' << x << ' ' << y;
        EXPECT_TRUE(face.drawGlyph({letter, 20.0, 2.0, 18.0}, edges, tile));
    }
}

TEST(Text, VeryLongTextsEnd) {
    std::string mixed, marks = "e", brackets, isolates;
    while (brackets.size() < 1u << 20) brackets += "()", isolates += "\u2066a\u2069";
    while (mixed.size() < 1u << 20) mixed += "AVאב左1\xFF\u0301 ";
    while (marks.size() < 1u << 20) marks += "\u0301\u0323";
    for (const std::string& text : {std::string(1u << 20, 'W'), mixed, marks, brackets, isolates}) {
        const RECT rect{0, 0, 300, 50};
        EXPECT_EQ(drawn(text.c_str(), rect, 40, DT_CENTER, true, {300, 50}).height, 50);
    }
    EXPECT_NEAR(extentOf(std::string(1u << 20, 'H').c_str(), 2288, "Liberation Sans").cx, 1479.0 * (1 << 20),
                2.0 * (1 << 15));
    EXPECT_EQ(extentOf(std::string(1u << 20, 'H').c_str(), 22880, "Liberation Sans").cx, kHigh);
}

}  // namespace
