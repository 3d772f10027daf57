// Plain types of the surface and of bitmaps, as a host's framework knows them.
//
// Coordinates are signed 32-bit; on a surface y grows downward. A rectangle's right and bottom lie outside it.
#pragma once

#include <cstdint>

struct CPoint {
    std::int32_t x = 0;
    std::int32_t y = 0;
    friend bool operator==(const CPoint&, const CPoint&) = default;
};

struct CSize {
    std::int32_t cx = 0;
    std::int32_t cy = 0;
    friend bool operator==(const CSize&, const CSize&) = default;
};

struct RECT {
    std::int32_t left = 0;
    std::int32_t top = 0;
    std::int32_t right = 0;
    std::int32_t bottom = 0;
    friend bool operator==(const RECT&, const RECT&) = default;
};

/// Copies a rectangle. @return 1; 0 when either pointer is null, with `destination` untouched
inline int CopyRect(RECT* destination, const RECT* source) {
    if (!destination || !source) return 0;
    *destination = *source;
    return 1;
}

/// A colour as 0x00BBGGRR.
using COLORREF = std::uint32_t;

/// Header of a device-independent bitmap; 40 bytes, stored little-endian in bitmap files.
struct BITMAPINFOHEADER {
    std::uint32_t biSize = 0;    ///< 40
    std::int32_t biWidth = 0;    ///< pixels per row
    std::int32_t biHeight = 0;   ///< rows; positive: the first row in memory is the bottom row of the picture
    std::uint16_t biPlanes = 0;  ///< 1
    std::uint16_t biBitCount = 0;  ///< bits per pixel: 1, 4, 8, 16, 24 or 32
    std::uint32_t biCompression = 0;
    std::uint32_t biSizeImage = 0;
    std::int32_t biXPelsPerMeter = 0;
    std::int32_t biYPelsPerMeter = 0;
    std::uint32_t biClrUsed = 0;
    std::uint32_t biClrImportant = 0;
};
static_assert(sizeof(BITMAPINFOHEADER) == 40);

struct RGBQUAD {
    std::uint8_t rgbBlue = 0;
    std::uint8_t rgbGreen = 0;
    std::uint8_t rgbRed = 0;
    std::uint8_t rgbReserved = 0;
};
static_assert(sizeof(RGBQUAD) == 4);

/// A header with its colour table, which continues behind the first entry.
struct BITMAPINFO {
    BITMAPINFOHEADER bmiHeader;
    RGBQUAD bmiColors[1];
};

inline constexpr std::uint32_t SRCCOPY =
    0x00CC0020;                            ///< raster operation: the source replaces the destination
inline constexpr int COLORONCOLOR = 3;     ///< stretch mode: dropped rows and columns are not blended
inline constexpr int TRANSPARENT = 1;      ///< background mode: text leaves the background as it is
inline constexpr int OPAQUE = 2;           ///< background mode; text is drawn transparent all the same
inline constexpr int PS_SOLID = 0;         ///< pen style
inline constexpr int DEFAULT_CHARSET = 1;  ///< font character set
inline constexpr int FW_NORMAL = 400;      ///< font weight
inline constexpr unsigned DT_CENTER = 0x1;
inline constexpr unsigned DT_VCENTER = 0x4;
inline constexpr unsigned DT_SINGLELINE = 0x20;
inline constexpr unsigned DT_MODIFYSTRING = 0x10000;
