// Text boxes of marks: measured with the surface's fonts, which are always put back.
#pragma once

#include <optional>

#include "qvr/marks/CMark.h"
#include "qvr/platform/CDC.h"

namespace qvr {

/// A mark's font of some height, selected into a surface until the end of the scope.
class MarkFont {
public:
    MarkFont(const CMark& mark, int height, CDC& surface);
    ~MarkFont();
    MarkFont(const MarkFont&) = delete;
    MarkFont& operator=(const MarkFont&) = delete;

    /// Size of the mark's text box: never less wide than high. Nothing when no font is usable.
    std::optional<CSize> box() const;
    /// False when memory ended and the surface keeps to its stock font.
    bool isSelected() { return m_surface.SelectObject(&m_font) == &m_font; }

    /// True when the surface says that it keeps another font; one that says nothing is believed.
    bool isRefused() {
        const CFont* const selected = m_surface.SelectObject(&m_font);
        return selected && selected != &m_font;
    }

private:
    const CMark& m_mark;
    CDC& m_surface;
    CFont m_font;
    CFont* m_previous;
};

/// Text box of a mark at a font height. @return nothing for a height below 1 or when no font is usable
std::optional<CSize> textBox(const CMark& mark, int height, CDC& surface);

/// DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_MODIFYSTRING: one line in the middle of its box.
inline constexpr unsigned kMarkTextFlags = DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_MODIFYSTRING;
inline constexpr COLORREF kMarkTextColour = 0xFFFFFF;

}  // namespace qvr
