// Quarter turns, tile by tile, so that memory is only ever read and written by whole lines. Reading along columns
// instead misses the cache with every value.
#include "qvr/toolkit/detail/quarterTurn.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <numeric>

#include "qvr/platform/detail/memory.h"
#include "qvr/toolkit/detail/pixelRectangles.h"
#include "qvr/toolkit/detail/tileTurn.h"

namespace qvr {

namespace {

// The rule.
void turnPlainly(const std::uint16_t* source, std::int64_t width, std::int64_t height, std::uint16_t* target,
                 bool clockwise) {
    for (std::int64_t y = 0; y < height; ++y)
        for (std::int64_t x = 0; x < width; ++x)
            target[clockwise ? (width - 1 - x) * height + y : x * height + height - 1 - y] =
                source[y * width + x];
}

// A rectangle of a buffer.
struct Block {
    std::uint16_t* values;
    std::int64_t stride;
    std::int64_t width;
    std::int64_t height;

    /// The same rows from the last to the first.
    Block fromBelow() const { return {values + (height - 1) * stride, -stride, width, height}; }
};

// A turn is a transposition: counter-clockwise of the rows from the last to the first, clockwise into such rows.
struct Transposition {
    Block from;
    Block to;

    Transposition(const Block& source, const Block& target, bool clockwise)
        : from(clockwise ? source : source.fromBelow()), to(clockwise ? target.fromBelow() : target) {}
};

void transposePlainly(const Transposition& turn) {
    for (std::int64_t y = 0; y < turn.from.height; ++y)
        for (std::int64_t x = 0; x < turn.from.width; ++x)
            turn.to.values[x * turn.to.stride + y] = turn.from.values[y * turn.from.stride + x];
}

bool isTile(const Block& block) {
    return block.width == kTile && block.height == kTile;
}

void turnBlock(const Block& source, const Block& target, bool clockwise, const TileTurns& tiles) {
    const Transposition turn(source, target, clockwise);
    if (isTile(source))
        tiles.turn(turn.from.values, turn.from.stride, turn.to.values, turn.to.stride);
    else
        transposePlainly(turn);
}

// A tile is one line of each of many rows, which no processor foresees: while one is turned, the next is fetched into
// the second cache. Two thirds of the time; into the first, where its rows push out each other, it gains nothing.
void fetch(const Block& block) {
    for (std::int64_t row = 0; row < block.height; ++row)
        __builtin_prefetch(block.values + row * block.stride, 1, 2);
}

// Four blocks of a square change places in a circle, one tile at a time; only one of the four is kept meanwhile.
void turnSquare(const Block& square, bool clockwise, const TileTurns& tiles) {
    alignas(64) std::array<std::uint16_t, kTile * kTile> kept;
    const std::int64_t side = square.width;
    const auto block = [&](std::int64_t x, std::int64_t y, std::int64_t width, std::int64_t height) {
        return Block{square.values + y * square.stride + x, square.stride, width, height};
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
            turnBlock(circle[3], last, clockwise, tiles);
            for (std::size_t i = 3; i > 0; --i) {
                fetch(following[i - 1]);
                turnBlock(circle[i - 1], circle[i], clockwise, tiles);
            }
            for (std::int64_t row = 0; row < h; ++row)
                std::copy_n(last.values + row * kTile, w, circle[0].values + row * square.stride);
        }
}

// A rectangle of across * up squares. Turned one by one, their rows are those of the result but for the order.
struct Squares {
    std::int64_t side;
    std::int64_t across;
    std::int64_t up;
    bool clockwise;

