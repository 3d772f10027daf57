// The captions are drawn by the library's own text, so the sheet shows that too.
#include "tools/demo/contactSheet.h"

namespace qvr {
namespace {

constexpr int kGap = 6;
constexpr int kCaption = 18;
constexpr COLORREF kBackground = 0x303030;
constexpr COLORREF kText = 0xE0E0E0;

}  // namespace

void ContactSheet::add(const Screen& picture, const std::string& caption) {
    int shrink = 1;
    while (picture.width() / shrink > m_cell.cx || picture.height() / shrink > m_cell.cy) ++shrink;
    m_cells.emplace_back(m_cell, caption);
    m_cells.back().picture.showSmall(picture, (m_cell.cx - picture.width() / shrink) / 2,
                                     (m_cell.cy - picture.height() / shrink) / 2, shrink);
}

void ContactSheet::save(const std::filesystem::path& path) const {
    if (m_cells.empty()) return;
    const int cellWidth = m_cell.cx + kGap;
    const int cellHeight = m_cell.cy + kCaption + kGap;
    const int rows = (static_cast<int>(m_cells.size()) + m_columns - 1) / m_columns;
    Screen sheet(m_columns * cellWidth + kGap, rows * cellHeight + kGap);
    const RECT all = sheet.rectangle();
    sheet.surface().FillSolidRect(&all, kBackground);

    CFont font(kCaption - 3, 400, "Arial", 0);
    CFont* before = sheet.surface().SelectObject(&font);
    sheet.surface().SetTextColor(kText);
    sheet.surface().SetBkMode(TRANSPARENT);
    int index = 0;
    for (const Cell& cell : m_cells) {
        const int left = kGap + index % m_columns * cellWidth;
        const int top = kGap + index / m_columns * cellHeight;
        sheet.showSmall(cell.picture, left, top, 1);
        const RECT line{left, top + cell.picture.height(), left + cell.picture.width(),
                        top + cellHeight - kGap};
        sheet.surface().DrawText(cell.caption.c_str(), -1, &line, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
        ++index;
    }
    sheet.surface().SelectObject(before);
    sheet.save(path);
}

}  // namespace qvr
