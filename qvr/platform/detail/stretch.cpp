// Stretching. Everything is clipped before a loop starts, the columns are mapped once, and a source row that is
// repeated is copied from the destination row above.
#include "qvr/platform/detail/stretch.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "qvr/platform/detail/clones.h"
#include "qvr/platform/detail/memory.h"

namespace qvr {

namespace {

// One direction: `length` destination positions from `start` take their sources from `extent` positions from `origin`.
struct Axis {
    std::int64_t start, length;
    std::int64_t origin, extent;

    std::int64_t source(std::int64_t i) const { return origin + i * extent / length; }
};

struct Positions {
    std::int64_t first, end;
    bool isEmpty() const { return first >= end; }
};

// Coordinates are 32-bit and sides positive, so that no product reaches 2^63.
constexpr std::int64_t dividedUp(std::int64_t value, std::int64_t by) {
    return (value + by - 1) / by;
}

// The positions that lie on the surface and take their source from inside the bitmap.
Positions visiblePositions(const Axis& axis, std::int64_t surfaceSide, std::int64_t bitmapSide) {
    const std::int64_t skipped = std::max<std::int64_t>(0, -axis.origin);
    const std::int64_t available = std::max<std::int64_t>(0, bitmapSide - axis.origin);
    return {
        std::max({std::int64_t{0}, -axis.start, dividedUp(skipped * axis.length, axis.extent)}),
        std::min({axis.length, surfaceSide - axis.start, dividedUp(available * axis.length, axis.extent)})};
}

// What every row of one call shares.
struct RowJob {
    const BitmapPixels& bitmap;
    const std::uint32_t* columns;                // source column of each destination column
    std::size_t count;                           // of destination columns
    bool adjacent;                               // the source columns follow each other
    std::uint8_t* values;                        // room for a row of an 8-bit bitmap
    bool grey;                                   // an 8-bit bitmap whose colours are 256 greys, in order
    std::array<std::uint32_t, 256> pixels = {};  // destination pixel of each value of an 8-bit bitmap
};

template <class Format>
void convertIndexedRow(const RowJob& job, const std::uint8_t* values, std::uint8_t* to) {
    for (std::size_t i = 0; i < job.count; ++i) Format::store(to + i * Format::kBytes, job.pixels[values[i]]);
}

// Grey v of a grey table on a surface of 32 bits is v * 0x010101: computed, a row takes half the time of 256
// entries looked up.
QVR_CLONES void convertGreyRow(const std::uint8_t* __restrict values, std::size_t count,
                               std::uint8_t* __restrict to) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t pixel = values[i] * 0x010101U;
        std::memcpy(to + 4 * i, &pixel, sizeof pixel);
    }
}

// The values of a row in the order of the destination columns.
const std::uint8_t* pickedValues(const RowJob& job, const std::uint8_t* source) {
    if (job.adjacent) return source + job.columns[0];
    for (std::size_t i = 0; i < job.count; ++i) job.values[i] = source[job.columns[i]];
    return job.values;
}

template <class Format>
void convertRow(const RowJob& job, const std::uint8_t* source, std::uint8_t* to) {
    for (std::size_t i = 0; i < job.count; ++i) {
        const Rgb colour = job.bitmap.colour(source, job.columns[i]);
        Format::store(to + i * Format::kBytes, Format::packed(colour));
    }
}

template <class Format>
void drawRows(RowJob& job, const PixelMemory& surface, std::int64_t x, const Axis& rows, Positions visible) {
    const bool indexed = job.bitmap.bitCount() == 8;
    std::transform(job.bitmap.table().begin(), job.bitmap.table().end(), job.pixels.begin(), Format::packed);
    std::int64_t previous = -1;
    for (std::int64_t i = visible.first; i < visible.end; ++i) {
        std::uint8_t* to = surface.at(x, rows.start + i);
        const std::int64_t row = rows.source(i);
        if (row == previous) {
            std::memcpy(to, surface.at(x, rows.start + i - 1), job.count * Format::kBytes);
        } else if (indexed) {
            const std::uint8_t* const values = pickedValues(job, job.bitmap.row(row));
            if (Format::kBytes == 4 && job.grey)
                convertGreyRow(values, job.count, to);
            else
                convertIndexedRow<Format>(job, values, to);
        } else {
            convertRow<Format>(job, job.bitmap.row(row), to);
        }
        previous = row;
    }
}

bool isGrey(const BitmapPixels& bitmap) {
    if (bitmap.bitCount() != 8) return false;
    for (std::uint32_t value = 0; value < 256; ++value)
        if (bitmap.table()[value] != rgb(value, value, value)) return false;
    return true;
}

}  // namespace

int stretchBitmap(const PixelMemory& surface, const StretchRectangles& r, const BitmapPixels& bitmap,
                  CodePath path) {
    if (r.dw < 1 || r.dh < 1 || r.sw < 1 || r.sh < 1) return 0;
    const Axis across{r.dx, r.dw, r.sx, r.sw};
    const Axis down{r.dy, r.dh, bitmap.isBottomUp() ? bitmap.height() - (r.sy + r.sh) : r.sy, r.sh};
    const Positions x = visiblePositions(across, surface.width, bitmap.width());
    const Positions y = visiblePositions(down, surface.height, bitmap.height());
    if (x.isEmpty() || y.isEmpty()) return 0;

    const auto count = static_cast<std::size_t>(x.end - x.first);
    const Bytes columns = makeBytes(count * (sizeof(std::uint32_t) + sizeof(std::uint8_t)));
    if (!columns) return 0;
    auto* const map = reinterpret_cast<std::uint32_t*>(columns.get());
    for (std::size_t i = 0; i < count; ++i) {
        map[i] = static_cast<std::uint32_t>(across.source(x.first + static_cast<std::int64_t>(i)));
    }
    RowJob job{.bitmap = bitmap,
               .columns = map,
               .count = count,
               .adjacent = r.sw == r.dw,
               .values = columns.get() + count * sizeof(std::uint32_t),
               .grey = path == CodePath::fastest && isGrey(bitmap)};
    withFormat(surface.bits,
               [&](auto format) { drawRows<decltype(format)>(job, surface, r.dx + x.first, down, y); });
    return static_cast<int>(y.end - y.first);
}

}  // namespace qvr
