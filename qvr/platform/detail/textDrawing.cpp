// Drawing a line of text: its coverage is made tile by tile, so that memory does not grow with the text, and painted
// outside every lock, since the surface may be a host's and may call back.
#include "qvr/platform/detail/textDrawing.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "qvr/platform/detail/memory.h"
#include "qvr/platform/detail/numbers.h"
#include "qvr/platform/detail/textDecoding.h"
#include "qvr/platform/detail/textLayout.h"

namespace qvr {

namespace {

constexpr int kTileWidth = 2048;
constexpr int kTileHeight = 512;
constexpr double kRoundingNoise = 1.0 / 1024;  // pixels

// Pixels relative to the top left of the line's extent.
struct Area {
    std::int64_t left, top, right, bottom;
    std::int64_t width() const { return right - left; }
    std::int64_t height() const { return bottom - top; }
};

// A laid out line at a height.
struct Line {
    LineLayout layout;
    int height;

    // Pixels per em at the height that is drawn.
    double emPixels(double cell) const {
        const TextFace& face = *layout.faces.front();
        return cell / (face.ascent() + face.descent());
    }
    CSize extent() const {
        const double width = static_cast<double>(layout.width) / kUnitsPerEm * emPixels(height);
        return {toInt(std::ceil(width - kRoundingNoise)), height};
    }
};

std::optional<Line> layOut(const CFont& font, const char* text, int length) {
    const int height = saturated(std::abs(std::int64_t{font.GetHeight()}));
    if (!text || height == 0) return std::nullopt;
    const auto search = facesFor(font.GetFace(), font.GetWeight());
    if (!search || !search->primary()) return std::nullopt;
    const std::string_view bytes =
        length < 0 ? std::string_view(text) : std::string_view(text, static_cast<std::size_t>(length));
    return Line{layOutLine(decodedLine(bytes), *search), height};
}

// The glyphs that may touch the area, each place once however often the text repeats it.
std::vector<GlyphPlacement> visibleGlyphs(const Line& line, double cell, Edges edges, const Area& area,
                                          std::vector<std::uint32_t>& faces) {
    const double em = line.emPixels(cell);
    // Not a whole row: ascender and descender then end exactly on the edges of the cell.
    const double baseline = em * line.layout.faces.front()->ascent();
    std::vector<std::pair<std::uint32_t, GlyphPlacement>> found;
    for (const PlacedGlyph& glyph : line.layout.glyphs) {
        const double reach = line.layout.faces[glyph.face]->reach() * em;
        const double x = static_cast<double>(glyph.x) / kUnitsPerEm * em - static_cast<double>(area.left);
        const double y =
            baseline - static_cast<double>(glyph.y) / kUnitsPerEm * em - static_cast<double>(area.top);
        if (x + reach < 0 || x - reach > static_cast<double>(area.width())) continue;
        if (y + reach < 0 || y - reach > static_cast<double>(area.height())) continue;
        // One-bit letters start on whole columns, so that the same letter always looks the same.
        const double column = edges == Edges::oneBit ? std::floor(x + 0.5) : x;
        found.push_back({glyph.face, {glyph.glyph, em, column, y}});
    }
    const auto key = [](const auto& entry) {
        return std::tuple(entry.first, entry.second.glyph, entry.second.x, entry.second.y);
    };
    std::sort(found.begin(), found.end(), [key](const auto& a, const auto& b) { return key(a) < key(b); });
    found.erase(std::unique(found.begin(), found.end(),
                            [key](const auto& a, const auto& b) { return key(a) == key(b); }),
                found.end());
    std::vector<GlyphPlacement> glyphs;
    for (const auto& [face, glyph] : found) {
        faces.push_back(face);
        glyphs.push_back(glyph);
    }
    return glyphs;
}

// Coverage of an area no larger than a tile, for a cell of at most kLargestDrawnHeight.
bool cover(const Line& line, double cell, Edges edges, const Area& area, std::uint8_t* coverage) {
    const CoverageTile tile{coverage, static_cast<int>(area.width()), static_cast<int>(area.height())};
    std::vector<std::uint32_t> faces;
    const std::vector<GlyphPlacement> glyphs = visibleGlyphs(line, cell, edges, area, faces);
    for (std::size_t i = 0; i < glyphs.size(); ++i) {
        if (!line.layout.faces[faces[i]]->drawGlyph(glyphs[i], edges, tile)) return false;
    }
    return true;
}

std::int64_t dividedDown(std::int64_t value, std::int64_t by) {
    return value >= 0 ? value / by : -((-value + by - 1) / by);
}

// Coverage of an area no larger than a tile, at any height.
bool coverMagnified(const Line& line, Edges edges, const Area& area, std::uint8_t* coverage) {
    if (line.height <= kLargestDrawnHeight) return cover(line, line.height, edges, area, coverage);
    const auto drawn = [&line](std::int64_t position) {
        return dividedDown(position * kLargestDrawnHeight, line.height);
    };
    const Area small{drawn(area.left), drawn(area.top), drawn(area.right - 1) + 1,
                     drawn(area.bottom - 1) + 1};
    const Bytes pixels = makeBytes(static_cast<std::size_t>(small.width() * small.height()));
    if (!pixels || !cover(line, kLargestDrawnHeight, edges, small, pixels.get())) return false;
    for (std::int64_t y = area.top; y < area.bottom; ++y) {
        const std::uint8_t* row = pixels.get() + (drawn(y) - small.top) * small.width();
        for (std::int64_t x = area.left; x < area.right; ++x) *coverage++ = row[drawn(x) - small.left];
    }
    return true;
}

// Where the line stands on the surface, and the part of it to draw.
struct Plan {
    std::int64_t x, y;
    Area area;
};

Plan planned(CSize extent, const TextPlacement& placement) {
    const RECT& rect = placement.rect;
    const RECT& surface = placement.surface;
    const auto centred = [](std::int64_t low, std::int64_t high, std::int64_t side) {
        return low + (high - low - side) / 2;
    };
    const std::int64_t x =
        (placement.flags & DT_CENTER) ? centred(rect.left, rect.right, extent.cx) : rect.left;
    const std::int64_t y =
        (placement.flags & DT_VCENTER) ? centred(rect.top, rect.bottom, extent.cy) : rect.top;
    // Letters may show a cell's height beyond the extent on every side.
    const std::int64_t around = extent.cy;
    return {x,
            y,
            {std::max<std::int64_t>(std::max(rect.left, surface.left) - x, -around),
             std::max<std::int64_t>(std::max(rect.top, surface.top) - y, -around),
             std::min<std::int64_t>(std::min(rect.right, surface.right) - x, extent.cx + around),
             std::min<std::int64_t>(std::min(rect.bottom, surface.bottom) - y, extent.cy + around)}};
}

void paintTile(const Plan& plan, const Area& tile, const std::uint8_t* coverage, const PaintRow& paint) {
    const auto width = static_cast<std::size_t>(tile.width());
    for (std::int64_t y = tile.top; y < tile.bottom; ++y, coverage += width) {
        if (std::all_of(coverage, coverage + width, [](std::uint8_t covered) { return covered == 0; }))
            continue;
        paint({saturated(plan.x + tile.left), saturated(plan.y + y), coverage, static_cast<int>(width)});
    }
}

}  // namespace

CSize textExtent(const CFont& font, const char* text, int length) {
    const auto line = layOut(font, text, length);
    return line ? line->extent() : CSize{};
}

int drawText(const CFont& font, const char* text, int length, const TextPlacement& placement, Edges edges,
             const PaintRow& paint) {
    const auto line = layOut(font, text, length);
    if (!line) return 0;
    const Plan plan = planned(line->extent(), placement);
    const Area& all = plan.area;
    if (all.width() <= 0 || all.height() <= 0) return line->height;
    if (!pixelCount(all.width(), all.height())) return 0;

    const std::int64_t tileWidth = std::min<std::int64_t>(all.width(), kTileWidth);
    const std::int64_t tileHeight = std::min<std::int64_t>(all.height(), kTileHeight);
    const auto tileSize = static_cast<std::size_t>(tileWidth * tileHeight);
    const Bytes coverage = makeBytes(tileSize);
    if (!coverage) return 0;
    for (std::int64_t top = all.top; top < all.bottom; top += tileHeight) {
        for (std::int64_t left = all.left; left < all.right; left += tileWidth) {
            const Area tile{left, top, std::min(left + tileWidth, all.right),
                            std::min(top + tileHeight, all.bottom)};
            std::memset(coverage.get(), 0, tileSize);
            if (!coverMagnified(*line, edges, tile, coverage.get())) return 0;
            paintTile(plan, tile, coverage.get(), paint);
        }
    }
    return line->height;
}

}  // namespace qvr
