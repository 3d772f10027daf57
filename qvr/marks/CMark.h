// CMark: one text label on an image; a value that converts nothing.
#pragma once

#include <cstdint>

#include "qvr/export.h"
#include "qvr/platform/CString.h"
#include "qvr/platform/types.h"

class QVR_API CMark {
public:
    /// No text, "Arial" at weight 400, font height 0, all corners (0, 0), not selected.
    CMark();
    CMark(const CMark& other);
    /// When memory ends, the mark keeps what it held.
    CMark& operator=(const CMark& other);
    CMark(CMark&& other) noexcept;
    CMark& operator=(CMark&& other) noexcept;
    virtual ~CMark();

    /// UTF-8; valid until the text changes
    const char* GetMarkText() const { return m_MarkText; }
    /// Copies the text; null is empty. When memory ends, the text stays.
    void SetMarkText(const char* text);
    const char* GetFontName() const { return m_FontName; }
    int GetFontWeight() const { return m_FontWeight; }
    /// In surface pixels; the editing operations keep it at 30, 40 or 50.
    int GetDISPFontHeight() const { return m_DISPFontHeight; }
    void SetDISPFontHeight(int height) { m_DISPFontHeight = height; }
    /// Top left corner of the text box on the surface.
    CPoint GetDISPLeftTop() const { return m_DISPLeftTop; }
    void SetDISPLeftTop(CPoint point) { m_DISPLeftTop = point; }
    /// The same corner in image pixels: column from the left edge, row from the TOP edge of the image.
    CPoint GetPIXLeftTop() const { return m_PIXLeftTop; }
    void SetPIXLeftTop(CPoint point) { m_PIXLeftTop = point; }
    /// Top left corner of the display rectangle when the mark was added; drawing follows that rectangle.
    CPoint GetImageLeftTop() const { return m_ImageLeftTop; }
    void SetImageLeftTop(CPoint point) { m_ImageLeftTop = point; }
    int IsSelected() const { return m_Selected; }
    void SetSelected(int selected) { m_Selected = selected; }

private:
    CString m_MarkText;
    CPoint m_DISPLeftTop;
    CPoint m_PIXLeftTop;
    std::int32_t m_DISPFontHeight = 0;
    CString m_FontName;
    std::int32_t m_FontWeight = FW_NORMAL;
    std::int32_t m_Selected = 0;
    CPoint m_ImageLeftTop;
};
