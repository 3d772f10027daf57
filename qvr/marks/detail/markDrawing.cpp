// Marks on screen.
#include "qvr/marks/detail/markDrawing.h"

#include "qvr/marks/detail/markText.h"
#include "qvr/platform/detail/guard.h"
#include "qvr/platform/detail/numbers.h"

namespace qvr {

namespace {

constexpr int kArmLength = 5;     // pixels on either side of the cross's centre
constexpr int kArmThickness = 1;  // pixels on either side of an arm's middle

// A solid one-pixel pen, selected into a surface until the end of the scope.
class LinePen {
public:
    LinePen(COLORREF colour, CDC& surface)
        : m_surface(surface), m_pen(PS_SOLID, 1, colour), m_previous(surface.SelectObject(&m_pen)) {}
    ~LinePen() {
        guarded([this] { m_surface.SelectObject(m_previous); });
    }
    LinePen(const LinePen&) = delete;
    LinePen& operator=(const LinePen&) = delete;

private:
    CDC& m_surface;
    CPen m_pen;
    CPen* m_previous;
};

int add(int value, std::int64_t distance) {
    return saturated(value + distance);
}

}  // namespace

void drawFrame(const RECT& box, COLORREF colour, CDC& surface) {
    const LinePen pen(colour, surface);
    const int right = add(box.right, -1);
    const int bottom = add(box.bottom, -1);
    surface.MoveTo(box.left, box.top);
    surface.LineTo(box.left, bottom);
    surface.LineTo(right, bottom);
    surface.LineTo(right, box.top);
    surface.LineTo(box.left, box.top);
}

void drawCross(const RECT& box, COLORREF colour, CDC& surface) {
    const LinePen pen(colour, surface);
    const int x = add(box.left, (std::int64_t{box.right} - box.left) / 2);
    const int y = add(box.top, (std::int64_t{box.bottom} - box.top) / 2);
    for (int i = -kArmThickness; i <= kArmThickness; ++i) {
        surface.MoveTo(add(x, -kArmLength), add(y, i));
        surface.LineTo(add(x, kArmLength + 1), add(y, i));
    }
    for (int i = -kArmThickness; i <= kArmThickness; ++i) {
        surface.MoveTo(add(x, i), add(y, -kArmLength));
        surface.LineTo(add(x, i), add(y, kArmLength + 1));
    }
}

void drawMark(const CMark& mark, const RECT& rectangle, CDC& surface) {
    if (mark.GetDISPFontHeight() < 1) return;
    const auto [x, y] = mark.GetDISPLeftTop();
    const int left = add(x, std::int64_t{rectangle.left} - mark.GetImageLeftTop().x);
    const int top = add(y, std::int64_t{rectangle.top} - mark.GetImageLeftTop().y);

    const MarkFont font(mark, mark.GetDISPFontHeight(), surface);
    const auto size = font.box();
    if (!size) return;
    const RECT box{left, top, add(left, size->cx), add(top, size->cy)};
    drawFrame(box, kMarkFrameColour, surface);
    surface.SetBkMode(TRANSPARENT);
    surface.SetTextColor(kMarkTextColour);
    surface.DrawText(mark.GetMarkText(), -1, &box, kMarkTextFlags);
    if (mark.IsSelected()) drawCross(box, kMarkFrameColour, surface);
}

void drawMarks(const MarkList& marks, const RECT& rectangle, CDC& surface) {
    for (int index = 0; marks.has(index); ++index) {
        // A copy: the surface may call back and change the list. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
        const CMark copy = marks.at(index);
        drawMark(copy, rectangle, surface);
    }
}

}  // namespace qvr
