// CDC: the drawing surface of a host, with the fonts, pens and palettes that are selected into it.
//
// A host draws into memory with CRasterDC, or derives from CDC and forwards to its own toolkit. Two operations
// must be written, FillSolidRect and StretchDIBits; everything else works on top of them as it stands (lines and
// text are filled pixel runs), and may be overridden.
//
// A selected font, pen or palette is not owned: it must outlive its selection. One that is destroyed while it is
// selected is replaced by the surface's stock object.
#pragma once

#include <cstdint>
#include <memory>

#include "qvr/export.h"
#include "qvr/platform/CString.h"
#include "qvr/platform/types.h"

class CRasterDC;

/// What is selected into a surface. Copies are not allowed: a selection is by address.
class QVR_API CGdiObject {
public:
    CGdiObject();
    virtual ~CGdiObject();
    CGdiObject(const CGdiObject&) = delete;
    CGdiObject& operator=(const CGdiObject&) = delete;

    /// Expires when the object is destroyed; lets a surface notice that.
    std::weak_ptr<const void> lifetime() const noexcept { return m_lifetime; }

private:
    std::shared_ptr<const void> m_lifetime;
};

/// A font. The face is found when text is measured or drawn.
class QVR_API CFont : public CGdiObject {
public:
    /// @param height   cell height in pixels: ascent + descent; the cy of every extent. The absolute value counts
    /// @param weight   400 normal, 700 bold
    /// @param face     face name; null is empty. A metric-compatible face stands in for one that is not installed
    /// @param charset  stored only: text is UTF-8
    CFont(int height, int weight, const char* face, int charset);
    ~CFont() override;

    int GetHeight() const noexcept { return m_height; }
    int GetWeight() const noexcept { return m_weight; }
    const char* GetFace() const noexcept { return m_face; }
    int GetCharset() const noexcept { return m_charset; }

private:
    int m_height;
    int m_weight;
    CString m_face;
    int m_charset;
};

/// A pen. Lines are solid and one pixel wide whatever style and width say.
class QVR_API CPen : public CGdiObject {
public:
    CPen(int style, int width, COLORREF colour);
    ~CPen() override;

    int GetStyle() const noexcept { return m_style; }
    int GetWidth() const noexcept { return m_width; }
    COLORREF GetColour() const noexcept { return m_colour; }

private:
    int m_style;
    int m_width;
    COLORREF m_colour;
};

/// A logical palette of at most 256 colours (version 0x300).
class QVR_API CPalette : public CGdiObject {
public:
    /// The stock palette: no entries.
    CPalette();
    /// @param entries  `count` colours, copied; count is cut to 0 … 256, and null means no entries
    CPalette(const RGBQUAD* entries, int count);
    ~CPalette() override;

    int GetEntryCount() const noexcept { return m_count; }
    /// @return the colour; black for an index outside 0 … count - 1
    COLORREF GetEntry(int index) const noexcept;

private:
    int m_count = 0;
    RGBQUAD m_entries[256] = {};
};

class QVR_API CDC {
public:
    CDC();
    virtual ~CDC();
    CDC(const CDC&) = delete;
    CDC& operator=(const CDC&) = delete;

    /// Fills a rectangle (right and bottom outside it) with one colour; an empty, inverted or null one draws nothing.
    virtual void FillSolidRect(const RECT* rect, COLORREF colour) = 0;

    /// Copies and scales a rectangle of a bitmap onto the surface, colour-on-colour: destination column i of dw takes
    /// source column floor(i * sw / dw), columns from the left and rows from the top of both rectangles as seen.
    /// @param sx,sy  corner of the source rectangle; for a bottom-up bitmap sy counts from the bottom row
    /// @param bits   rows padded to 4 bytes, bottom row first unless the header's height is negative
    /// @param info   header and colour table
    /// @param rop    only SRCCOPY is drawn
    /// @return rows drawn; 0 when nothing could be drawn
    virtual int StretchDIBits(int dx, int dy, int dw, int dh, int sx, int sy, int sw, int sh,
                              const void* bits, const BITMAPINFO* info, std::uint32_t rop) = 0;

    /// Stores the mode; surfaces stretch colour-on-colour (3) whatever it says. @return the previous mode, at first 3
    virtual int SetStretchBltMode(int mode);
    /// Select returns the object selected before, at first a stock object of the surface, never null. Null selects
    /// the stock object.
    virtual CFont* SelectObject(CFont* font);
    virtual CPen* SelectObject(CPen* pen);
    virtual CPalette* SelectPalette(CPalette* palette, int background);
    /// @return the number of entries of the selected palette
    virtual unsigned RealizePalette();
    /// @return the previous mode, at first OPAQUE (2)
    virtual int SetBkMode(int mode);
    /// @return the previous colour, at first black
    virtual COLORREF SetTextColor(COLORREF colour);

    /// Extent of one line of text in the selected font.
    /// @param text    UTF-8, need not end in 0; an invalid byte counts as U+FFFD
    /// @param length  bytes, or -1 for all up to the ending 0
    /// @return advance width, rounded up, and cell height in pixels, at most 2^31 - 1; (0, 0) when no font is
    /// usable or `text` is null
    virtual CSize GetTextExtent(const char* text, int length);

    /// Draws one line of text in the selected font and the text colour over the background as it is, clipped to
    /// the rectangle. `text` is never written to. What reaches beyond the extent (a slanted end, a stacked mark) is
    /// drawn as far as the rectangle allows.
    /// @param flags  DT_CENTER and DT_VCENTER are followed, otherwise left and top; always a single line
    /// @return height of the text; 0 when no font is usable, a pointer is null or it cannot be drawn
    virtual int DrawText(const char* text, int length, const RECT* rect, unsigned flags);

    /// Sets the current position, at first (0, 0).
    virtual void MoveTo(int x, int y);
    /// Draws from the current position to (x, y), excluding that end point, which becomes the current position.
    virtual void LineTo(int x, int y);
    /// @return colour depth of the surface: 8, 16, 24 or 32; this class says 32
    virtual int GetBitsPerPixel() const;

    /// A black off-screen raster that suits this surface: its depth, 32 bits for one of 24. Text drawn on it is
    /// one-bit, not smoothed.
    /// @return null for a side below 1, too large a size or no memory
    virtual std::unique_ptr<CRasterDC> CreateCompatibleRaster(int width, int height);

protected:
    /// The selected objects, or the stock ones.
    const CFont& selectedFont() const noexcept;
    const CPen& selectedPen() const noexcept;
    const CPalette& selectedPalette() const noexcept;
    COLORREF textColour() const noexcept { return m_textColour; }

private:
    struct Selection;                        // raw pointers and lifetimes of what is selected
    std::unique_ptr<Selection> m_selection;  // null when memory was missing: the stock objects serve
    COLORREF m_textColour = 0;
    int m_stretchMode = COLORONCOLOR;
    int m_backgroundMode = OPAQUE;
    CPoint m_position;
};
