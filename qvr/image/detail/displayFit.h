// Where a picture lies: the size of the display bitmap, and its place in a rectangle of the surface.
//
// Pure arithmetic over values; every sum and product of host numbers is taken in 64 bits.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "qvr/platform/types.h"

namespace qvr {

/// Which part of an image the display bitmap shows, and how large.
struct DisplayView {
    int xOffset = 0;      ///< first source column
    int yOffset = 0;      ///< first source row, counted from the bottom of the picture
    float xRatio = 0.0f;  ///< display pixels per source pixel
    float yRatio = 0.0f;

    constexpr bool fitted() const { return xRatio == 0.0f && yRatio == 0.0f; }
};

struct DisplayFit {
    CSize size;  ///< of the bitmap, both sides at least 1
    float xRatio = 0.0f;
    float yRatio = 0.0f;
};

/// Fits an image of width * height pixels into a rectangle, keeping its shape.
/// @return nothing for an image without pixels, an empty or inverted rectangle, or a side that would be 0
std::optional<DisplayFit> fitImage(int width, int height, const RECT& rectangle);

/// The bitmap size from stored ratios, cut to the rectangle.
/// @return nothing where fitImage gives nothing, and for a ratio that is not finite and above 0
std::optional<CSize> sizeFromRatios(int width, int height, float xRatio, float yRatio, const RECT& rectangle);

/// How a bitmap meets a rectangle.
enum class FitKind {
    wide,     ///< scaled to the rectangle's width
    tall,     ///< scaled to its height
    filling,  ///< scaled to both
    smaller   ///< drawn as it is
};

/// Sides of a rectangle, each 1 ... INT_MAX.
struct Sides {
    std::int64_t width = 0;
    std::int64_t height = 0;
};

/// @return nothing for an empty, inverted or too large rectangle
std::optional<Sides> sidesOf(const RECT& rectangle);
/// Whether anything can be shown in it: that of a minimised window is empty.
inline bool hasRoom(const RECT* rectangle) {
    return rectangle && sidesOf(*rectangle);
}
FitKind fitKind(const Sides& rectangle, int width, int height);
/// Size of a bitmap of width * height pixels as drawn.
Sides drawnSize(FitKind kind, const Sides& rectangle, int width, int height);

/// Where a bitmap is drawn, and the bands beside it that are filled black before.
struct Placement {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;
    std::array<RECT, 4> fills{};
    int fillCount = 0;
};

/// Places a bitmap of width * height pixels into a rectangle: scaled to fill it one way when it is larger, centred as
/// it is when it is smaller. @return nothing for an empty, inverted or too large rectangle or an empty bitmap
std::optional<Placement> placeFitted(const RECT& rectangle, int width, int height);

}  // namespace qvr
