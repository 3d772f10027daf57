// Where a bitmap lies that is drawn at an offset instead of centred: four rules, by how it meets the rectangle.
#pragma once

#include <optional>

#include "qvr/platform/types.h"

namespace qvr {

/// Destination in surface pixels and source in bitmap pixels; sourceY counts from the bitmap's bottom row.
struct FreePlacement {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    int sourceX = 0;
    int sourceY = 0;
    int sourceWidth = 0;
    int sourceHeight = 0;
    friend bool operator==(const FreePlacement&, const FreePlacement&) = default;
};

/// Places a bitmap of width * height pixels, scaled as fitted drawing does, with its top left corner at `offset` from the
/// rectangle's, cut at the rectangle's edges. @return nothing when no part of it would be seen, and for an empty,
/// inverted or too large rectangle
std::optional<FreePlacement> placeFree(CPoint offset, const RECT& rectangle, int width, int height);

}  // namespace qvr
