// The window that an image gets when none is given.
#pragma once

#include <cstdint>

#include "qvr/image/detail/displayTable.h"

namespace qvr {

/// The automatic window of width * height pixels, from the bounds of QVR_DISP_AutoWL at 5 % and 95 %. Never fails:
/// without bounds it is the full 14-bit range.
DisplayWindow automaticWindow(int width, int height, const std::uint16_t* pixels, int bitsStored);

/// `asked` when it counts as given, otherwise the automatic window.
inline DisplayWindow windowOrAutomatic(const DisplayWindow& asked, int width, int height,
                                       const std::uint16_t* pixels, int bitsStored) {
    return asked.given() ? asked : automaticWindow(width, height, pixels, bitsStored);
}

}  // namespace qvr
