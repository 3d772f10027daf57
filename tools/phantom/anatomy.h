// anatomy: a body part that can be drawn row by row.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "tools/phantom/shapes.h"

namespace qvr {

struct Stroke {
    Point from, to;
};

class Anatomy {
public:
    Anatomy() = default;
    Anatomy(const Anatomy&) = delete;
    Anatomy& operator=(const Anatomy&) = delete;
    virtual ~Anatomy() = default;

    /// Adds what the body part holds back in this row, in grey levels; the row comes cleared.
    virtual void addTo(const Row& row) const = 0;
    /// Size of the plane that a picture has to show.
    [[nodiscard]] virtual Point planeSize() const = 0;
    /// The lead letter's strokes in a box of 6 x 10 units, y downward.
    [[nodiscard]] virtual std::span<const Stroke> letter() const = 0;
    /// The upper left corners of the letter and of the step wedge in the plane.
    [[nodiscard]] virtual Point letterPlace() const = 0;
    [[nodiscard]] virtual Point wedgePlace() const = 0;
};

[[nodiscard]] std::unique_ptr<Anatomy> makeHand(std::uint64_t seed);
[[nodiscard]] std::unique_ptr<Anatomy> makeChest(std::uint64_t seed);

}  // namespace qvr
