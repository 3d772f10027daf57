// Marks on screen: what is asked of a surface, in which order, and which pixels it becomes.
#include <gtest/gtest.h>

#include "marks/markSurface.h"

namespace {

constexpr RECT kRect{100, 50, 300, 150}, kMoved{120, 45, 320, 145};
constexpr COLORREF kGreen = 0x00FF00;
using Strings = std::vector<std::string>;

class MarkDrawingTest : public testing::Test {
protected:
    void SetUp() override {
        m_image.show(400, 200, kRect);
        ASSERT_EQ(m_image.AddMark("L", &kRect, &m_surface), 1);
    }
    Strings drawnBy(const std::function<void()>& operation) {
        m_surface.drawn.clear();
        operation();
        return m_surface.drawn;
    }
    MarkSurface m_surface;
    MarkedImage m_image;
};

const Strings kMark{"line 105,50 105,89 colour 65280",
                    "line 105,89 144,89 colour 65280",
                    "line 144,89 144,50 colour 65280",
                    "line 144,50 105,50 colour 65280",
                    "background 1",
                    "text colour 16777215",
                    "text L 105,50 145,90 flags 65573 font 40"};

TEST_F(MarkDrawingTest, AMarkIsDrawnAtOnceAndWithItsImage) {
    CFont font(20, FW_NORMAL, "Arial", DEFAULT_CHARSET);
    CPen pen(PS_SOLID, 1, 5);
    m_surface.SelectObject(&font);
    m_surface.SelectObject(&pen);
    EXPECT_EQ(m_surface.drawn, kMark);
    Strings withImage{"stretch 100,50 200x100"};
    withImage.insert(withImage.end(), kMark.begin(), kMark.end());
    EXPECT_EQ(drawnBy([&] { m_image.Draw(&kRect, &m_surface); }), withImage);
    EXPECT_EQ(m_surface.font(), &font);
    EXPECT_EQ(m_surface.pen(), &pen);
}

// Lines leave out their end: the frame is what lies inside the box along its edges, the cross three pixels thick.
TEST_F(MarkDrawingTest, MarksFollowTheRectangleAndCarryTheirCross) {
    m_image.SetMarkSelected(0);
    const Strings frame{"line 125,45 125,84 colour 65280", "line 125,84 164,84 colour 65280",
                        "line 164,84 164,45 colour 65280", "line 164,45 125,45 colour 65280"};
    const Strings cross{"line 140,64 151,64 colour 65280", "line 140,65 151,65 colour 65280",
                        "line 140,66 151,66 colour 65280", "line 144,60 144,71 colour 65280",
                        "line 145,60 145,71 colour 65280", "line 146,60 146,71 colour 65280"};
    Strings whole = frame;
    whole.insert(whole.end(),
                 {"background 1", "text colour 16777215", "text L 125,45 165,85 flags 65573 font 40"});
    whole.insert(whole.end(), cross.begin(), cross.end());
    EXPECT_EQ(drawnBy([&] { m_image.DrawAllMarks(&kMoved, &m_surface); }), whole);
    CMark mark;
    m_image.GetMark(0, mark);
    EXPECT_EQ(drawnBy([&] { m_image.DrawMark(&mark, &kMoved, &m_surface); }), whole);
    const RECT box{125, 45, 165, 85};
    EXPECT_EQ(drawnBy([&] { m_image.DrawRectFrame(&box, kGreen, &m_surface); }), frame);
    EXPECT_EQ(drawnBy([&] { m_image.DrawRectSelectedCross(&box, kGreen, &m_surface); }), cross);
}

TEST_F(MarkDrawingTest, NullDrawsNothing) {
    const CMark mark;
    EXPECT_EQ(drawnBy([&] {
                  m_image.DrawAllMarks(nullptr, &m_surface);
                  m_image.DrawAllMarks(&kRect, nullptr);
                  m_image.DrawMark(nullptr, &kRect, &m_surface);
                  m_image.DrawMark(&mark, nullptr, &m_surface);
                  m_image.DrawMark(&mark, &kRect, nullptr);
                  m_image.DrawMark(&mark, &kRect, &m_surface);  // font height 0
                  m_image.DrawRectFrame(nullptr, kGreen, &m_surface);
                  m_image.DrawRectFrame(&kRect, kGreen, nullptr);
                  m_image.DrawRectSelectedCross(nullptr, kGreen, &m_surface);
                  m_image.DrawRectSelectedCross(&kRect, kGreen, nullptr);
              }),
              Strings{});
}

}  // namespace
