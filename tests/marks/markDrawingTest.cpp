// Marks on screen: what is asked of a surface, in which order, and which pixels it becomes.
#include <gtest/gtest.h>

#include "marks/markSurface.h"
#include "qvr/platform/CRasterDC.h"

namespace {

constexpr RECT kRect{100, 50, 300, 150}, kMoved{120, 45, 320, 145};
constexpr COLORREF kGreen = 0x00FF00, kWhite = 0xFFFFFF;
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

TEST_F(MarkDrawingTest, MarksFollowTheRectangleAndCarryTheirCross) {
    m_image.SetMarkSelected(0);
    const Strings drawn = drawnBy([&] { m_image.DrawAllMarks(&kMoved, &m_surface); });
    ASSERT_EQ(drawn.size(), 13u);
    EXPECT_EQ(drawn[0], "line 125,45 125,84 colour 65280");
    EXPECT_EQ(drawn[6], "text L 125,45 165,85 flags 65573 font 40");
    EXPECT_EQ(drawn[7], "line 140,64 151,64 colour 65280");
    EXPECT_EQ(drawn[12], "line 146,60 146,71 colour 65280");
}

// Which pixel of a raster should have which colour.
template <class Expected>
testing::AssertionResult holds(const CRasterDC& dc, Expected&& expected) {
    for (int y = 0; y < dc.GetHeight(); ++y)
        for (int x = 0; x < dc.GetWidth(); ++x)
            if (dc.GetPixel(x, y) != expected(x, y))
                return testing::AssertionFailure() << "at " << x << ", " << y << ": " << dc.GetPixel(x, y);
    return testing::AssertionSuccess();
}

constexpr RECT kBox{100, 200, 140, 240};
COLORREF frameOf(int x, int y) {
    const bool inside = x >= 100 && x < 140 && y >= 200 && y < 240;
    return inside && (x == 100 || x == 139 || y == 200 || y == 239) ? kGreen : 0;
}
COLORREF crossOf(int x, int y) {  // centred on (120, 220)
    const bool across = x >= 115 && x <= 125 && y >= 219 && y <= 221;
    const bool down = y >= 215 && y <= 225 && x >= 119 && x <= 121;
    return across || down ? kGreen : 0;
}

TEST_F(MarkDrawingTest, FrameAndCrossPixelByPixel) {
    CRasterDC frame(200, 300), cross(200, 300), whole(200, 300);
    m_image.DrawRectFrame(&kBox, kGreen, &frame);
    EXPECT_TRUE(holds(frame, frameOf));
    m_image.DrawRectSelectedCross(&kBox, kGreen, &cross);
    EXPECT_TRUE(holds(cross, crossOf));
    CMark mark;  // without text: a square box with nothing in it
    mark.SetDISPFontHeight(40);
    mark.SetDISPLeftTop({90, 195});
    mark.SetImageLeftTop({10, 20});
    mark.SetSelected(1);
    const RECT rectangle{20, 25, 200, 300};
    m_image.DrawMark(&mark, &rectangle, &whole);
    EXPECT_TRUE(holds(whole, [](int x, int y) { return frameOf(x, y) | crossOf(x, y); }));
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
