// The marks of an image.
#include "qvr/marks/markList.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "qvr/marks/detail/markText.h"
#include "qvr/marks/detail/markView.h"
#include "qvr/platform/detail/numbers.h"

namespace qvr {

namespace {

// No image is wide enough for more, and the time for one mark is bounded.
constexpr std::size_t kLongestText = 4096;

}  // namespace

bool MarkList::add(const char* text, const MarkView& view, const RECT& rectangle, CDC& surface) {
    if (count() >= kMaxMarks) return false;
    if (text && ::strnlen(text, kLongestText + 1) > kLongestText) return false;
    const MarkFrame frame = placementFrame(view, rectangle);
    const int column = newMarkColumn(view, count());
    const CPoint position = newMarkPosition(view, rectangle, frame, column);

    CMark added;
    added.SetMarkText(text);
    // A text that memory ended for would be an empty label.
    if (text && *text && !*added.GetMarkText()) return false;
    added.SetDISPFontHeight(kMediumFont);
    added.SetDISPLeftTop(position);
    added.SetPIXLeftTop({column, 0});
    added.SetImageLeftTop({rectangle.left, rectangle.top});

    const auto box = textBox(added, kLargeFont, surface);
    const std::int64_t room = std::int64_t{rectangle.right} - position.x - frame.xInset;
    if (!box || room < box->cx || count() >= kMaxMarks) return false;
    m_marks.push_back(std::move(added));
    return true;
}

// Stores size and surface position together with the image position that belongs to it.
void MarkList::place(int index, int fontHeight, std::int64_t x, std::int64_t y, const MarkView& view,
                     const RECT& rectangle) {
    const CPoint position{saturated(x), saturated(y)};
    CMark& target = mark(index);
    target.SetDISPFontHeight(fontHeight);
    target.SetDISPLeftTop(position);
    target.SetPIXLeftTop(imagePosition(view, editingFrame(view, rectangle), position));
}

void MarkList::inflate(int index, const MarkView& view, const RECT& rectangle, CDC& surface) {
    if (!has(index) || at(index).GetDISPFontHeight() == kLargeFont) return;
    const int height = at(index).GetDISPFontHeight() == kMediumFont ? kLargeFont : kMediumFont;
    const CMark copy = at(index);
    if (copy.GetDISPFontHeight() != at(index).GetDISPFontHeight()) return;  // memory ended
    const auto box = textBox(copy, height, surface);
    if (!box || !has(index)) return;

    const MarkFrame frame = editingFrame(view, rectangle);
    const auto [x, y] = copy.GetDISPLeftTop();
    place(index, height, std::min<std::int64_t>(x, frame.right - box->cx),
          std::min<std::int64_t>(y, frame.bottom - box->cy), view, rectangle);
}

void MarkList::deflate(int index) {
    if (!has(index) || at(index).GetDISPFontHeight() == kSmallFont) return;
    mark(index).SetDISPFontHeight(at(index).GetDISPFontHeight() == kMediumFont ? kSmallFont : kMediumFont);
}

void MarkList::moveTo(int index, CPoint point, const MarkView& view, const RECT& rectangle, CDC& surface) {
    if (!has(index)) return;
    const CMark copy = at(index);
    const auto box = textBox(copy, copy.GetDISPFontHeight(), surface);
    if (!box || !has(index)) return;

    const MarkFrame frame = editingFrame(view, rectangle);
    const std::int64_t x = std::max<std::int64_t>(point.x, frame.left);
    const std::int64_t y = std::max<std::int64_t>(point.y, frame.top);
    // Right and bottom come last, so that they win over left and top.
    place(index, copy.GetDISPFontHeight(), std::min(x, frame.right - box->cx),
          std::min(y, frame.bottom - box->cy), view, rectangle);
}

int MarkList::find(CPoint point, CDC& surface) const {
    for (int index = 0; has(index); ++index) {
        const CMark copy = at(index);
        const auto box = textBox(copy, copy.GetDISPFontHeight(), surface);
        if (!box) continue;
        const std::int64_t x = std::int64_t{point.x} - copy.GetDISPLeftTop().x;
        const std::int64_t y = std::int64_t{point.y} - copy.GetDISPLeftTop().y;
        if (x >= 0 && x < box->cx && y >= 0 && y < box->cy) return index;
    }
    return -1;
}

void MarkList::select(int index) {
    for (int i = 0; i < count(); ++i) mark(i).SetSelected(i == index ? 1 : 0);
}

void MarkList::deselect(int index) {
    if (has(index)) mark(index).SetSelected(0);
}

int MarkList::selected() const {
    const auto found =
        std::find_if(m_marks.begin(), m_marks.end(), [](const CMark& m) { return m.IsSelected() != 0; });
    return found == m_marks.end() ? -1 : static_cast<int>(found - m_marks.begin());
}

void MarkList::erase(int index) {
    if (has(index)) m_marks.erase(m_marks.begin() + index);
}

}  // namespace qvr
