// Regions as they are typed, and the one place where they become toolkit rectangles.
#pragma once

#include <optional>
#include <string_view>

#include <qvr/platform/types.h>

namespace qvr::tool {

/// A region in picture coordinates: pixels, y downward, the top row being row 0.
struct Region {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    friend bool operator==(const Region&, const Region&) = default;
};

/// The same region as two corners of the pixel toolkit, whose rows grow upward: `first` is the left column and the
/// row above the top row, `second` the column behind the right one and the bottom row.
struct ToolkitCorners {
    CPoint first;
    CPoint second;
};

/// Reads "L,T,W,H". @return nothing unless there are four integers, the corner not negative and both sides above 0
std::optional<Region> parseRegion(std::string_view text);
/// True when the region lies in a picture of that size.
bool fitsInside(const Region& region, int width, int height);
/// @param region  must fit inside a picture of `pictureHeight` rows
ToolkitCorners toolkitCorners(const Region& region, int pictureHeight);

}  // namespace qvr::tool
