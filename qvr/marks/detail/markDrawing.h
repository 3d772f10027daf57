// Marks on screen: a green frame, the text in white, a green cross on a selected mark.
#pragma once

#include "qvr/marks/markList.h"

namespace qvr {

inline constexpr COLORREF kMarkFrameColour = 0x00FF00;

/// Draws every mark, oldest first.
void drawMarks(const MarkList& marks, const RECT& rectangle, CDC& surface);
/// Draws one mark, moved with the display rectangle since it was added. Nothing when no font is usable.
void drawMark(const CMark& mark, const RECT& rectangle, CDC& surface);
/// The one-pixel border of the pixels inside a box.
void drawFrame(const RECT& box, COLORREF colour, CDC& surface);
/// A plus sign, 11 pixels across with arms 3 pixels thick, in the middle of a box.
void drawCross(const RECT& box, COLORREF colour, CDC& surface);

}  // namespace qvr
