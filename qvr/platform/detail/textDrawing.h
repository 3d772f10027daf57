// textDrawing: measures and draws one line of text in a font, for any kind of surface.
//
// A font's height is the height of its cell: the face is scaled until ascent + descent of the first face fill it,
// and the em follows from that. Fallback faces are drawn at the same em.
#pragma once

#include <cstdint>
#include <functional>

#include "qvr/platform/CDC.h"
#include "qvr/platform/detail/textFace.h"

namespace qvr {

/// Above this height (pixels) a line is drawn at this height and its pixels are magnified.
inline constexpr int kLargestDrawnHeight = 16384;

/// Coverage of `count` neighbouring pixels of a surface.
struct CoverageRow {
    int x, y;
    const std::uint8_t* coverage;
    int count;
};
using PaintRow = std::function<void(const CoverageRow&)>;

struct TextPlacement {
    RECT rect;       // what the text is aligned in and clipped to
    RECT surface;    // a second clip
    unsigned flags;  // DT_CENTER, DT_VCENTER
};

/// Advance width, rounded up, and cell height. Both saturate.
/// @param length  bytes, or negative for all up to the ending 0
/// @return (0, 0) for a null text, a font of height 0 or when no face is usable
[[nodiscard]] CSize textExtent(const CFont& font, const char* text, int length);

/// Calls `paint` for each row of pixels that the text touches. What a letter shows beyond the extent (a slanted end,
/// a stacked mark) is drawn as far as the rectangle reaches.
/// @return cell height; 0 as textExtent, and when the text is too large to draw, memory is missing or an outline
/// cannot be drawn
[[nodiscard]] int drawText(const CFont& font, const char* text, int length, const TextPlacement& placement,
                           Edges edges, const PaintRow& paint);

}  // namespace qvr
