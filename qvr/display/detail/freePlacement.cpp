// Free placement. Each rule gives the columns and the rows on their own; all divisions truncate toward zero.
#include "qvr/display/detail/freePlacement.h"

#include <cstdint>

#include "qvr/image/detail/displayFit.h"
#include "qvr/platform/detail/numbers.h"

namespace qvr {

namespace {

// One direction: where it starts in the rectangle and how long it is, and the same in the bitmap.
struct Span {
    std::int64_t place;
    std::int64_t length;
    std::int64_t source;
    std::int64_t sourceLength;
};

// One direction of the rule at hand: the offset, the rectangle's side, the drawn side and the bitmap's side.
struct Axis {
    std::int64_t offset;
    std::int64_t room;
    std::int64_t drawn;
    std::int64_t size;
};

// Bitmap pixels for display pixels, by the scale of the direction that the bitmap fills.
struct Scale {
    std::int64_t size;
    std::int64_t room;
    std::int64_t operator()(std::int64_t display) const { return display * size / room; }
};

// Begins before the rectangle: the first `-offset` display pixels are cut off. Columns lose them at the source's start.
Span cutLeft(const Axis& axis, const Scale& scale) {
    const std::int64_t cut = scale(-axis.offset);
    return {0, axis.drawn + axis.offset, cut, axis.size - cut};
}

// Rows that begin above the rectangle lose the top, which is the end of a bottom-up bitmap.
Span cutTop(const Axis& axis, const Scale& scale) {
    return {0, axis.drawn + axis.offset, 0, axis.size - scale(-axis.offset)};
}

// What fits behind the offset; rows keep their top, the end of a bottom-up bitmap.
Span cutBottom(const Axis& axis, const Scale& scale) {
    const std::int64_t length = axis.room - axis.offset;
    const std::int64_t sourceLength = scale(length);
    return {axis.offset, length, axis.size - sourceLength, sourceLength};
}

Span cutRight(const Axis& axis, const Scale& scale) {
    const std::int64_t length = axis.room - axis.offset;
    return {axis.offset, length, 0, scale(length)};
}

Span whole(const Axis& axis) {
    return {axis.offset, axis.drawn, 0, axis.size};
}

bool fits(const Axis& axis) {
    return axis.offset + axis.drawn <= axis.room;
}

struct Spans {
    Span columns;
    Span rows;
};

Spans wide(const Axis& columns, const Axis& rows) {
    const Scale scale{columns.size, columns.room};
    const Span across = columns.offset < 0 ? cutLeft(columns, scale)
                                           : Span{columns.offset, columns.room - columns.offset, 0,
                                                  columns.size - scale(columns.offset)};
    if (rows.offset < 0) return {across, cutTop(rows, scale)};
    return {across, fits(rows) ? whole(rows) : cutBottom(rows, scale)};
}

Spans tall(const Axis& columns, const Axis& rows) {
    const Scale scale{rows.size, rows.room};
    const Span down = rows.offset < 0 ? cutTop(rows, scale)
                                      : Span{rows.offset, rows.room - rows.offset, scale(rows.offset),
                                             rows.size - scale(rows.offset)};
    if (columns.offset < 0) return {cutLeft(columns, scale), down};
    return {fits(columns) ? whole(columns) : cutRight(columns, scale), down};
}

// Both directions go by the horizontal scale.
Spans filling(const Axis& columns, const Axis& rows) {
    const Scale scale{columns.size, columns.room};
    const std::int64_t shownRows = rows.room + rows.offset;
    return {columns.offset < 0 ? cutLeft(columns, scale) : cutRight(columns, scale),
            rows.offset < 0 ? Span{0, shownRows, 0, scale(shownRows)} : cutBottom(rows, scale)};
}

Spans smaller(const Axis& columns, const Axis& rows) {
    const Scale scale{1, 1};
    Spans spans{whole(columns), whole(rows)};
    if (columns.offset < 0) spans.columns = cutLeft(columns, scale);
    if (columns.offset >= 0 && !fits(columns)) spans.columns = cutRight(columns, scale);
    if (rows.offset < 0) spans.rows = cutTop(rows, scale);
    if (rows.offset >= 0 && !fits(rows)) spans.rows = cutBottom(rows, scale);
    return spans;
}

}  // namespace

std::optional<FreePlacement> placeFree(CPoint offset, const RECT& rectangle, int width, int height) {
    const auto sides = sidesOf(rectangle);
    if (!sides || width < 1 || height < 1) return std::nullopt;

    const FitKind kind = fitKind(*sides, width, height);
    const Sides drawn = drawnSize(kind, *sides, width, height);
    const Axis columns{offset.x, sides->width, drawn.width, width};
    const Axis rows{offset.y, sides->height, drawn.height, height};
    const auto rule = kind == FitKind::wide      ? wide
                      : kind == FitKind::tall    ? tall
                      : kind == FitKind::filling ? filling
                                                 : smaller;
    const auto [across, down] = rule(columns, rows);
    if (across.length < 1 || across.sourceLength < 1 || down.length < 1 || down.sourceLength < 1)
        return std::nullopt;
    return FreePlacement{saturated(rectangle.left + across.place),
                         saturated(rectangle.top + down.place),
                         saturated(across.length),
                         saturated(down.length),
                         saturated(across.source),
                         saturated(down.source),
                         saturated(across.sourceLength),
                         saturated(down.sourceLength)};
}

}  // namespace qvr
