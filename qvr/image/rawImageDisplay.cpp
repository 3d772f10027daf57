// Display: rawImage hands its values to the display pipeline and keeps what comes back.
#include <cstddef>

#include "qvr/image/detail/displayPipeline.h"
#include "qvr/image/rawImage.h"
#include "qvr/platform/detail/guard.h"

qvr::DisplaySource rawImage::displaySource() const {
    return {m_PixelData.get(),
            m_Width,
            m_Height,
            m_BitsStored,
            {m_WindowWidth, m_WindowCenter},
            {m_LUTType, m_LUTParamK, m_LUTParamC}};
}

qvr::DisplayView rawImage::view() const {
    return {m_XOffset, m_YOffset, m_XRatio, m_YRatio};
}

void rawImage::setView(const qvr::DisplayView& view) {
    m_XOffset = view.xOffset;
    m_YOffset = view.yOffset;
    m_XRatio = view.xRatio;
    m_YRatio = view.yRatio;
}

CSize rawImage::ComputeZoomRatio(const RECT* rectangle) {
    qvr::DisplayView fitted = view();
    const CSize size = qvr::fitView(m_Width, m_Height, rectangle, fitted);
    setView(fitted);
    return size;
}

int rawImage::BuildDisplayImage(const RECT* rectangle, CDC* surface, int reset) {
    if (!m_ReadInRAM) return 0;
    qvr::DisplayView next = view();
    const auto built = qvr::guarded(qvr::Built::unfilled, [&] {
        return qvr::buildDisplay(displaySource(), rectangle, reset != 0, next, m_DIB);
    });
    setView(next);
    return qvr::realized(built, m_DIB, surface);
}

int rawImage::UpdateDisplayImage() {
    return m_BitsStored == 14 ? Convert14BitsTo8Bits() : 0;
}

int rawImage::Convert14BitsTo8Bits() {
    return qvr::guarded(0, [&] { return qvr::convertDisplay(displaySource(), view(), m_DIB.get()) ? 1 : 0; });
}

void rawImage::Draw(const RECT* rectangle, CDC* surface) {
    const auto kept = weak_from_this().lock();
    DrawDIB(rectangle, surface, SRCCOPY);
    DrawAllMarks(rectangle, surface);
}

int rawImage::DrawDIB(const RECT* rectangle, CDC* surface, std::uint32_t rop) {
    // Kept alive: the surface may call back and have the bitmap rebuilt or released.
    const std::shared_ptr<CDib> drawn = m_DIB;
    return qvr::guarded(0, [&] { return qvr::drawFitted(drawn.get(), rectangle, surface, rop); });
}

int rawImage::Create8BitsLUT(int type, int low, int high, int k, int c, int size, std::uint8_t* table) {
    if (table && size > 0)
        qvr::fillBoundsTable(low, high, {type, k, c}, {table, static_cast<std::size_t>(size)});
    return 1;
}
