// What a bitmap owns, and the library's own door to it.
#pragma once

#include <algorithm>
#include <cstddef>

#include "qvr/image/CDib.h"
#include "qvr/image/detail/bitmapRows.h"
#include "qvr/platform/detail/memory.h"
#include "qvr/platform/detail/numbers.h"

struct CDib::Blocks {
    qvr::Bytes header;  // info header and colour table
    std::size_t headerSize = 0;
    qvr::Bytes pixels;
    std::size_t pixelsSize = 0;
};

namespace qvr {

/// Entries that are read behind a header.
inline std::size_t coloursOf(const BITMAPINFOHEADER& header) {
    if (header.biBitCount > 8) return 0;
    const std::size_t all = std::size_t{1} << header.biBitCount;
    return header.biClrUsed == 0 ? all : std::min<std::size_t>(header.biClrUsed, all);
}

struct BitmapAccess {
    static BitmapRows rows(const CDib* bitmap) noexcept;
    // Grey colours, palette and cleared storage for a bitmap that has its header only.
    static bool prepareGrey(CDib& bitmap);
    static void realizePalette(CDib& bitmap, CDC* surface);
    // A copy of a complete bitmap, pixels, colours and palette; null for another one. Throws when there is no memory.
    static std::unique_ptr<CDib> clone(const CDib& bitmap);
};

}  // namespace qvr
