// Marks of an image: placed, sized, moved, found, selected, deleted; what is refused; surfaces that call back.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>
#include <utility>

#include "marks/markSurface.h"
#include "support/refuseAllocation.h"

namespace {

constexpr int kLow = std::numeric_limits<int>::min(), kHigh = std::numeric_limits<int>::max();
constexpr RECT kRect{100, 50, 300, 150};  // an image of 400 x 200 fills it at 0.5

class MarkListTest : public testing::Test {
protected:
    void SetUp() override { m_image.show(400, 200, kRect); }
    int add(const char* text) { return m_image.AddMark(text, &kRect, &m_surface); }
    CMark mark(int index) {
        CMark m;
        EXPECT_EQ(m_image.GetMark(index, m), 1);
        return m;
    }
    using Strings = std::vector<std::string>;
    MarkSurface m_surface;
    MarkedImage m_image;
};

TEST(CMarkTest, StartsPlainAndCopiesApart) {
    CMark a;
    EXPECT_STREQ(a.GetFontName(), "Arial");
    EXPECT_EQ(a.GetFontWeight(), 400);
    a.SetMarkText("a text that is too long to be kept in place");
    a.SetSelected(5);
    CMark b(a), c;
    c = a;
    a.SetMarkText(a.GetMarkText() + 7);  // its own text
    EXPECT_STREQ(a.GetMarkText(), "that is too long to be kept in place");
    for (const CMark& copy : {b, c}) {
        EXPECT_STREQ(copy.GetMarkText(), "a text that is too long to be kept in place");
        EXPECT_EQ(copy.IsSelected(), 5);
    }
    a.SetMarkText(nullptr);
    EXPECT_STREQ(a.GetMarkText(), "");
}

TEST(CMarkTest, KeepsItsTextWithoutMemory) {
    CMark mark;
    mark.SetMarkText("kept");
    const int runs = static_cast<int>(refuseEachAllocation(
        [] {},
        [&] {
            mark.SetMarkText("a text that is too long to be kept in place");
            return 1;
        },
        [&](int, bool refused) { EXPECT_EQ(std::string(mark.GetMarkText()) == "kept", refused); }));
    EXPECT_GT(runs, 0);
}

TEST_F(MarkListTest, ThreeMarksAlongTheTopEdge) {
    EXPECT_EQ(add("A"), 1);
    EXPECT_EQ(add("B"), 1);
    EXPECT_EQ(add(nullptr), 1);
    // text, surface x y, image column row, rectangle's corner, font height, selected
    const Strings three{"A 105 50 10 0 100 50 40 0", "B 145 50 90 0 100 50 40 0",
                        " 185 50 171 0 100 50 40 0"};
    EXPECT_EQ(m_image.marks(), three);
    m_surface.drawn.clear();
    EXPECT_EQ(add("D"), 0);
    EXPECT_EQ(m_image.marks(), three);
    EXPECT_TRUE(m_surface.drawn.empty());
}

TEST_F(MarkListTest, TextMustFitAtTheLargestFont) {
    m_surface.percentPerLetter = 1;  // half a pixel a letter at font height 50; there is room for 195 pixels
    EXPECT_EQ(add(std::string(392, 'x').c_str()), 0);
    EXPECT_TRUE(m_surface.drawn.empty());
    EXPECT_EQ(m_image.GetMarkCount(), 0);
    EXPECT_EQ(add(std::string(391, 'x').c_str()), 1);
    m_surface.percentPerLetter = 0;
    EXPECT_EQ(add(std::string(4097, 'x').c_str()), 0) << "whatever the room";
    EXPECT_EQ(add(std::string(4096, 'x').c_str()), 1);
}

// The surface's own small font says nothing about the room that the mark will need.
TEST_F(MarkListTest, AFontThatCannotBeSelectedFitsNothing) {
    std::optional<RecordingDC> surface;
    {
        const RefuseAllocation refusal(0);
        surface.emplace();
    }
    EXPECT_EQ(m_image.AddMark("L", &kRect, &*surface), 0);
    surface.emplace();
    EXPECT_EQ(m_image.AddMark("L", &kRect, &*surface), 1);
}

TEST_F(MarkListTest, FontsGoInThreeSteps) {
    add("AB");
    const auto height = [&] { return mark(0).GetDISPFontHeight(); };
    const auto inflate = [&] { return m_image.InflateMark(0, &kRect, &m_surface), height(); };
    const auto deflate = [&] { return m_image.DeflateMark(0), height(); };
    EXPECT_EQ((std::vector{inflate(), inflate(), deflate(), deflate(), deflate(), inflate(), inflate()}),
              (std::vector{50, 50, 40, 30, 30, 40, 50}));
}

TEST_F(MarkListTest, InflatedBoxStaysInsideRightAndBottom) {
    add("AB");
    m_image.SetMarkDISPLeftTop(0, {260, 110}, &kRect, &m_surface);
    m_image.InflateMark(0, &kRect, &m_surface);
    EXPECT_EQ(m_image.marks(), Strings{"AB 250 100 300 100 100 50 50 0"});
    m_image.DeflateMark(0);
    EXPECT_EQ(m_image.marks(), Strings{"AB 250 100 300 100 100 50 40 0"});
    // Left and top are not enforced.
    const RECT moved{300, 120, 500, 220};
    m_image.InflateMark(0, &moved, &m_surface);
    EXPECT_EQ(m_image.marks(), Strings{"AB 250 100 -100 -40 100 50 50 0"});
}

TEST_F(MarkListTest, MovesEndInsideTheImage) {
    add("AB");  // 40 x 40
    const auto difference = [](int a, int b) {
        return static_cast<int>(std::clamp<std::int64_t>(std::int64_t{a} - b, kLow, kHigh));
    };
    const std::pair<CPoint, CPoint> moves[] = {{{150, 80}, {150, 80}},      {{0, 0}, {100, 50}},
                                               {{261, 80}, {260, 80}},      {{150, 111}, {150, 110}},
                                               {{299, 149}, {260, 110}},    {{kLow, kLow}, {100, 50}},
                                               {{kHigh, kHigh}, {260, 110}}};
    for (const auto& [to, expected] : moves)
        for (const bool at : {true, false}) {
            SCOPED_TRACE(testing::Message() << to.x << ", " << to.y << (at ? " set" : " moved"));
            m_image.SetMarkDISPLeftTop(0, {150, 80}, &kRect, &m_surface);
            if (at)
                m_image.SetMarkDISPLeftTop(0, to, &kRect, &m_surface);
            else
                m_image.MoveMark(0, difference(to.x, 150), difference(to.y, 80), &kRect, &m_surface);
            EXPECT_EQ(mark(0).GetDISPLeftTop(), expected);
            EXPECT_EQ(mark(0).GetPIXLeftTop(), (CPoint{(expected.x - 100) * 2, (expected.y - 50) * 2}));
        }
}

TEST_F(MarkListTest, ABoxLargerThanTheImageEndsFlushRightAndBottom) {
    add("AB");
    m_surface.percentPerLetter = 300;  // 240 x 40
    m_image.SetMarkDISPLeftTop(0, {150, 300}, &kRect, &m_surface);
    EXPECT_EQ(mark(0).GetDISPLeftTop(), (CPoint{60, 110}));
    EXPECT_EQ(mark(0).GetPIXLeftTop(), (CPoint{-80, 120}));
}

TEST_F(MarkListTest, PointsAreFoundInTheOldestBox) {
    add("AB"), add("C");
    m_image.SetMarkDISPLeftTop(0, {150, 80}, &kRect, &m_surface);
    m_image.SetMarkDISPLeftTop(1, {180, 90}, &kRect, &m_surface);  // a square of 40 for a letter of 20
    const auto found = [&](int x, int y) { return m_image.PtInMarkRect({x, y}, &m_surface); };
    EXPECT_EQ((std::vector{found(150, 80), found(149, 80), found(150, 79), found(189, 119), found(190, 119),
                           found(189, 120), found(219, 129), found(220, 129), found(219, 130), found(0, 0),
                           found(kLow, kHigh), m_image.PtInMarkRect({150, 80}, nullptr)}),
              (std::vector{0, -1, -1, 0, 1, 1, 1, -1, -1, -1, -1, -1}));
}

TEST_F(MarkListTest, SelectionAndDeletion) {
    const auto selected = [&] {
        std::string flags = std::to_string(m_image.GetSelectedMarkIndex()) + ':';
        for (int i = 0; i < m_image.GetMarkCount(); ++i) flags += std::to_string(mark(i).IsSelected());
        return flags;
    };
    add("A"), add("B"), add("C");
    EXPECT_EQ(selected(), "-1:000");
    m_image.SetMarkSelected(2);
    EXPECT_EQ(selected(), "2:001");
    m_image.SetMarkSelected(1);
    EXPECT_EQ(selected(), "1:010");
    m_image.SetMarkNoSelected(0), m_image.SetMarkNoSelected(3), m_image.SetMarkNoSelected(-1);
    EXPECT_EQ(selected(), "1:010");
    m_image.SetMarkNoSelected(1);
    EXPECT_EQ(selected(), "-1:000");
    m_image.SetMarkSelected(0), m_image.SetMarkSelected(-1);
    EXPECT_EQ(selected(), "-1:000");
    m_image.SetMarkSelected(1);
    for (const int outside : {-1, 3, kLow, kHigh}) m_image.DeleteMark(outside);
    EXPECT_EQ(m_image.GetMarkCount(), 3);
    m_image.DeleteMark(0);
    EXPECT_EQ(selected(), "0:10");
    EXPECT_STREQ(mark(0).GetMarkText(), "B");
    EXPECT_EQ(add("D"), 1);
    m_image.DeleteAllMark();
    EXPECT_EQ(selected(), "-1:");
    CMark out;
    out.SetMarkText("kept");
    for (const int outside : {0, -1, kHigh}) EXPECT_EQ(m_image.GetMark(outside, out), 0);
    EXPECT_STREQ(out.GetMarkText(), "kept");
}

// Every operation with a rectangle, one after the other. @return what AddMark says
int tryAll(MarkedImage& image, int index, const RECT* r, CDC* dc) {
    image.InflateMark(index, r, dc);
    image.SetMarkDISPLeftTop(index, {1, 2}, r, dc);
    image.MoveMark(index, 7, 8, r, dc);
    return index == 0 ? image.AddMark("N", r, dc) : 0;
}

TEST_F(MarkListTest, WhatCannotBePlacedIsLeftAlone) {
    add("AB");
    const auto before = m_image.marks();
    for (const int outside : {-1, 1, kLow, kHigh}) {
        tryAll(m_image, outside, &kRect, &m_surface);
        m_image.DeflateMark(outside);
    }
    EXPECT_EQ(tryAll(m_image, 0, nullptr, &m_surface), 0);
    EXPECT_EQ(tryAll(m_image, 0, &kRect, nullptr), 0);
    for (const float bad : {0.0f, -1.0f, NAN, INFINITY}) {
        m_image.SetXRatio(bad);
        EXPECT_EQ(tryAll(m_image, 0, &kRect, &m_surface), 0) << bad;
        m_image.SetXRatio(0.5f), m_image.SetYRatio(bad);
        EXPECT_EQ(tryAll(m_image, 0, &kRect, &m_surface), 0) << bad;
        m_image.SetYRatio(0.5f);
    }
    const std::uint16_t pixel = 0;
    ASSERT_EQ(m_image.Update(1, 1, &pixel, 14, 13, 5, 5), 1);  // no bitmap any more
    EXPECT_EQ(tryAll(m_image, 0, &kRect, &m_surface), 0);
    EXPECT_EQ(m_image.marks(), before);
}

TEST_F(MarkListTest, ASurfaceMayThrowOrDeleteMarksAtEveryCall) {
    for (const bool throws : {true, false})
        for (int operation = 0; operation < 8; ++operation)
            for (int call = 0;; ++call) {
                m_surface.onCall = [] {};
                m_image.DeleteAllMark();
                ASSERT_EQ(add("a label of twenty let"), 0);  // does not fit
                ASSERT_EQ(add("A") + add("B"), 2);
                const auto before = m_image.marks();
                CMark mark;
                ASSERT_EQ(m_image.GetMark(0, mark), 1);
                int left = call;
                m_surface.onCall = [&] {
                    if (left-- != 0) return;
                    if (throws) throw std::runtime_error("surface");
                    m_image.DeleteAllMark();
                };
                int added = 0;
                if (operation == 0) added = add("C");
                if (operation == 1) m_image.InflateMark(1, &kRect, &m_surface);
                if (operation == 2) m_image.MoveMark(1, 5, 5, &kRect, &m_surface);
                if (operation == 3) m_image.PtInMarkRect({0, 0}, &m_surface);
                if (operation == 4) m_image.Draw(&kRect, &m_surface);
                if (operation == 5) m_image.DrawMark(&mark, &kRect, &m_surface);
                if (operation == 6) m_image.DrawRectFrame(&kRect, 0, &m_surface);
                if (operation == 7) m_image.DrawRectSelectedCross(&kRect, 0, &m_surface);
                m_surface.onCall = [] {};
                if (left >= 0) break;  // every call has had its turn
                if (throws) {
                    EXPECT_EQ(m_image.GetMarkCount(), 2 + added) << operation << ' ' << call;
                    EXPECT_EQ(m_image.marks()[0], before[0]);
                } else if (operation != 0) {
                    EXPECT_EQ(m_image.GetMarkCount(), 0) << operation << ' ' << call;
                }
            }
}

TEST_F(MarkListTest, NeverMoreThanThreeEvenWhenTheSurfaceAddsOne) {
    ASSERT_EQ(add("A") + add("B"), 2);
    bool called = false;
    m_surface.onCall = [&] {
        if (!std::exchange(called, true)) add("C");
    };
    EXPECT_EQ(add("D"), 0);
    EXPECT_EQ(m_image.GetMarkCount(), 3);
}

// That none is half added is tested in tests/faults.
TEST_F(MarkListTest, WithoutMemoryNoMarkIsHalfMovedOrCopied) {
    const std::string text(40, 'i');
    m_surface.percentPerLetter = 2;
    ASSERT_EQ(add(text.c_str()), 1);
    for (const bool inflates : {true, false})
        refuseEachAllocation([&] { m_image.DeflateMark(0); },
                             [&] {
                                 inflates ? m_image.InflateMark(0, &kRect, &m_surface)
                                          : m_image.MoveMark(0, 0, 0, &kRect, &m_surface);
                                 return 1;
                             },
                             [&](int, bool) {
                                 EXPECT_EQ(mark(0).GetPIXLeftTop().y, 0);
                                 EXPECT_EQ(mark(0).GetDISPLeftTop(), (CPoint{105, 50}));
                             });
    CMark out;
    refuseEachAllocation([&] { out = CMark(); }, [&] { return m_image.GetMark(0, out); },
                         [&](int got, bool) { EXPECT_EQ(out.GetMarkText(), got ? text : ""); });
}

}  // namespace
