// Rectangular parts of a buffer, whole rows at a time.
#include "qvr/toolkit/detail/pixelRectangles.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "qvr/platform/detail/streamCopy.h"

namespace qvr {

namespace {

// How far in memory each row lies before its target, in values: it changes evenly from row to row.
class RowDistances {
public:
    RowDistances(const std::uint16_t* source, std::int64_t stride, const std::uint16_t* output,
                 std::int64_t outputStride)
        : m_first(address(output) - address(source)), m_step(outputStride - stride) {}
    std::int64_t of(std::int64_t row) const { return m_first + row * m_step; }
    // Whether no row overlaps its own target, and all go the same way.
    bool rowsApart(const PixelArea& area) const {
        const auto [least, most] = std::minmax({of(0), of(area.height - 1)});
        return least >= area.width || most <= -area.width;
    }

private:
    static std::int64_t address(const std::uint16_t* value) {
        return static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(value) / sizeof *value);
    }

    std::int64_t m_first, m_step;
};

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
    const RowDistances distances(source, stride, output, outputStride);
    // Large, and no row in its own target: past the caches, which spares reading what is overwritten.
    if (bytes * static_cast<std::size_t>(area.height) >= kStreamed && distances.rowsApart(area)) {
        constexpr std::ptrdiff_t kSize = sizeof *output;
        const bool upward = distances.of(0) < 0;
        const std::int64_t first = upward ? 0 : area.height - 1;
        const std::int64_t step = upward ? 1 : -1;
        streamCopy({source + first * stride, step * stride * kSize, output + first * outputStride,
                    step * outputStride * kSize, bytes, area.height});
        return;
    }
    // Rows that go toward lower addresses from the first on, those that go toward higher ones from the last, so that none
    // is overwritten before it has been copied. The two kinds do not touch each other: targets do not overlap and are in
    // the order of their rows, so that one kind's lie before the first row of the other, or behind its last.
    const auto copyRow = [&](std::int64_t row) {
        std::memmove(output + row * outputStride, source + row * stride, bytes);
    };
    for (std::int64_t row = 0; row < area.height; ++row)
        if (distances.of(row) <= 0) copyRow(row);
    for (std::int64_t row = area.height - 1; row >= 0; --row)
        if (distances.of(row) > 0) copyRow(row);
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
