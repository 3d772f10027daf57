// textFace: one face of a font file, opened for shaping and for drawing.
//
// Threads  shaping reads only; the outline slot, which belongs to the face, is locked by drawGlyph.
#pragma once

#include <ft2build.h>
#include FT_FREETYPE_H
#include <hb.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

namespace qvr {

/// Positions in a line are counted in these parts of an em, whatever the face and the height.
inline constexpr int kUnitsPerEm = 65536;

/// How the edges of text are drawn: every pixel either full or empty, or by the part of it that is covered.
enum class Edges { oneBit, smoothed };

/// Coverage of pixels, 0 … 255, rows top-down without padding.
struct CoverageTile {
    std::uint8_t* pixels;
    int width;
    int height;
};

/// A glyph within a tile.
struct GlyphPlacement {
    std::uint32_t glyph;
    double emPixels;  // pixels per em
    double x, y;      // origin in pixels from the tile's top left, y downward
};

class TextFace {
public:
    /// @param index  which face of the file; the upper 16 bits choose a named instance
    /// @return null for a file that cannot be opened or holds no scalable outlines
    static std::shared_ptr<TextFace> open(const std::string& file, int index);
    ~TextFace();
    TextFace(const TextFace&) = delete;
    TextFace& operator=(const TextFace&) = delete;

    hb_font_t* shaper() const { return m_font.get(); }
    bool covers(char32_t character) const;

    /// Parts of the em above and below the baseline; their sum is above 0.
    double ascent() const { return m_ascent; }
    double descent() const { return m_descent; }
    /// How far a glyph may reach from its origin in any direction, in ems.
    double reach() const { return m_reach; }

    /// Adds a glyph to the tile.
    /// @return false when its outline cannot be had or drawn
    [[nodiscard]] bool drawGlyph(const GlyphPlacement& placement, Edges edges,
                                 const CoverageTile& tile) const;

private:
    struct Release {
        void operator()(hb_blob_t* blob) const { hb_blob_destroy(blob); }
        void operator()(hb_font_t* font) const { hb_font_destroy(font); }
        // A library of its own: faces then share nothing, and no order of destruction has to be kept.
        void operator()(FT_Library library) const { FT_Done_FreeType(library); }
    };

    TextFace() = default;
    bool readMetrics();

    std::unique_ptr<hb_blob_t, Release> m_file;
    std::unique_ptr<hb_font_t, Release> m_font;
    std::unique_ptr<FT_LibraryRec_, Release> m_library;
    FT_Face m_outlines = nullptr;  // closed with the library
    double m_ascent = 0;
    double m_descent = 0;
    double m_reach = 0;
    mutable std::mutex m_slot;
};

}  // namespace qvr
