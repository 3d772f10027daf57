// The collimated area: the picture without its dark border.
//
// A shutter or the edge of the collimator shows as rows and columns at a border of the picture that are nearly black
// all along. "Nearly black" is within 1/32 of the way from the darkest values (0.1 % of the pixels lie below) to the
// bright ones (99 %); a row belongs to the border when at least 92 % of it are, so that a side marker burned into the
// border does not hold it. Rows and columns are taken off in turns, since a dark column hides in a row and the other
// way round.
#pragma once

#include <optional>

#include "adoption.h"
#include "regions.h"

namespace qvr::tool {

/// @return the area inside the dark border, the whole picture when there is no border; nothing when less than 51 x 51
///         pixels would remain, which no automatic window is made from
std::optional<Region> findCollimation(const AdoptedImage& image);

/// The part of the picture outside the area, 0 … 1.
double borderShare(const AdoptedImage& image, const Region& area);

}  // namespace qvr::tool
