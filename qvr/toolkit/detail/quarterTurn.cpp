// Quarter turns, tile by tile: a tile is turned through a buffer in the nearest cache, so that memory is only ever read
// and written along rows. Reading along columns instead misses the cache with every value: three times the time.
#include "qvr/toolkit/detail/quarterTurn.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "qvr/platform/detail/memory.h"

namespace qvr {

namespace {

constexpr std::int64_t kTile = 64;  // two of them, 8 KiB each, stay in the nearest cache

// A rectangle of a buffer, or of a tile.
struct Block {
    std::uint16_t* values;
    std::int64_t stride;
    std::int64_t width;
    std::int64_t height;
};

// The rule.
void turnPlainly(const std::uint16_t* source, std::int64_t width, std::int64_t height, std::uint16_t* target,
                 bool clockwise) {
    for (std::int64_t y = 0; y < height; ++y)
        for (std::int64_t x = 0; x < width; ++x)
            target[clockwise ? (width - 1 - x) * height + y : x * height + height - 1 - y] =
                source[y * width + x];
}

// Eight rows of eight values become eight columns. Vectors of the language, not of a processor: every compiler we build
// with turns them into its machine's shuffles.
using Eight = std::uint16_t __attribute__((vector_size(16)));

void transposeEight(const std::uint16_t* source, std::int64_t sourceStride, std::uint16_t* target,
                    std::int64_t targetStride) {
    std::array<Eight, 8> a;
    std::array<Eight, 8> b;
    for (std::size_t i = 0; i < 8; ++i)
        std::memcpy(&a[i], source + static_cast<std::int64_t>(i) * sourceStride, sizeof a[i]);
    for (int turn = 0; turn < 3; ++turn) {  // each time rows i and i + 4 are interleaved
        for (std::size_t i = 0; i < 4; ++i) {
            b[2 * i] = __builtin_shufflevector(a[i], a[i + 4], 0, 8, 1, 9, 2, 10, 3, 11);
            b[2 * i + 1] = __builtin_shufflevector(a[i], a[i + 4], 4, 12, 5, 13, 6, 14, 7, 15);
        }
        a = b;
    }
    for (std::size_t i = 0; i < 8; ++i)
        std::memcpy(target + static_cast<std::int64_t>(i) * targetStride, &a[i], sizeof a[i]);
}

// Turns a block of at most a tile into `target`, which has its sides exchanged. Column x of the source becomes row x
// counter-clockwise, read from above; clockwise the rows come in the opposite order, read from below.
void turnBlock(const Block& source, const Block& target, bool clockwise) {
    // Both are a transposition: counter-clockwise of the rows from the last to the first, clockwise into such rows.
    const std::int64_t from = clockwise ? source.stride : -source.stride;
    const std::int64_t to = clockwise ? -target.stride : target.stride;
    const std::uint16_t* const first = source.values + (clockwise ? 0 : (source.height - 1) * source.stride);
    std::uint16_t* const firstTarget = target.values + (clockwise ? (target.height - 1) * target.stride : 0);
    const std::int64_t wholeRows = source.height / 8 * 8;
    const std::int64_t wholeColumns = source.width / 8 * 8;
    for (std::int64_t y = 0; y < wholeRows; y += 8)
        for (std::int64_t x = 0; x < wholeColumns; x += 8)
            transposeEight(first + y * from + x, from, firstTarget + x * to + y, to);
    for (std::int64_t y = 0; y < source.height; ++y)
        for (std::int64_t x = y < wholeRows ? wholeColumns : 0; x < source.width; ++x)
            firstTarget[x * to + y] = first[y * from + x];
}

void copyBlock(const Block& source, const Block& target) {
    if (source.width == kTile) {  // a size that the compiler knows needs no call
        for (std::int64_t row = 0; row < source.height; ++row)
            std::memcpy(target.values + row * target.stride, source.values + row * source.stride,
                        kTile * sizeof *target.values);
        return;
    }
    for (std::int64_t row = 0; row < source.height; ++row)
        std::memcpy(target.values + row * target.stride, source.values + row * source.stride,
                    static_cast<std::size_t>(source.width) * sizeof *target.values);
}

// A tile is a short piece of many rows, which no processor foresees: while one is turned, the next is fetched. Half the
// time.
void fetch(const Block& block) {
    for (std::int64_t row = 0; row < block.height; ++row)
        for (std::int64_t x = 0; x < block.width; x += 32)
            __builtin_prefetch(block.values + row * block.stride + x, 1, 3);
}

// Four blocks of a square change places in a circle, one tile at a time, through two tiles of our own.
void turnSquare(std::uint16_t* pixels, std::int64_t side, bool clockwise) {
    alignas(64) std::array<std::uint16_t, kTile * kTile> kept;
    alignas(64) std::array<std::uint16_t, kTile * kTile> turned;
    const auto block = [&](std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height) {
        return Block{pixels + y * side + x, side, width, height};
    };
    // The lower left quarter without the middle column; the three others and, but for one value in the middle, the rest
    // are where it goes.
    for (std::int64_t y = 0; y < (side + 1) / 2; y += kTile)
        for (std::int64_t x = 0; x < side / 2; x += kTile) {
            const std::int64_t w = std::min(kTile, side / 2 - x);
            const std::int64_t h = std::min(kTile, (side + 1) / 2 - y);
            // Counter-clockwise each goes to the place of the next, the last to that of the first.
            const auto circleOf = [&](std::int64_t left, std::int64_t width) {
                std::array<Block, 4> blocks{block(left, y, width, h), block(side - y - h, left, h, width),
                                            block(side - left - width, side - y - h, width, h),
                                            block(y, side - left - width, h, width)};
                if (clockwise) std::swap(blocks[1], blocks[3]);
                return blocks;
            };
            const std::array<Block, 4> circle = circleOf(x, w);
            const std::int64_t next = std::min(x + kTile, side / 2);
            const std::array<Block, 4> following = circleOf(next, std::min(kTile, side / 2 - next));
            const Block last{kept.data(), kTile, w, h};
            fetch(following[3]);
            turnBlock(circle[3], last, clockwise);
            for (std::size_t i = 3; i > 0; --i) {
                const Block moved{turned.data(), kTile, circle[i].width, circle[i].height};
                fetch(following[i - 1]);
                turnBlock(circle[i - 1], moved, clockwise);
                copyBlock(moved, circle[i]);
            }
            copyBlock(last, circle[0]);
        }
}

// Any other shape, into another buffer.
void turnTiles(std::uint16_t* source, std::int64_t width, std::int64_t height, std::uint16_t* target,
               bool clockwise) {
    alignas(64) std::array<std::uint16_t, kTile * kTile> turned;
    for (std::int64_t x = 0; x < width; x += kTile)
        for (std::int64_t y = 0; y < height; y += kTile) {
            const std::int64_t w = std::min(kTile, width - x);
            const std::int64_t h = std::min(kTile, height - y);
            const Block moved{turned.data(), kTile, h, w};
            const std::int64_t next = std::min(y + kTile, height);
            fetch({source + next * width + x, width, w, std::min(kTile, height - next)});
            turnBlock({source + y * width + x, width, w, h}, moved, clockwise);
            const std::int64_t row = clockwise ? width - x - w : x;
            const std::int64_t column = clockwise ? y : height - y - h;
            const std::int64_t nextColumn =
                clockwise ? std::min(y + kTile, height - h) : std::max(column - kTile, std::int64_t{0});
            fetch({target + row * height + nextColumn, height, h, w});
            copyBlock(moved, {target + row * height + column, height, h, w});
        }
}

}  // namespace

bool turnQuarter(std::uint16_t* pixels, std::int64_t width, std::int64_t height, bool clockwise,
                 CodePath path) {
    if (width == 0 || height == 0) return true;
    if (width == height && path != CodePath::plain) {
        turnSquare(pixels, width, clockwise);
        return true;
    }
    const Pixels turned = makeUnsetPixels(width, height);
    if (!turned) return false;
    if (path == CodePath::plain)
        turnPlainly(pixels, width, height, turned.get(), clockwise);
    else
        turnTiles(pixels, width, height, turned.get(), clockwise);
    std::memcpy(pixels, turned.get(), static_cast<std::size_t>(width * height) * sizeof *pixels);
    return true;
}

}  // namespace qvr
