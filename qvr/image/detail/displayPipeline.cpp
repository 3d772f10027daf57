// The display pipeline. A view is settled before anything is changed; the bitmap then follows.
#include "qvr/image/detail/displayPipeline.h"

#include "qvr/image/detail/bitmapRows.h"
#include "qvr/image/detail/blockConversion.h"
#include "qvr/platform/detail/numbers.h"

namespace qvr {

namespace {

constexpr COLORREF kBlack = 0;
constexpr int kDisplayBits = 14;

}  // namespace

CSize fitView(int width, int height, const RECT* rectangle, DisplayView& view) {
    if (!rectangle) return {};
    const auto fit = fitImage(width, height, *rectangle);
    if (!fit) return {};
    view.xRatio = fit->xRatio;
    view.yRatio = fit->yRatio;
    return fit->size;
}

Built buildDisplay(const DisplaySource& source, const RECT* rectangle, bool reset, DisplayView& view,
                   std::shared_ptr<CDib>& bitmap) {
    if (!rectangle) return Built::refused;
    DisplayView next = reset ? DisplayView{} : view;
    CSize size;
    if (next.fitted()) {
        size = fitView(source.width, source.height, rectangle, next);
    } else if (const auto zoomed =
                   sizeFromRatios(source.width, source.height, next.xRatio, next.yRatio, *rectangle)) {
        size = *zoomed;
    }
    if (size.cx < 1) return Built::refused;

    view = next;
    bitmap.reset();  // before the new one is made, so that two full bitmaps never exist at once
    bitmap = makeGreyBitmap(size.cx, size.cy, nullptr);
    const bool filled = source.bitsStored == kDisplayBits && convertDisplay(source, view, bitmap.get());
    return filled ? Built::filled : Built::unfilled;
}

int realized(Built built, std::shared_ptr<CDib> bitmap, CDC* surface) {
    if (built != Built::refused && bitmap) realizePalette(*bitmap, surface);
    return built == Built::filled ? 1 : 0;
}

bool convertDisplay(const DisplaySource& source, const DisplayView& view, const CDib* bitmap) {
    const BitmapRows target = rowsOf(bitmap);
    if (!target || !source.pixels || !pixelCount(source.width, source.height)) return false;
    if (!isPositiveFinite(view.xRatio) || !isPositiveFinite(view.yRatio)) return false;

    const BlockSpans columns = blockSpans(target.width, source.width, view.xOffset, view.xRatio);
    const BlockSpans rows = blockSpans(target.height, source.height, view.yOffset, view.yRatio);
    DisplayTable table;
    fillDisplayTable(source.window, source.curve, table);
    const auto ramp = greyRamp(source.window, source.curve, kDisplayBits);
    convertBlocks(source.pixels, source.width, columns, rows, table, target, ramp ? &*ramp : nullptr);
    return true;
}

int drawFitted(CDib* bitmap, const RECT* rectangle, CDC* surface, std::uint32_t rop) {
    const BitmapRows rows = rowsOf(bitmap);
    if (!surface || !rectangle || !rows) return 0;
    const auto place = placeFitted(*rectangle, rows.width, rows.height);
    if (!place) return 0;
    for (int i = 0; i < place->fillCount; ++i)
        surface->FillSolidRect(&place->fills[static_cast<std::size_t>(i)], kBlack);
    return bitmap->Draw(surface, place->x, place->y, place->width, place->height, 0, 0, rows.width,
                        rows.height, rop);
}

}  // namespace qvr
