// phantom: radiographs that look real enough to judge a display by, made from a number.
//
// Every picture has a near-black collimation border, direct exposure, soft tissue, bone, a step wedge and a lead
// letter (R on the hand, L on the chest) that gives a mirrored or turned picture away. Bones are bright: high
// values are the dense ones. The same options give the same pixels on every machine: the generator uses integers,
// the four operations and the square root in a fixed order, and numbers from its own source.
#pragma once

#include <cstdint>
#include <vector>

namespace qvr {

enum class PhantomKind { hand, chest };

struct PhantomOptions {
    PhantomKind kind = PhantomKind::hand;
    int width = 2048;
    int height = 2500;
    std::uint64_t seed = 1;  ///< moves the anatomy a little and changes all of the noise
};

/// Makes a radiograph of 14 significant bits.
/// @return width * height values, row 0 being the BOTTOM row of the picture; empty for a side below 1
[[nodiscard]] std::vector<std::uint16_t> makePhantom(const PhantomOptions& options);

}  // namespace qvr
