// Text boxes of marks.
#include "qvr/marks/detail/markText.h"

#include <algorithm>

#include "qvr/platform/detail/guard.h"

namespace qvr {

MarkFont::MarkFont(const CMark& mark, int height, CDC& surface)
    : m_mark(mark),
      m_surface(surface),
      m_font(height, mark.GetFontWeight(), mark.GetFontName(), DEFAULT_CHARSET),
      m_previous(surface.SelectObject(&m_font)) {}

MarkFont::~MarkFont() {
    guarded([this] { m_surface.SelectObject(m_previous); });
}

std::optional<CSize> MarkFont::box() const {
    const CSize extent = m_surface.GetTextExtent(m_mark.GetMarkText(), -1);
    if (extent.cx < 0 || extent.cy < 1) return std::nullopt;
    return CSize{std::max(extent.cx, extent.cy), extent.cy};
}

std::optional<CSize> textBox(const CMark& mark, int height, CDC& surface) {
    if (height < 1) return std::nullopt;
    MarkFont font(mark, height, surface);
    return font.isRefused() ? std::nullopt : font.box();
}

}  // namespace qvr
