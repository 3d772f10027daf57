// The view of an image as a value, and the two frames in which marks are placed; surface and image coordinates.
//
// PIX positions count columns from the left and rows from the TOP of the image; surface y grows downward as well. The
// view's yOffset counts image rows from the BOTTOM, as buffers do.
#pragma once

#include <cstdint>

#include "qvr/platform/types.h"

namespace qvr {

struct MarkView {
    int width = 0;   ///< of the image, in pixels
    int height = 0;  ///< of the image, in rows
    int xOffset = 0;
    int yOffset = 0;
    float xRatio = 0.0f;  ///< surface pixels per image pixel
    float yRatio = 0.0f;
    int bitmapWidth = 0;  ///< of the displayed area, in surface pixels
    int bitmapHeight = 0;

    /// True when marks can be placed: there is a bitmap, and both ratios are finite and above 0.
    bool usable() const;
};

/// Where the displayed image lies inside the display rectangle, in surface pixels.
struct MarkFrame {
    std::int64_t left = 0;
    std::int64_t top = 0;
    std::int64_t right = 0;
    std::int64_t bottom = 0;
    std::int64_t xInset = 0;  ///< distance from the rectangle's edges
    std::int64_t yInset = 0;
};

/// Where a new mark is placed: the bitmap counts with its padded rows, and a bitmap larger than the rectangle both ways
/// lies at its corner.
MarkFrame placementFrame(const MarkView& view, const RECT& rectangle);
/// Where marks are moved and resized: the bitmap counts as it is and is always centred.
MarkFrame editingFrame(const MarkView& view, const RECT& rectangle);

/// Column of a new mark, the n-th (from 0): left to right along the top edge of the image.
int newMarkColumn(const MarkView& view, int n);
/// Surface position of that column at the image's top edge.
CPoint newMarkPosition(const MarkView& view, const RECT& rectangle, const MarkFrame& placement, int column);
/// Image position of a surface position, by the editing frame.
CPoint imagePosition(const MarkView& view, const MarkFrame& editing, CPoint surface);

}  // namespace qvr
