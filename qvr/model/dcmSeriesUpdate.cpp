// Everything that changes what a series shows. Two refreshes exist, rebuild (a new bitmap) and re-convert (the same
// bitmap filled anew), and the pictures follow either.
#include <cstdint>
#include <utility>

#include "qvr/image/rawImage.h"
#include "qvr/model/dcmSeries.h"
#include "qvr/model/detail/thumbnail.h"
#include "qvr/platform/detail/guard.h"
#include "qvr/platform/detail/numbers.h"

// Replaces one of the two pictures, unless the surface called back and the image is another one by then or has a newer
// picture. The old one stays until then: it may be what the new one is made of.
template <class Make>
int dcmSeries::replacePicture(std::unique_ptr<CDib>& picture, Make&& make) {
    const auto image = m_Image;
    const auto old = std::exchange(picture, nullptr);
    auto made = qvr::guarded(std::unique_ptr<CDib>(), make);
    if (m_Image != image) return 0;
    if (!picture) picture = std::move(made);
    return picture ? 1 : 0;
}

int dcmSeries::UpdateThumb(CDib* display, CDC* surface) {
    return replacePicture(m_Thumb, [&] { return qvr::makeThumbnail(display, surface); });
}

int dcmSeries::UpdatePreview(CDib* display, CDC* surface) {
    return replacePicture(m_Preview, [&] { return qvr::makePreview(display, surface); });
}

// Thumbnail and preview from the display bitmap as it is now; a missing preview is no failure.
int dcmSeries::refreshPictures(CDC* surface) {
    const auto display = [this] {
        const auto pixels = raw();
        return pixels ? pixels->GetDIB() : nullptr;
    };
    const auto image = m_Image;
    if (!display() || !UpdateThumb(display(), surface)) return 0;
    UpdatePreview(display(), surface);  // asked for again: the surface may have called back
    return m_Image == image ? 1 : 0;
}

// A new bitmap of the fitted view, and the pictures.
int dcmSeries::rebuildFitted(const RECT* rectangle, CDC* surface) {
    const auto image = m_Image;
    const auto pixels = raw();
    if (!pixels || !pixels->BuildDisplayImage(rectangle, surface, 1) || m_Image != image) return 0;
    return refreshPictures(surface);
}

// The same bitmap filled anew; the pictures only while it starts at the image's first row and column.
int dcmSeries::reconvert(CDC* surface) {
    const auto pixels = raw();
    if (!pixels || !pixels->UpdateDisplayImage()) return 0;
    const bool panned = pixels->GetXOffset() != 0 || pixels->GetYOffset() != 0;
    return panned ? 1 : refreshPictures(surface);
}

int dcmSeries::ReadImageInRAM(const RECT* rectangle, CDC* surface) {
    const auto pixels = raw();
    if (!pixels || !rectangle || !pixels->ReadInRAM()) return 0;
    return rebuildFitted(rectangle, surface);
}

int dcmSeries::ReadUndoData(const RECT* rectangle, CDC* surface) {
    const auto pixels = raw();
    if (!pixels || !rectangle || !pixels->ReadUndoData()) return 0;
    return rebuildFitted(rectangle, surface);
}

int dcmSeries::UpdateImage(int width, int height, const std::uint16_t* newPixels, int bitsStored, int highBit,
                           int windowWidth, int windowCenter, const RECT* rectangle, CDC* surface) {
    const auto image = m_Image;
    const auto pixels = raw();
    if (!pixels) return 0;
    if (!pixels->Update(width, height, newPixels, bitsStored, highBit, windowWidth, windowCenter)) return 0;
    if (pixels->IsReadInRAM() && !rebuildFitted(rectangle, surface)) return 0;
    image->SetWidth(width);
    image->SetHeight(height);
    image->SetBitsStored(bitsStored);
    image->SetHighBit(highBit);
    image->SetWindowWidth(windowWidth);
    image->SetWindowCenter(windowCenter);
    m_Changed = 1;
    return 1;
}

int dcmSeries::UpdateImage(const RECT* rectangle, CDC* surface, int refresh) {
    const auto pixels = raw();
    if (!pixels) return 0;
    if (!pixels->IsReadInRAM()) return 1;
    if (refresh) return rebuildFitted(rectangle, surface);
    return pixels->BuildDisplayImage(rectangle, surface, 0) ? 1 : 0;
}

int dcmSeries::UpdateImage(int windowWidth, int windowCenter, CDC* surface) {
    const auto image = m_Image;
    const auto pixels = raw();
    if (!pixels || windowWidth == 0 || windowCenter == 0) return 0;
    pixels->SetWindowWidth(windowWidth);
    pixels->SetWindowCenter(windowCenter);
    if (pixels->IsReadInRAM() && !reconvert(surface)) return 0;
    image->SetWindowWidth(windowWidth);
    image->SetWindowCenter(windowCenter);
    m_Changed = 1;
    return 1;
}

namespace {

// A zoom that leaves no pixel of the image is no view: the next refresh would find nothing to show.
bool vanishes(int size, float ratio) {
    return size > 0 && static_cast<float>(size) * ratio < 1.0f;
}

// The first column (or row) of a view that shows the middle of `size` image pixels in `room` display pixels.
int centringOffset(int size, float ratio, std::int64_t room) {
    const float zoomed = static_cast<float>(size) * ratio;
    const double visible = zoomed > static_cast<double>(room) ? static_cast<double>(room) : zoomed;
    const int offset = qvr::toInt((size - visible / ratio) * 0.5);
    return offset > 0 ? offset : 0;
}

}  // namespace

int dcmSeries::UpdateImage(float xRatio, float yRatio, const RECT* rectangle, CDC* surface) {
    const auto pixels = raw();
    if (!pixels || !rectangle) return 0;
    const std::int64_t width = std::int64_t{rectangle->right} - rectangle->left;
    const std::int64_t height = std::int64_t{rectangle->bottom} - rectangle->top;
    const bool fitted = xRatio == 0.0f && yRatio == 0.0f;
    const bool zoomed = qvr::isPositiveFinite(xRatio) && qvr::isPositiveFinite(yRatio);
    if (width < 1 || height < 1 || (!fitted && !zoomed)) return 0;
    if (!fitted && (vanishes(pixels->GetWidth(), xRatio) || vanishes(pixels->GetHeight(), yRatio))) return 0;

    pixels->SetXRatio(xRatio);
    pixels->SetYRatio(yRatio);
    pixels->SetXOffset(fitted ? 0 : centringOffset(pixels->GetWidth(), xRatio, width));
    pixels->SetYOffset(fitted ? 0 : centringOffset(pixels->GetHeight(), yRatio, height));
    if (!pixels->IsReadInRAM()) return 1;
    return pixels->BuildDisplayImage(rectangle, surface, 0) ? 1 : 0;
}

int dcmSeries::UpdateImage(int xOffset, int yOffset, const RECT* rectangle, CDC* surface) {
    const auto pixels = raw();
    if (!pixels) return 0;
    pixels->SetXOffset(xOffset);
    pixels->SetYOffset(yOffset);
    if (!pixels->IsReadInRAM()) return 1;
    return pixels->BuildDisplayImage(rectangle, surface, 0) ? 1 : 0;
}

int dcmSeries::UpdateImage(CDC* surface) {
    const auto pixels = raw();
    if (!pixels) return 0;
    return pixels->IsReadInRAM() ? reconvert(surface) : 1;
}

void dcmSeries::SetLUT(int type, int k, int c) {
    const auto pixels = raw();
    if (!pixels) return;
    pixels->SetLUTType(type);
    pixels->SetLUTParam(k, c);
}
