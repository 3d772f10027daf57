// Opening a face and drawing its glyphs. Outlines are read in font units and scaled here without hinting, so that
// sizes need not be whole pixels, and drawn straight into the tile: nothing is larger than the tile.
#include "qvr/platform/detail/textFace.h"

#include <hb-ot.h>

#include FT_OUTLINE_H

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

#include "qvr/platform/detail/memory.h"
#include "qvr/platform/detail/numbers.h"

namespace qvr {

namespace {

// The rasteriser counts in 32 bits; whatever is larger than this (1/64 pixel) is refused.
constexpr FT_Pos kLargestCoordinate = FT_Pos{1} << 24;

struct PixelBox {
    int left, top, right, bottom;
};

// Scales and places an outline: y upward, in 1/64 pixel. False when it becomes too large.
bool place(FT_Outline& outline, double scale, double x, double y) {
    const auto nearest = [](double position) { return toInt64(std::floor(position + 0.5)); };
    for (FT_Vector& point :
         std::span(outline.points, static_cast<std::size_t>(std::max<short>(outline.n_points, 0)))) {
        point.x = nearest(static_cast<double>(point.x) * scale + x);
        point.y = nearest(static_cast<double>(point.y) * scale + y);
        const auto [low, high] = std::minmax(point.x, point.y);
        if (low < -kLargestCoordinate || high > kLargestCoordinate) return false;
    }
    return true;
}

// The pixels of the tile that the outline may touch, rows top-down.
PixelBox touchedPixels(const FT_Outline& outline, const CoverageTile& tile) {
    FT_BBox box;
    FT_Outline_Get_CBox(&outline, &box);
    const auto pixel = [](FT_Pos position) { return static_cast<int>(position >> 6); };
    return {std::max(pixel(box.xMin) - 1, 0), std::max(tile.height - pixel(box.yMax) - 2, 0),
            std::min(pixel(box.xMax) + 2, tile.width),
            std::min(tile.height - pixel(box.yMin) + 1, tile.height)};
}

void addRow(std::uint8_t* to, const std::uint8_t* row, int width, Edges edges) {
    for (int i = 0; i < width; ++i) {
        const unsigned covered = edges == Edges::smoothed              ? row[i]
                                 : (row[i / 8] << (i % 8) & 0x80) != 0 ? 255u
                                                                       : 0u;
        // Parts of one pixel that two glyphs cover add up, so that joined letters show no seam.
        to[i] = static_cast<std::uint8_t>(std::min(255u, to[i] + covered));
    }
}

}  // namespace

std::shared_ptr<TextFace> TextFace::open(const std::string& file, int index) {
    std::shared_ptr<TextFace> face(new TextFace);
    face->m_file.reset(hb_blob_create_from_file(file.c_str()));
    unsigned length = 0;
    const char* data = hb_blob_get_data(face->m_file.get(), &length);
    if (!data || length == 0) return nullptr;

    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library) != 0) return nullptr;
    face->m_library.reset(library);
    const auto* bytes = reinterpret_cast<const FT_Byte*>(data);
    if (FT_New_Memory_Face(library, bytes, static_cast<FT_Long>(length), index, &face->m_outlines) != 0)
        return nullptr;
    if (!FT_IS_SCALABLE(face->m_outlines) || !FT_IS_SFNT(face->m_outlines)) return nullptr;

    hb_face_t* const tables = hb_face_create(face->m_file.get(), static_cast<unsigned>(index) & 0xFFFF);
    face->m_font.reset(hb_font_create(tables));
    hb_face_destroy(tables);
    const unsigned instance = static_cast<unsigned>(index) >> 16;
    if (instance > 0) hb_font_set_var_named_instance(face->m_font.get(), instance - 1);
    hb_font_set_scale(face->m_font.get(), kUnitsPerEm, kUnitsPerEm);
    hb_font_make_immutable(face->m_font.get());
    if (!face->readMetrics()) return nullptr;
    return face;
}

TextFace::~TextFace() = default;

bool TextFace::readMetrics() {
    const double em = m_outlines->units_per_EM;
    if (em <= 0) return false;
    const FT_BBox& box = m_outlines->bbox;
    const bool told = m_outlines->ascender - m_outlines->descender > 0;
    m_ascent = (told ? static_cast<double>(m_outlines->ascender) : static_cast<double>(box.yMax)) / em;
    m_descent = -(told ? static_cast<double>(m_outlines->descender) : static_cast<double>(box.yMin)) / em;
    // One em more than the face says: some faces leave letters out of their own box.
    const FT_Pos farthest = std::max({box.xMax, -box.xMin, box.yMax, -box.yMin});
    m_reach = static_cast<double>(farthest) / em + 1;
    return m_ascent + m_descent > 0;
}

bool TextFace::covers(char32_t character) const {
    hb_codepoint_t glyph = 0;
    return hb_font_get_nominal_glyph(m_font.get(), character, &glyph) != 0;
}

bool TextFace::drawGlyph(const GlyphPlacement& placement, Edges edges, const CoverageTile& tile) const {
    const std::lock_guard lock(m_slot);
    if (FT_Load_Glyph(m_outlines, placement.glyph, FT_LOAD_NO_SCALE) != 0) return false;
    if (m_outlines->glyph->format != FT_GLYPH_FORMAT_OUTLINE) return false;
    FT_Outline& outline = m_outlines->glyph->outline;
    const double scale = placement.emPixels * 64 / m_outlines->units_per_EM;
    if (!place(outline, scale, 64 * placement.x, 64 * (tile.height - placement.y))) return false;

    const PixelBox box = touchedPixels(outline, tile);
    const int width = box.right - box.left;
    const int height = box.bottom - box.top;
    if (width <= 0 || height <= 0) return true;
    const bool smoothed = edges == Edges::smoothed;
    const int pitch = smoothed ? width : (width + 7) / 8;
    const Bytes drawn = makeBytes(static_cast<std::size_t>(pitch) * static_cast<std::size_t>(height));
    if (!drawn) return false;

    FT_Bitmap bitmap = {};
    bitmap.rows = static_cast<unsigned>(height);
    bitmap.width = static_cast<unsigned>(width);
    bitmap.pitch = pitch;
    bitmap.buffer = drawn.get();
    bitmap.num_grays = 256;
    bitmap.pixel_mode = smoothed ? FT_PIXEL_MODE_GRAY : FT_PIXEL_MODE_MONO;
    // Strokes thinner than a pixel stay whole.
    outline.flags = (outline.flags & ~FT_OUTLINE_IGNORE_DROPOUTS) | FT_OUTLINE_SMART_DROPOUTS;
    FT_Outline_Translate(&outline, FT_Pos{-64} * box.left, FT_Pos{-64} * (tile.height - box.bottom));
    if (FT_Outline_Get_Bitmap(m_library.get(), &outline, &bitmap) != 0) return false;

    for (int y = 0; y < height; ++y) {
        const std::size_t to = static_cast<std::size_t>(box.top + y) * static_cast<std::size_t>(tile.width);
        addRow(tile.pixels + to + box.left,
               drawn.get() + static_cast<std::size_t>(y) * static_cast<std::size_t>(pitch), width, edges);
    }
    return true;
}

}  // namespace qvr
