// textLayout: characters to placed glyphs, on one line, without regard to its height in pixels.
//
// Way of a line: directions (FriBidi) -> faces, cluster by cluster -> runs of one direction, script and face ->
// visual order -> shaping with kerning (HarfBuzz).
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "qvr/platform/detail/textFaces.h"

namespace qvr {

/// Positions in kUnitsPerEm, y upward from the baseline.
struct PlacedGlyph {
    std::uint32_t face;  // index into LineLayout::faces
    std::uint32_t glyph;
    std::int64_t x;
    std::int32_t y;
    friend auto operator<=>(const PlacedGlyph&, const PlacedGlyph&) = default;
};

struct LineLayout {
    std::vector<std::shared_ptr<TextFace>> faces;
    std::vector<PlacedGlyph> glyphs;  // from left to right as seen
    std::int64_t width = 0;           // sum of the advances
};

/// @param search  with a primary face
[[nodiscard]] LineLayout layOutLine(std::span<const char32_t> line, FaceSearch& search);

}  // namespace qvr
