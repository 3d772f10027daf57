// CRasterDC: everything is clipped first; no pixel is looked at that is not drawn.
#include "qvr/platform/CRasterDC.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "qvr/platform/detail/guard.h"
#include "qvr/platform/detail/memory.h"
#include "qvr/platform/detail/numbers.h"
#include "qvr/platform/detail/pixelFormat.h"
#include "qvr/platform/detail/stretch.h"
#include "qvr/platform/detail/textDrawing.h"

struct CRasterDC::Raster {
    qvr::PixelMemory memory;  // 0 x 0 for an empty surface
    qvr::Bytes owned;         // null when the pixels are the host's
    bool smoothing = true;
};

namespace {

bool isKnownDepth(int bits) {
    return bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

bool isPossible(int width, int height, int bits) {
    return width >= 1 && height >= 1 && qvr::pixelCount(width, height) && isKnownDepth(bits);
}

std::size_t rowBytes(int width, int bits) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(bits / 8);
}

template <class Format>
void blendRow(std::uint8_t* to, const qvr::CoverageRow& row, qvr::Rgb colour) {
    const std::uint32_t full = Format::packed(colour);
    for (int i = 0; i < row.count; ++i, to += Format::kBytes) {
        if (row.coverage[i] == 0) continue;
        if (row.coverage[i] == 255) {
            Format::store(to, full);
        } else {
            const qvr::Rgb below = Format::unpacked(Format::load(to));
            Format::store(to, Format::packed(qvr::blended(below, colour, row.coverage[i])));
        }
    }
}

}  // namespace

CRasterDC::CRasterDC(int width, int height, int bitsPerPixel) : m_raster(new (std::nothrow) Raster) {
    if (!m_raster) return;
    if (isKnownDepth(bitsPerPixel)) m_raster->memory.bits = bitsPerPixel;
    if (!isPossible(width, height, bitsPerPixel)) return;
    const std::size_t stride = (rowBytes(width, bitsPerPixel) + 3) / 4 * 4;
    m_raster->owned = qvr::makeBytes(stride * static_cast<std::size_t>(height));
    if (!m_raster->owned) return;
    m_raster->memory = {m_raster->owned.get(), width, height, stride, bitsPerPixel};
}

CRasterDC::CRasterDC(void* pixels, int width, int height, std::size_t strideBytes, int bitsPerPixel)
    : m_raster(new (std::nothrow) Raster) {
    if (!m_raster) return;
    if (isKnownDepth(bitsPerPixel)) m_raster->memory.bits = bitsPerPixel;
    if (!pixels || !isPossible(width, height, bitsPerPixel)) return;
    if (strideBytes < rowBytes(width, bitsPerPixel)) return;
    m_raster->memory = {static_cast<std::uint8_t*>(pixels), width, height, strideBytes, bitsPerPixel};
}

CRasterDC::~CRasterDC() = default;

int CRasterDC::GetWidth() const noexcept {
    return m_raster ? m_raster->memory.width : 0;
}

int CRasterDC::GetHeight() const noexcept {
    return m_raster ? m_raster->memory.height : 0;
}

int CRasterDC::GetBitsPerPixel() const {
    return m_raster ? m_raster->memory.bits : 32;
}

COLORREF CRasterDC::GetPixel(int x, int y) const {
    if (x < 0 || y < 0 || x >= GetWidth() || y >= GetHeight()) return 0;
    const qvr::PixelMemory& memory = m_raster->memory;
    return qvr::withFormat(memory.bits, [&](auto format) {
        return qvr::swappedRedBlue(format.unpacked(format.load(memory.at(x, y))));
    });
}

const void* CRasterDC::GetRow(int y) const {
    if (y < 0 || y >= GetHeight()) return nullptr;
    return m_raster->memory.at(0, y);
}

void CRasterDC::FillSolidRect(const RECT* rect, COLORREF colour) {
    if (!rect || !m_raster) return;
    const qvr::PixelMemory& memory = m_raster->memory;
    const int left = std::max(rect->left, 0);
    const int top = std::max(rect->top, 0);
    const int right = std::min(rect->right, memory.width);
    const int bottom = std::min(rect->bottom, memory.height);
    if (left >= right || top >= bottom) return;

    std::uint8_t* const first = memory.at(left, top);
    const std::size_t bytes = rowBytes(right - left, memory.bits);
    qvr::withFormat(memory.bits, [&](auto format) {
        const std::uint32_t pixel = format.packed(qvr::swappedRedBlue(colour));
        for (std::size_t i = 0; i < bytes; i += format.kBytes) format.store(first + i, pixel);
    });
    for (int y = top + 1; y < bottom; ++y) std::memcpy(memory.at(left, y), first, bytes);
}

int CRasterDC::StretchDIBits(int dx, int dy, int dw, int dh, int sx, int sy, int sw, int sh, const void* bits,
                             const BITMAPINFO* info, std::uint32_t rop) {
    if (!m_raster || rop != SRCCOPY) return 0;
    const auto bitmap = qvr::BitmapPixels::read(bits, info);
    if (!bitmap) return 0;
    return qvr::stretchBitmap(m_raster->memory, {dx, dy, dw, dh, sx, sy, sw, sh}, *bitmap);
}

int CRasterDC::DrawText(const char* text, int length, const RECT* rect, unsigned flags) {
    if (!rect || !m_raster) return 0;
    const qvr::PixelMemory& memory = m_raster->memory;
    const qvr::Rgb colour = qvr::swappedRedBlue(textColour());
    const auto blend = [&](const qvr::CoverageRow& row) {
        qvr::withFormat(memory.bits, [&](auto format) {
            blendRow<decltype(format)>(memory.at(row.x, row.y), row, colour);
        });
    };
    return qvr::guarded(0, [&] {
        const qvr::TextPlacement placement{*rect, {0, 0, memory.width, memory.height}, flags};
        const auto edges = m_raster->smoothing ? qvr::Edges::smoothed : qvr::Edges::oneBit;
        return qvr::drawText(selectedFont(), text, length, placement, edges, blend);
    });
}

void CRasterDC::SetTextSmoothing(int on) noexcept {
    if (m_raster) m_raster->smoothing = on != 0;
}