    std::int64_t rows() const { return side * across * up; }  // of all squares
    /// Which row of the turned squares becomes row `row` of the result, both counted along the buffer.
    std::int64_t from(std::int64_t row) const {
        const std::int64_t column = row % up;
        const std::int64_t inSquare = row / up % side;
        const std::int64_t squareRow = row / up / side;
        const std::int64_t x = clockwise ? across - 1 - squareRow : squareRow;
        const std::int64_t y = clockwise ? column : up - 1 - column;
        return (y * side + inSquare) * across + x;
    }
};

// Puts the rows of the squares into order, in place: each cycle of places is followed until it comes back. `done` has a
// place for every row, `kept` is one row long. What a row replaces was copied a moment ago, so that memory is read and
// written once; the row after is fetched meanwhile.
void orderRows(std::uint16_t* pixels, const Squares& squares, std::uint8_t* done, std::uint16_t* kept) {
    const auto row = [&](std::int64_t index) { return pixels + index * squares.side; };
    for (std::int64_t start = 0; start < squares.rows(); ++start) {
        if (done[start]) continue;
        std::copy_n(row(start), squares.side, kept);
        std::int64_t place = start;
        for (std::int64_t from = squares.from(place); from != start;) {
            const std::int64_t next = squares.from(from);
            for (std::int64_t x = 0; x < squares.side; x += kTile) __builtin_prefetch(row(next) + x, 1, 2);
            std::copy_n(row(from), squares.side, row(place));
            done[place] = 1;
            place = from;
            from = next;
        }
        std::copy_n(kept, squares.side, row(place));
        done[place] = 1;
    }
}

// Sides with a large common divisor, as detectors have: needs hardly any memory. Half the time of another buffer, whose
// fresh pages cost more than the turn.
bool turnSquares(std::uint16_t* pixels, std::int64_t width, const Squares& squares, const TileTurns& tiles) {
    const Bytes done = makeBytes(static_cast<std::size_t>(squares.rows()));
    const Pixels kept = makeUnsetPixels(squares.side, 1);
    if (!done || !kept) return false;
    for (std::int64_t y = 0; y < squares.up; ++y)
        for (std::int64_t x = 0; x < squares.across; ++x)
            turnSquare({pixels + squares.side * (y * width + x), width, squares.side, squares.side},
                       squares.clockwise, tiles);
    orderRows(pixels, squares, done.get(), kept.get());
    return true;
}

// Where tiles of `length` values start; the last one overlaps the one before when it has to.
template <class Use>
void forTiles(std::int64_t length, const Use& use) {
    for (std::int64_t start = 0; start < length; start += kTile) use(std::min(start, length - kTile));
}

// Any shape of at least a tile into another buffer, whose rows begin on lines.
void turnTiles(const Transposition& turn, const TileTurns& tiles) {
    forTiles(turn.from.height, [&](std::int64_t y) {
        const TurnTile tile = y % kTile == 0 ? tiles.turnPast : tiles.turn;
        forTiles(turn.from.width, [&](std::int64_t x) {
            tile(turn.from.values + y * turn.from.stride + x, turn.from.stride,
                 turn.to.values + x * turn.to.stride + y, turn.to.stride);
        });
    });
}

bool turnThroughBuffer(std::uint16_t* pixels, std::int64_t width, std::int64_t height, bool clockwise,
                       CodePath path) {
    const bool tiled = path != CodePath::plain && width >= kTile && height >= kTile;
    const std::int64_t stride = tiled ? (height + kTile - 1) / kTile * kTile : height;
    const Pixels turned = makeUnsetPixels(stride, width);
    if (!turned) return false;
    if (tiled)
        turnTiles({{pixels, width, width, height}, {turned.get(), stride, height, width}, clockwise},
                  tileTurns(path));
    else
        turnPlainly(pixels, width, height, turned.get(), clockwise);
    copyArea(turned.get(), stride, {0, 0, height, width}, pixels, height);
    return true;
}

constexpr std::int64_t kSmallestSquare = 64;  // below that, rows in order cost more than a buffer

}  // namespace

bool turnQuarter(std::uint16_t* pixels, std::int64_t width, std::int64_t height, bool clockwise,
                 CodePath path) {
    if (width == 0 || height == 0) return true;
    const std::int64_t side = std::gcd(width, height);
    if (path == CodePath::plain || (width != height && side < kSmallestSquare))
        return turnThroughBuffer(pixels, width, height, clockwise, path);
    const TileTurns tiles = tileTurns(path);
    if (width != height)
        return turnSquares(pixels, width, {side, width / side, height / side, clockwise}, tiles);
    turnSquare({pixels, width, width, height}, clockwise, tiles);
    return true;
}

}  // namespace qvr
