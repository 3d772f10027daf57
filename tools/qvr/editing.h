// Edits of an image with the library's pixel tools, and what follows from them for its description.
#pragma once

#include <optional>
#include <string>
#include <utility>

#include "adoption.h"
#include "regions.h"

namespace qvr::tool {

struct EditStep {
    enum class Kind { clockwise, counterClockwise, halfTurn, mirror, flip, crop, mask, invert };
    Kind kind = Kind::mirror;
    Region region;           ///< crop and mask: in the picture as it is by then
    bool whiteMask = false;  ///< what is outside a mask
};

struct EditedImage {
    AdoptedImage image;
    int windowCenter = 0;
    bool negative = false;                             ///< inverted an odd number of times
    bool quarterTurn = false;                          ///< rows are columns
    std::optional<std::pair<double, double>> spacing;  ///< millimetres per column and per row
    std::string patientOrientation;  ///< as DICOM has it; empty when it is not known (any more)
    std::string derivation;          ///< what was done, in words
};

/// @throws Failure for a region that leaves the picture, a mask below 11 x 11, and without memory
void edit(EditedImage& edited, const EditStep& step);

/// Where a picture's rows and columns point to after a turn: "L\\F" clockwise is "H\\L".
/// @return empty when a direction has no known opposite
std::string turnedOrientation(const std::string& orientation, EditStep::Kind kind);

}  // namespace qvr::tool
