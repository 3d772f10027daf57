// CRasterDC: a drawing surface over pixel memory, its own or the host's.
//
// Rows are top-down. 32 bits: bytes blue, green, red, 0 (RGB32 / XRGB8888 of common windowing toolkits); 24 bits:
// blue, green, red; 16 bits: 5-6-5, little-endian; 8 bits: grey, from a colour 0.299 red + 0.587 green + 0.114 blue
// (ITU-R BT.601). Everything is clipped to the raster, in 64-bit arithmetic.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "qvr/platform/CDC.h"

class QVR_API CRasterDC : public CDC {
public:
    /// A black surface that owns its pixels. A side below 1, another depth, a size above 2^30 - 1 pixels or missing
    /// memory give an empty surface of 0 x 0 pixels, on which nothing is drawn.
    /// @param bitsPerPixel  8, 16, 24 or 32
    CRasterDC(int width, int height, int bitsPerPixel = 32);
    /// A surface over the host's memory, which is not cleared and must outlive the surface.
    /// @param strideBytes  distance of two rows in bytes, at least width * bitsPerPixel / 8; otherwise as above
    CRasterDC(void* pixels, int width, int height, std::size_t strideBytes, int bitsPerPixel = 32);
    ~CRasterDC() override;

    int GetWidth() const noexcept;
    int GetHeight() const noexcept;
    int GetBitsPerPixel() const override;
    /// @return the colour as 0x00BBGGRR; black outside the raster
    COLORREF GetPixel(int x, int y) const;
    /// @return the bytes of row y, valid while the surface lives; null outside the raster
    const void* GetRow(int y) const;

    void FillSolidRect(const RECT* rect, COLORREF colour) override;
    int StretchDIBits(int dx, int dy, int dw, int dh, int sx, int sy, int sw, int sh, const void* bits,
                      const BITMAPINFO* info, std::uint32_t rop) override;
    int DrawText(const char* text, int length, const RECT* rect, unsigned flags) override;

    /// 1 (as constructed): edges of text are smoothed; 0: text is one-bit.
    void SetTextSmoothing(int on) noexcept;

private:
    struct Raster;
    std::unique_ptr<Raster> m_raster;
};
