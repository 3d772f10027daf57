// CQVRImage: the display pipeline over pixels of its own.
#include "qvr/display/CQVRImage.h"

#include <utility>

#include "qvr/display/detail/freePlacement.h"
#include "qvr/image/detail/automaticWindow.h"
#include "qvr/image/detail/bitmapRows.h"
#include "qvr/image/detail/dibBlocks.h"
#include "qvr/image/detail/displayPipeline.h"
#include "qvr/platform/detail/guard.h"
#include "qvr/platform/detail/memory.h"
#include "qvr/platform/detail/numbers.h"

CQVRImage::CQVRImage() = default;
CQVRImage::CQVRImage(const CQVRImage& other) {
    *this = other;
}
CQVRImage::~CQVRImage() = default;

CQVRImage& CQVRImage::operator=(const CQVRImage& other) {
    if (this == &other) return *this;
    qvr::Pixels pixels = qvr::copyPixels(other.m_Width, other.m_Height, other.m_PixelData.get());
    if (other.m_PixelData && !pixels) return *this;
    std::shared_ptr<CDib> bitmap;
    const bool copied = qvr::guarded(false, [&] {
        if (other.m_DIB) bitmap = qvr::BitmapAccess::clone(*other.m_DIB);
        return true;
    });
    if (!copied) return *this;

    m_Width = other.m_Width;
    m_Height = other.m_Height;
    m_PixelSpacing = other.m_PixelSpacing;
    m_BitsStored = other.m_BitsStored;
    m_HighBit = other.m_HighBit;
    m_WindowWidth = other.m_WindowWidth;
    m_WindowCenter = other.m_WindowCenter;
    m_InitialWindowWidth = other.m_InitialWindowWidth;
    m_InitialWindowCenter = other.m_InitialWindowCenter;
    setView(other.view());
    m_DIB = std::move(bitmap);
    m_LUTType = other.m_LUTType;
    m_LUTParamK = other.m_LUTParamK;
    m_LUTParamC = other.m_LUTParamC;
    m_PixelData = std::move(pixels);
    return *this;
}

int CQVRImage::Create(const QVR_ST_QVR_IMAGE* record) {
    if (!record || !record->PixelData) return 0;
    qvr::Pixels pixels = qvr::copyPixels(record->Width, record->Height, record->PixelData);
    m_Width = record->Width;
    m_Height = record->Height;
    m_PixelSpacing = record->PixelSpacing;
    m_BitsStored = record->BitsStored;
    m_HighBit = record->HighBit;
    m_WindowWidth = record->WindowWidth;
    m_WindowCenter = record->WindowCenter;
    m_PixelData = std::move(pixels);
    if (!m_PixelData) return 0;

    const auto window = qvr::windowOrAutomatic({m_WindowWidth, m_WindowCenter}, m_Width, m_Height,
                                               m_PixelData.get(), m_BitsStored);
    m_WindowWidth = m_InitialWindowWidth = window.width;
    m_WindowCenter = m_InitialWindowCenter = window.center;
    return 1;
}

int CQVRImage::Update(int width, int height, const std::uint16_t* pixels, int bitsStored, int highBit,
                      int windowWidth, int windowCenter) {
    if (!pixels || !qvr::pixelCount(width, height)) return 0;
    const auto window =
        qvr::windowOrAutomatic({windowWidth, windowCenter}, width, height, pixels, bitsStored);
    qvr::Pixels copy = qvr::copyPixels(width, height, pixels);
    m_WindowCenter = m_InitialWindowCenter = window.center;
    m_WindowWidth = m_InitialWindowWidth = window.width;
    m_Width = width;
    m_Height = height;
    m_BitsStored = bitsStored;
    m_HighBit = highBit;
    m_PixelData = std::move(copy);
    m_DIB.reset();
    if (!m_PixelData) return 0;
    m_XOffset = 0;
    m_YOffset = 0;
    return 1;
}

qvr::DisplaySource CQVRImage::displaySource() const {
    return {m_PixelData.get(),
            m_Width,
            m_Height,
            m_BitsStored,
            {m_WindowWidth, m_WindowCenter},
            {m_LUTType, m_LUTParamK, m_LUTParamC}};
}

qvr::DisplayView CQVRImage::view() const {
    return {m_XOffset, m_YOffset, m_XRatio, m_YRatio};
}

void CQVRImage::setView(const qvr::DisplayView& view) {
    m_XOffset = view.xOffset;
    m_YOffset = view.yOffset;
    m_XRatio = view.xRatio;
    m_YRatio = view.yRatio;
}

CSize CQVRImage::ComputeZoomRatio(const RECT* rectangle) {
    qvr::DisplayView fitted = view();
    const CSize size = qvr::fitView(m_Width, m_Height, rectangle, fitted);
    setView(fitted);
    return size;
}

int CQVRImage::BuildDisplayImage(const RECT* rectangle, CDC* surface, int reset) {
    qvr::DisplayView next = view();
    const auto built = qvr::guarded(qvr::Built::unfilled, [&] {
        return qvr::buildDisplay(displaySource(), rectangle, reset != 0, next, m_DIB);
    });
    setView(next);
    return qvr::realized(built, m_DIB, surface);
}

int CQVRImage::UpdateDisplayImage() {
    return m_BitsStored == 14 ? Convert14BitsTo8Bits() : 0;
}

int CQVRImage::Convert14BitsTo8Bits() {
    return qvr::guarded(0, [&] { return qvr::convertDisplay(displaySource(), view(), m_DIB.get()) ? 1 : 0; });
}

void CQVRImage::Draw(const RECT* rectangle, CDC* surface) {
    DrawDIB(rectangle, surface, SRCCOPY);
}

void CQVRImage::FreeDraw(CPoint offset, const RECT* rectangle, CDC* surface) {
    DrawDIB(offset, rectangle, surface, SRCCOPY);
}

int CQVRImage::DrawDIB(const RECT* rectangle, CDC* surface, std::uint32_t rop) {
    const std::shared_ptr<CDib> drawn = m_DIB;  // a surface that calls back cannot take it away
    return qvr::guarded(0, [&] { return qvr::drawFitted(drawn.get(), rectangle, surface, rop); });
}

int CQVRImage::DrawDIB(CPoint offset, const RECT* rectangle, CDC* surface, std::uint32_t rop) {
    const std::shared_ptr<CDib> drawn = m_DIB;
    const qvr::BitmapRows rows = qvr::rowsOf(drawn.get());
    if (!surface || !rectangle || !rows) return 0;
    const auto place = qvr::placeFree(offset, *rectangle, rows.width, rows.height);
    if (!place) return 0;
    return drawn->Draw(surface, place->x, place->y, place->width, place->height, place->sourceX,
                       place->sourceY, place->sourceWidth, place->sourceHeight, rop);
}
