// shapes: what an X-ray sees of simple bodies, added to a picture row by row.
//
// Lengths are in units of the anatomy's own plane (about 1000 units high, y downward), so the same shapes serve
// every picture size. A contribution is a density: grey levels that the body adds where it is crossed.
#pragma once

#include <cstdint>
#include <span>

namespace qvr {

struct Point {
    double x = 0;
    double y = 0;
};

/// One row of the picture being made, with the place of its pixels in the anatomy's plane.
struct Row {
    double y = 0;     ///< of the row
    double left = 0;  ///< x of the first pixel
    double step = 1;  ///< from a pixel to the next
    std::span<double> values;

    [[nodiscard]] double x(int column) const { return left + step * column; }
    [[nodiscard]] int columns() const { return static_cast<int>(values.size()); }
};

struct Columns {
    int first = 0;
    int last = -1;  ///< inclusive
};

/// The columns of a row whose x lies from `left` to `right`.
[[nodiscard]] Columns columnsBetween(const Row& row, double left, double right);

/// 0 at or below 0, 1 at or above 1, and a smooth step between.
[[nodiscard]] double smoothStep(double t);

/// Cloudy noise from -1 to 1: random at the points of a lattice of side `cell`, smooth between them.
[[nodiscard]] double cloud(double x, double y, double cell, std::uint64_t seed);

/// A limb: a round rod between two points, its radius changing evenly from one to the other.
struct Rod {
    Point from, to;
    double fromRadius = 1, toRadius = 1;
    double density = 1;  ///< at the axis
};
/// Joins the rod to what the row holds: the thicker one wins, rounded off over `blend` grey levels.
void joinRod(const Row& row, const Rod& rod, double blend);

/// A long bone: a tube with dense walls, waisted in the middle and spongy at its ends.
struct Bone {
    Point from, to;
    double fromRadius = 1, waistRadius = 1, toRadius = 1;
    double density = 1;  ///< of the wall, seen along it
};
void addBone(const Row& row, const Bone& bone);

/// A short bone: an ellipse with a thin dense wall. `turn` is the tangent of half its angle.
struct Pebble {
    Point centre;
    double radiusX = 1, radiusY = 1;
    double turn = 0;
    double density = 1;
};
void addPebble(const Row& row, const Pebble& pebble);

/// How much of an ellipse a ray crosses: 1 at the centre, 0 at the rim and outside.
[[nodiscard]] double ellipseDepth(Point p, Point centre, double radiusX, double radiusY);

}  // namespace qvr
