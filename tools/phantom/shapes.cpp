// The chord that a ray cuts out of a round body is the root of radius squared less distance squared; a hollow one
// is the outer chord less the inner one, which is what makes the walls of a bone bright at its edges.
#include "tools/phantom/shapes.h"

#include <algorithm>
#include <cmath>

#include "tools/phantom/randomNumbers.h"

namespace qvr {
namespace {

double chord(double radius, double squaredDistance) {
    const double rest = radius * radius - squaredDistance;
    return rest > 0 ? std::sqrt(rest) : 0.0;
}

/// Where a point lies along a stretch, 0 to 1, and how far from it.
struct Nearest {
    double along = 0;
    double squaredDistance = 0;
};

Nearest nearestOn(Point from, Point to, Point p) {
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    const double length = std::max(dx * dx + dy * dy, 1e-9);
    const double along = std::clamp(((p.x - from.x) * dx + (p.y - from.y) * dy) / length, 0.0, 1.0);
    const double restX = p.x - from.x - along * dx;
    const double restY = p.y - from.y - along * dy;
    return {along, restX * restX + restY * restY};
}

/// Calls visit(column, nearest) for the pixels of the row that are closer than `reach` to the stretch's box.
template <typename Visit>
void visitAround(const Row& row, Point from, Point to, double reach, Visit visit) {
    if (row.y < std::min(from.y, to.y) - reach || row.y > std::max(from.y, to.y) + reach) return;
    const Columns columns =
        columnsBetween(row, std::min(from.x, to.x) - reach, std::max(from.x, to.x) + reach);
    for (int i = columns.first; i <= columns.last; ++i) visit(i, nearestOn(from, to, {row.x(i), row.y}));
}

double rodDensity(const Rod& rod, const Nearest& nearest) {
    const double radius = rod.fromRadius + (rod.toRadius - rod.fromRadius) * nearest.along;
    return rod.density * chord(radius, nearest.squaredDistance) / radius;
}

double latticeValue(std::int64_t x, std::int64_t y, std::uint64_t seed) {
    const auto column = static_cast<std::uint64_t>(x) * 0x9e3779b97f4a7c15U;
    const auto row = static_cast<std::uint64_t>(y) * 0xc2b2ae3d27d4eb4fU;
    return 2.0 * unitInterval(scrambled(seed ^ column ^ (row + (column << 21)))) - 1.0;
}

}  // namespace

Columns columnsBetween(const Row& row, double left, double right) {
    const double last = row.columns() - 1.0;
    const double from = std::clamp(std::ceil((left - row.left) / row.step), 0.0, last + 1.0);
    const double to = std::clamp(std::floor((right - row.left) / row.step), -1.0, last);
    return {static_cast<int>(from), static_cast<int>(to)};
}

double smoothStep(double t) {
    const double inside = std::clamp(t, 0.0, 1.0);
    return inside * inside * (3.0 - 2.0 * inside);
}

double cloud(double x, double y, double cell, std::uint64_t seed) {
    const double column = std::floor(x / cell);
    const double row = std::floor(y / cell);
    const double tx = smoothStep(x / cell - column);
    const double ty = smoothStep(y / cell - row);
    const auto c = static_cast<std::int64_t>(column);
    const auto r = static_cast<std::int64_t>(row);
    const double upper = latticeValue(c, r, seed) * (1 - tx) + latticeValue(c + 1, r, seed) * tx;
    const double lower = latticeValue(c, r + 1, seed) * (1 - tx) + latticeValue(c + 1, r + 1, seed) * tx;
    return upper * (1 - ty) + lower * ty;
}

void joinRod(const Row& row, const Rod& rod, double blend) {
    const double reach = std::max(rod.fromRadius, rod.toRadius);
    visitAround(row, rod.from, rod.to, reach, [&](int i, const Nearest& nearest) {
        double& value = row.values[static_cast<std::size_t>(i)];
        const double added = rodDensity(rod, nearest);
        const double nearby = std::max(blend - std::abs(value - added), 0.0);
        // The rounding fades out with the thinner body, so that it never reaches past the rim.
        const double rounding = nearby * nearby / (4 * blend) * std::min(1.0, std::min(value, added) / blend);
        value = std::max(value, added) + rounding;
    });
}

void addBone(const Row& row, const Bone& bone) {
    const double reach = std::max({bone.fromRadius, bone.waistRadius, bone.toRadius});
    visitAround(row, bone.from, bone.to, reach, [&](int i, const Nearest& nearest) {
        const double fromMiddle = 2 * nearest.along - 1;
        const double flare = fromMiddle * fromMiddle;
        const double end = fromMiddle < 0 ? bone.fromRadius : bone.toRadius;
        const double radius = bone.waistRadius + (end - bone.waistRadius) * flare;
        const double outer = chord(radius, nearest.squaredDistance);
        if (outer <= 0) return;
        // The wall is thick in the shaft and a thin shell over the spongy ends.
        const double inner = chord(radius * (0.58 + 0.34 * flare), nearest.squaredDistance);
        const double marrow = 0.35 + 0.3 * flare;
        row.values[static_cast<std::size_t>(i)] +=
            bone.density * (outer - (1 - marrow) * inner) / bone.waistRadius;
    });
}

void addPebble(const Row& row, const Pebble& pebble) {
    const double reach = std::max(pebble.radiusX, pebble.radiusY);
    if (std::abs(row.y - pebble.centre.y) > reach) return;
    const double scale = 1 / (1 + pebble.turn * pebble.turn);
    const double cosine = (1 - pebble.turn * pebble.turn) * scale;
    const double sine = 2 * pebble.turn * scale;
    const Columns columns = columnsBetween(row, pebble.centre.x - reach, pebble.centre.x + reach);
    for (int i = columns.first; i <= columns.last; ++i) {
        const double dx = row.x(i) - pebble.centre.x;
        const double dy = row.y - pebble.centre.y;
        const double u = (dx * cosine + dy * sine) / pebble.radiusX;
        const double v = (dy * cosine - dx * sine) / pebble.radiusY;
        const double squared = u * u + v * v;
        const double wall = chord(1.0, squared) - 0.42 * chord(0.88, squared);
        row.values[static_cast<std::size_t>(i)] += pebble.density * std::max(wall, 0.0);
    }
}

double ellipseDepth(Point p, Point centre, double radiusX, double radiusY) {
    const double u = (p.x - centre.x) / radiusX;
    const double v = (p.y - centre.y) / radiusY;
    return chord(1.0, u * u + v * v);
}

}  // namespace qvr
