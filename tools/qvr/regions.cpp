// Picture coordinates count from the top, the pixel toolkit from the bottom.
#include "regions.h"

#include <cstdint>

#include "parse.h"

namespace qvr::tool {

std::optional<Region> parseRegion(std::string_view text) {
    const auto values = parseInts(text, ',', 4);
    if (!values) return std::nullopt;
    const Region region{(*values)[0], (*values)[1], (*values)[2], (*values)[3]};
    if (region.left < 0 || region.top < 0 || region.width < 1 || region.height < 1) return std::nullopt;
    return region;
}

bool fitsInside(const Region& region, int width, int height) {
    return std::int64_t{region.left} + region.width <= width &&
           std::int64_t{region.top} + region.height <= height;
}

ToolkitCorners toolkitCorners(const Region& region, int pictureHeight) {
    const int above = pictureHeight - region.top;
    return {{region.left, above}, {region.left + region.width, above - region.height}};
}

}  // namespace qvr::tool
