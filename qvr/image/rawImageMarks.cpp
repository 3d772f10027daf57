// Marks: rawImage hands its view to the list of marks and draws what is in it.
#include <functional>
#include <utility>

#include "qvr/image/detail/bitmapRows.h"
#include "qvr/image/rawImage.h"
#include "qvr/marks/detail/burnIn.h"
#include "qvr/marks/detail/markDrawing.h"
#include "qvr/marks/detail/markView.h"
#include "qvr/platform/detail/guard.h"
#include "qvr/platform/detail/numbers.h"

qvr::MarkView rawImage::markView() const {
    const qvr::BitmapRows bitmap = qvr::rowsOf(m_DIB.get());
    return {m_Width, m_Height, m_XOffset, m_YOffset, m_XRatio, m_YRatio, bitmap.width, bitmap.height};
}

int rawImage::AddMark(const char* text, const RECT* rectangle, CDC* surface) {
    const qvr::MarkView shown = markView();
    if (!rectangle || !surface || !shown.usable()) return 0;
    const auto kept = weak_from_this().lock();
    const bool added = qvr::guarded(false, [&] { return m_MarkList.add(text, shown, *rectangle, *surface); });
    if (!added) return 0;
    // The mark is kept first: what a surface does while drawing cannot lose it.
    qvr::guarded([&] {
        const CMark copy = m_MarkList.at(m_MarkList.count() - 1);
        qvr::drawMark(copy, *rectangle, *surface);
    });
    return 1;
}

void rawImage::InflateMark(int index, const RECT* rectangle, CDC* surface) {
    const qvr::MarkView shown = markView();
    if (!rectangle || !surface || !shown.usable()) return;
    const auto kept = weak_from_this().lock();
    qvr::guarded([&] { m_MarkList.inflate(index, shown, *rectangle, *surface); });
}

void rawImage::DeflateMark(int index) {
    m_MarkList.deflate(index);
}

void rawImage::MoveMark(int index, int dx, int dy, const RECT* rectangle, CDC* surface) {
    if (!m_MarkList.has(index)) return;
    const auto [x, y] = m_MarkList.at(index).GetDISPLeftTop();
    const CPoint moved{qvr::saturated(std::int64_t{x} + dx), qvr::saturated(std::int64_t{y} + dy)};
    SetMarkDISPLeftTop(index, moved, rectangle, surface);
}

void rawImage::SetMarkDISPLeftTop(int index, CPoint point, const RECT* rectangle, CDC* surface) {
    const qvr::MarkView shown = markView();
    if (!rectangle || !surface || !shown.usable()) return;
    const auto kept = weak_from_this().lock();
    qvr::guarded([&] { m_MarkList.moveTo(index, point, shown, *rectangle, *surface); });
}

int rawImage::PtInMarkRect(CPoint point, CDC* surface) {
    if (!surface) return -1;
    const auto kept = weak_from_this().lock();
    return qvr::guarded(-1, [&] { return m_MarkList.find(point, *surface); });
}

void rawImage::SetMarkSelected(int index) {
    m_MarkList.select(index);
}
void rawImage::SetMarkNoSelected(int index) {
    m_MarkList.deselect(index);
}
int rawImage::GetSelectedMarkIndex() const {
    return m_MarkList.selected();
}
int rawImage::GetMarkCount() const {
    return m_MarkList.count();
}
void rawImage::DeleteMark(int index) {
    m_MarkList.erase(index);
}
void rawImage::DeleteAllMark() {
    m_MarkList.clear();
}

int rawImage::GetMark(int index, CMark& out) const {
    if (!m_MarkList.has(index)) return 0;
    const CMark& mark = m_MarkList.at(index);
    CMark copy = mark;
    if (copy.GetDISPFontHeight() != mark.GetDISPFontHeight())
        return 0;  // memory ended: the copy is an empty mark
    out = std::move(copy);
    return 1;
}

int rawImage::WriteMark(int width, int height, std::uint16_t* pixels, int bitsStored, CDC* surface) {
    const auto kept = weak_from_this().lock();
    const bool own = pixels && pixels == m_PixelData.get();
    const int ownWidth = m_Width;
    const int ownHeight = m_Height;
    const auto target = [&] {
        if (!own) return pixels;
        return m_Width == ownWidth && m_Height == ownHeight ? m_PixelData.get() : nullptr;
    };
    int done = 1;
    for (int index = 0; m_MarkList.has(index); ++index) {
        const int burned = qvr::guarded(0, [&] {
            const CMark copy = m_MarkList.at(index);
            return qvr::BurnInMark(width, height, std::ref(target), bitsStored, &copy, m_YRatio, surface);
        });
        if (!burned) done = 0;
    }
    return done;
}

void rawImage::DrawAllMarks(const RECT* rectangle, CDC* surface) {
    if (!rectangle || !surface) return;
    const auto kept = weak_from_this().lock();
    qvr::guarded([&] { qvr::drawMarks(m_MarkList, *rectangle, *surface); });
}

void rawImage::DrawMark(const CMark* mark, const RECT* rectangle, CDC* surface) {
    if (!mark || !rectangle || !surface) return;
    qvr::guarded([&] { qvr::drawMark(*mark, *rectangle, *surface); });
}

void rawImage::DrawRectFrame(const RECT* box, std::uint32_t colour, CDC* surface) {
    if (!box || !surface) return;
    qvr::guarded([&] { qvr::drawFrame(*box, colour, *surface); });
}

void rawImage::DrawRectSelectedCross(const RECT* box, std::uint32_t colour, CDC* surface) {
    if (!box || !surface) return;
    qvr::guarded([&] { qvr::drawCross(*box, colour, *surface); });
}
