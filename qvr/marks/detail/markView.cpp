// The view of an image as a value. Positions are computed in double precision throughout.
#include "qvr/marks/detail/markView.h"

#include "qvr/platform/detail/numbers.h"

namespace qvr {

namespace {

constexpr double kFirstColumn = 10.0;  // image pixels from the left edge
constexpr double kSpacing = 40.0;      // surface pixels from mark to mark

MarkFrame inset(const RECT& rectangle, std::int64_t x, std::int64_t y) {
    return {rectangle.left + x, rectangle.top + y, rectangle.right - x, rectangle.bottom - y, x, y};
}

std::int64_t widthOf(const RECT& rectangle) {
    return std::int64_t{rectangle.right} - rectangle.left;
}
std::int64_t heightOf(const RECT& rectangle) {
    return std::int64_t{rectangle.bottom} - rectangle.top;
}

}  // namespace

bool MarkView::usable() const {
    return bitmapWidth > 0 && bitmapHeight > 0 && isPositiveFinite(xRatio) && isPositiveFinite(yRatio);
}

MarkFrame placementFrame(const MarkView& view, const RECT& rectangle) {
    const std::int64_t padded = (std::int64_t{view.bitmapWidth} + 3) / 4 * 4;
    if (padded > widthOf(rectangle) && view.bitmapHeight > heightOf(rectangle)) return inset(rectangle, 0, 0);
    return inset(rectangle, (widthOf(rectangle) - padded) / 2, (heightOf(rectangle) - view.bitmapHeight) / 2);
}

MarkFrame editingFrame(const MarkView& view, const RECT& rectangle) {
    return inset(rectangle, (widthOf(rectangle) - view.bitmapWidth) / 2,
                 (heightOf(rectangle) - view.bitmapHeight) / 2);
}

int newMarkColumn(const MarkView& view, int n) {
    return toInt((kSpacing / static_cast<double>(view.xRatio) + 0.5) * n + kFirstColumn);
}

CPoint newMarkPosition(const MarkView& view, const RECT& rectangle, const MarkFrame& placement, int column) {
    const double x = (static_cast<double>(column) - view.xOffset) * static_cast<double>(view.xRatio) +
                     static_cast<double>(placement.xInset) + rectangle.left;
    const double aboveBottom =
        (static_cast<double>(view.height) - view.yOffset) * static_cast<double>(view.yRatio);
    const std::int64_t y = toInt64(view.bitmapHeight - aboveBottom);
    return {toInt(x), saturated(std::int64_t{saturated(y)} + rectangle.top + placement.yInset)};
}

CPoint imagePosition(const MarkView& view, const MarkFrame& editing, CPoint surface) {
    const double x =
        static_cast<double>(surface.x - editing.left) / static_cast<double>(view.xRatio) + view.xOffset;
    const double y =
        static_cast<double>(surface.y - editing.top) / static_cast<double>(view.yRatio) + view.yOffset;
    return {toInt(x), toInt(y)};
}

}  // namespace qvr
