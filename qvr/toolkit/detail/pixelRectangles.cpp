// Rectangular parts of a buffer, whole rows at a time.
#include "qvr/toolkit/detail/pixelRectangles.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <functional>

#include "qvr/platform/detail/streamCopy.h"

namespace qvr {

namespace {

// Whether no row overlaps its own target: the distance between the two changes evenly from row to row.
bool rowsApart(const std::uint16_t* source, const std::uint16_t* output, const PixelArea& area,
               std::int64_t stride, std::int64_t outputStride) {
    const auto address = [](const std::uint16_t* value) {
        return static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(value) / sizeof *value);
    };
    const std::int64_t first = address(output) - address(source);
    const std::int64_t last = first + (area.height - 1) * (outputStride - stride);
    return std::min(first, last) >= area.width || std::max(first, last) <= -area.width;
}

void fillRows(std::uint16_t* first, std::int64_t stride, std::int64_t count, std::int64_t rows,
              std::uint16_t value) {
    // The two values that masks are filled with are made of one byte twice.
    if (value == 0 || value == 65535) {
        constexpr std::ptrdiff_t kSize = sizeof *first;
        streamFill(first, stride * kSize, static_cast<std::size_t>(count) * sizeof *first, rows,
                   static_cast<std::uint8_t>(value));
        return;
    }
    for (std::int64_t row = 0; row < rows; ++row) std::fill_n(first + row * stride, count, value);
}

}  // namespace

void copyArea(const std::uint16_t* pixels, std::int64_t stride, const PixelArea& area, std::uint16_t* output,
              std::int64_t outputStride) {
    if (area.width <= 0 || area.height <= 0) return;  // either alone may be huge
    const std::uint16_t* const source = pixels + area.bottom * stride + area.left;
    const std::size_t bytes = static_cast<std::size_t>(area.width) * sizeof *output;
    // Toward lower addresses from the first row on, toward higher ones from the last, so that no row is overwritten
    // before it has been copied.
    const std::less_equal<const std::uint16_t*> notAfter;
    const bool upward = notAfter(output, source) || notAfter(source + area.height * stride, output);
    const std::int64_t first = upward ? 0 : area.height - 1;
    const std::int64_t step = upward ? 1 : -1;
    // Large, and no row in its own target: past the caches, which spares reading what is overwritten.
    const std::uint16_t* const firstRow = source + first * stride;
    std::uint16_t* const firstTarget = output + first * outputStride;
    if (bytes * static_cast<std::size_t>(area.height) >= kStreamed &&
        rowsApart(source, output, area, stride, outputStride)) {
        constexpr std::ptrdiff_t kSize = sizeof *output;
        streamCopy(
            {firstRow, step * stride * kSize, firstTarget, step * outputStride * kSize, bytes, area.height});
        return;
    }
    for (std::int64_t row = 0; row < area.height; ++row)
        std::memmove(firstTarget + row * step * outputStride, firstRow + row * step * stride, bytes);
}

void fillOutside(std::uint16_t* pixels, std::int64_t width, std::int64_t height, const PixelArea& area,
                 std::uint16_t value) {
    // Before the first kept row, after the last, and from the end of one to the start of the next in one piece each.
    const std::int64_t firstKept = area.bottom * width + area.left;
    const std::int64_t gap = width - area.width;
    const std::int64_t gaps = std::max<std::int64_t>(area.height - 1, 0);
    const std::int64_t behindKept = firstKept + gaps * width + area.width;
    const bool none = area.width <= 0 || area.height <= 0;
    fillRows(pixels, 0, none ? width * height : firstKept, 1, value);
    if (none) return;
    fillRows(pixels + firstKept + area.width, width, gap, gaps, value);
    fillRows(pixels + behindKept, 0, width * height - behindKept, 1, value);
}

}  // namespace qvr
