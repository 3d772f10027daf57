// Marks beside an image: a Grayscale Softcopy Presentation State, which shows them over the untouched pixels.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "loading.h"
#include "markPlacing.h"

namespace qvr::tool {

/// Refuses an image that nothing can refer to. @throws Failure
void checkReferable(const SourceImage& source);

struct PresentationState {
    std::vector<std::uint8_t> bytes;
    std::string sopInstanceUid;
};
/// @param loaded  from a DICOM file, see checkReferable
/// @param window  linear, in adopted values
PresentationState encodePresentationState(const Loaded& loaded, const Window& window,
                                          const std::vector<PlacedMark>& marks);

}  // namespace qvr::tool
