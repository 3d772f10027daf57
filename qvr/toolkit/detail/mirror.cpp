// Mirrors and the negative: each value is read and written once, so memory alone should set the pace.
#include "qvr/toolkit/detail/mirror.h"

#include <algorithm>
#include <cstring>

#include "qvr/platform/detail/clones.h"

namespace qvr {

namespace {

// The rules.
void mirrorRowsPlainly(std::uint16_t* pixels, std::int64_t width, std::int64_t height) {
    for (std::int64_t row = 0; row < height / 2; ++row)
        std::swap_ranges(pixels + row * width, pixels + (row + 1) * width,
                         pixels + (height - 1 - row) * width);
}

void mirrorColumnsPlainly(std::uint16_t* pixels, std::int64_t width, std::int64_t height) {
    for (std::int64_t row = 0; row < height; ++row)
        std::reverse(pixels + row * width, pixels + (row + 1) * width);
}

// Processors fetch ahead along one row but do not foresee the next one, least of all when rows come from the last to the
// first or when both ends of a row are read towards its middle. So a part of a row to come is fetched with every part of
// this one: up to two fifths less time. One stream does best when it is fetched into the nearest cache, two into the second.
constexpr std::int64_t kFetched = 64;  // values
constexpr std::int64_t kRowsAhead = 2;

void fetch(const std::uint16_t* values, std::int64_t count) {
    for (std::int64_t i = 0; i < count; i += 32) __builtin_prefetch(values + i, 1, 2);
}

// Told that the two do not overlap, the compiler moves whole vectors.
QVR_CLONES void exchange(std::uint16_t* __restrict a, std::uint16_t* __restrict b, std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) {
        const std::uint16_t kept = a[i];
        a[i] = b[i];
        b[i] = kept;
    }
}

// Sixteen values in opposite order: one or two shuffles on every processor.
using Part = std::uint16_t __attribute__((vector_size(32)));
constexpr std::int64_t kPart = 16;

inline __attribute__((always_inline)) void loadReversed(const std::uint16_t* values, Part& part) {
    std::memcpy(&part, values, sizeof part);
    part = __builtin_shufflevector(part, part, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
}

// A line from either end change places, each reversed on the way.
QVR_CLONES void reverse(std::uint16_t* first, std::int64_t count, const std::uint16_t* ahead) {
    constexpr std::int64_t kLine = 2 * kPart;
    for (; count >= 2 * kLine; first += kLine, count -= 2 * kLine, ahead += 2 * kLine) {
        std::uint16_t* const last = first + count - kLine;
        __builtin_prefetch(ahead, 1, 3);
        __builtin_prefetch(ahead + kLine, 1, 3);
        Part parts[4];
        loadReversed(first, parts[0]);
        loadReversed(first + kPart, parts[1]);
        loadReversed(last, parts[2]);
        loadReversed(last + kPart, parts[3]);
        std::memcpy(first, &parts[3], sizeof(Part));
        std::memcpy(first + kPart, &parts[2], sizeof(Part));
        std::memcpy(last, &parts[1], sizeof(Part));
        std::memcpy(last + kPart, &parts[0], sizeof(Part));
    }
    std::reverse(first, first + count);
}

QVR_CLONES void invert(std::uint16_t* values, std::size_t count, std::uint16_t maximum) {
    for (std::size_t i = 0; i < count; ++i) values[i] = static_cast<std::uint16_t>(maximum - values[i]);
}

}  // namespace

void mirrorRows(std::uint16_t* pixels, std::int64_t width, std::int64_t height, CodePath path) {
    if (width <= 0) return;  // of any number of rows
    if (path == CodePath::plain) return mirrorRowsPlainly(pixels, width, height);
    for (std::int64_t row = 0; row < height / 2; ++row) {
        std::uint16_t* const low = pixels + row * width;
        std::uint16_t* const high = pixels + (height - 1 - row) * width;
        for (std::int64_t x = 0; x < width; x += kFetched) {
            const std::int64_t count = std::min(kFetched, width - x);
            if (row + kRowsAhead < height / 2) {
                fetch(low + kRowsAhead * width + x, count);
                fetch(high - kRowsAhead * width + x, count);
            }
            exchange(low + x, high + x, count);
        }
    }
}

void mirrorColumns(std::uint16_t* pixels, std::int64_t width, std::int64_t height, CodePath path) {
    if (width <= 0) return;  // of any number of rows
    if (path == CodePath::plain) return mirrorColumnsPlainly(pixels, width, height);
    for (std::int64_t row = 0; row < height; ++row)
        reverse(pixels + row * width, width, pixels + std::min(row + kRowsAhead, height - 1) * width);
}

void invertValues(std::uint16_t* pixels, std::size_t count, std::uint16_t maximum, CodePath path) {
    if (path != CodePath::plain) return invert(pixels, count, maximum);
    for (std::size_t i = 0; i < count; ++i) pixels[i] = static_cast<std::uint16_t>(maximum - pixels[i]);
}

}  // namespace qvr
