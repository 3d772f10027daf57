// CMark: copies that happen as a whole or not at all.
#include "qvr/marks/CMark.h"

#include <utility>

#include "qvr/platform/detail/guard.h"

CMark::CMark() : m_FontName("Arial") {}
CMark::CMark(const CMark& other) : CMark() {
    *this = other;
}
CMark::CMark(CMark&&) noexcept = default;
CMark& CMark::operator=(CMark&&) noexcept = default;
CMark::~CMark() = default;

CMark& CMark::operator=(const CMark& other) {
    qvr::guarded([&] {
        CString text = other.m_MarkText;
        CString face = other.m_FontName;
        m_MarkText = std::move(text);
        m_FontName = std::move(face);
        m_DISPLeftTop = other.m_DISPLeftTop;
        m_PIXLeftTop = other.m_PIXLeftTop;
        m_DISPFontHeight = other.m_DISPFontHeight;
        m_FontWeight = other.m_FontWeight;
        m_Selected = other.m_Selected;
        m_ImageLeftTop = other.m_ImageLeftTop;
    });
    return *this;
}

void CMark::SetMarkText(const char* text) {
    qvr::guarded([&] { m_MarkText = text; });
}
