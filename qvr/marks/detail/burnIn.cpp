// Marks in the pixels. The text is drawn on an off-screen raster and every full pixel of it is carried over; only the
// part of the raster that lies inside the image is ever made.
#include "qvr/marks/detail/burnIn.h"

#include <algorithm>
#include <cstddef>
#include <memory>

#include "qvr/marks/detail/markText.h"
#include "qvr/platform/CRasterDC.h"
#include "qvr/platform/detail/numbers.h"

namespace qvr {

namespace {

// The brightest value of a depth; 0 for a depth that cannot be burned.
std::uint16_t burnValue(int bitsStored) {
    const bool known = bitsStored == 10 || bitsStored == 12 || bitsStored == 14 || bitsStored == 16;
    return known ? static_cast<std::uint16_t>((1 << bitsStored) - 1) : std::uint16_t{0};
}

// Whether pixel x of a raster row is text: only full white counts at 32 bits, so smoothed edges do not.
bool isText(const void* row, std::ptrdiff_t x, int bitsPerPixel) {
    const auto* const bytes = static_cast<const std::uint8_t*>(row);
    switch (bitsPerPixel) {
        case 8:
            return bytes[x] != 0;
        case 16:
            return bytes[2 * x] != 0 || bytes[2 * x + 1] != 0;
        default:
            return bytes[4 * x] == 255 && bytes[4 * x + 1] == 255 && bytes[4 * x + 2] == 255 &&
                   bytes[4 * x + 3] == 0;
    }
}

// A range of raster columns or rows: those that lie inside the image.
struct Visible {
    std::int64_t first;
    std::int64_t end;

    Visible(std::int64_t position, std::int64_t length, std::int64_t imageSide)
        : first(std::max<std::int64_t>(0, -position)), end(std::min(length, imageSide - position)) {}
    bool empty() const { return first >= end; }
    int length() const { return static_cast<int>(end - first); }
};

}  // namespace

int BurnInMark(int width, int height, std::uint16_t* pixels, int bitsStored, const CMark* mark, float ratio,
               CDC* surface) {
    return BurnInMark(
        width, height, [pixels] { return pixels; }, bitsStored, mark, ratio, surface);
}

int BurnInMark(int width, int height, const std::function<std::uint16_t*()>& pixels, int bitsStored,
               const CMark* mark, float ratio, CDC* surface) {
    const std::uint16_t value = burnValue(bitsStored);
    if (value == 0 || !pixels() || !mark || !surface || !isPositiveFinite(ratio) ||
        !pixelCount(width, height))
        return 0;
    const int fontHeight = toInt(mark->GetDISPFontHeight() / static_cast<double>(ratio) + 0.5);
    const auto gauge = surface->CreateCompatibleRaster(1, 1);
    if (!gauge || fontHeight < 1) return 0;
    MarkFont measured(*mark, fontHeight, *gauge);
    const auto box = measured.box();
    if (!box || !measured.isSelected()) return 0;

    const auto [left, top] = mark->GetPIXLeftTop();
    const Visible columns(left, box->cx, width);
    const Visible rows(top, box->cy, height);
    if (columns.empty() || rows.empty()) return 1;
    const auto raster = surface->CreateCompatibleRaster(columns.length(), rows.length());
    if (!raster) return 0;
    const int depth = raster->GetBitsPerPixel();
    if (depth != 8 && depth != 16 && depth != 32) return 0;
    // A host's surface makes its own rasters.
    if (raster->GetWidth() < columns.length() || raster->GetHeight() < rows.length()) return 0;
    {
        MarkFont font(*mark, fontHeight, *raster);
        if (!font.isSelected()) return 0;
        raster->SetBkMode(TRANSPARENT);
        raster->SetTextColor(kMarkTextColour);
        const RECT place{saturated(-columns.first), saturated(-rows.first),
                         saturated(box->cx - columns.first), saturated(box->cy - rows.first)};
        const bool drawn = raster->DrawText(mark->GetMarkText(), -1, &place, kMarkTextFlags) != 0;
        if (!drawn && *mark->GetMarkText()) return 0;
    }

    for (int y = 0; y < rows.length(); ++y) {
        const void* const row = raster->GetRow(y);
        // The image's top row is the last row of its buffer.
        const std::int64_t bufferRow = height - 1 - (top + rows.first + y);
        std::uint16_t* const first = pixels();
        if (!first) return 0;
        std::uint16_t* const target = first + (bufferRow * width + left + columns.first);
        for (int x = 0; x < columns.length(); ++x)
            if (isText(row, x, depth)) target[x] = value;
    }
    return 1;
}

}  // namespace qvr
