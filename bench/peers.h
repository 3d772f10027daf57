// peers: the same work with other libraries, on one thread. Every function prepares its data and gives back the work to
// be measured; empty where that library has nothing of the kind, and all of them where none is installed.
#pragma once

#include <cstdint>

#include "bench/bench.h"

namespace bench {

bool peersBuilt();

/// width * height values of 16 bits, which must outlive the work; work in place changes them.
struct Picture {
    std::uint16_t* pixels = nullptr;
    int width = 0;
    int height = 0;
};

struct Area {
    int x = 0, y = 0, width = 0, height = 0;
};

struct Window {
    int width = 0;
    int center = 0;
    bool sigmoid = false;  ///< steepness 4, centre in the middle
};

/// Block means (area interpolation) of the whole picture to width * height grey levels; the picture's own size is 1:1.
Work opencvDisplay(const Picture& picture, int width, int height, const Window& window);
Work dcmtkDisplay(const Picture& picture, int width, int height, const Window& window);
Work opencvWindow(const Picture& picture);
Work dcmtkWindow(const Picture& picture);
Work opencvTurn(const Picture& picture);
Work dcmtkTurn(const Picture& picture);
Work opencvMirror(const Picture& picture, bool leftToRight);
Work dcmtkMirror(const Picture& picture, bool leftToRight);
Work opencvInvert(const Picture& picture);
Work opencvCut(const Picture& picture, const Area& area);
Work dcmtkCut(const Picture& picture, const Area& area);
/// Keeps an area, moved to the middle, and fills the rest.
Work opencvMask(const Picture& picture, const Area& area);
/// An 8-bit picture reduced by area interpolation.
Work opencvReduce(const std::uint8_t* bytes, int width, int height, int newWidth, int newHeight);

}  // namespace bench
