// pixelTools: what needs no examination: the tools on pixel buffers and the display image of its own.
#pragma once

#include <filesystem>

#include "qvr/qvr.h"
#include "tools/demo/contactSheet.h"
#include "tools/demo/sample.h"
#include "tools/demo/screen.h"

namespace qvr {

/// What CQVRImage::Create is told of a radiograph.
/// @param width,center  of the display window; 0 for the automatic one
[[nodiscard]] QVR_ST_QVR_IMAGE displayRecord(const Sample& radiograph, int width = 0, int center = 0);
/// Shows a radiograph's pixels fitted into a screen, through an image of its own. Throws DemoFailure.
void showPixels(const Sample& radiograph, int width, int center, Screen& screen);

/// Turns, mirrors, crops, masks and inverts a radiograph, checks every pixel of each result, and saves one sheet of
/// them. Throws DemoFailure.
void showPixelTools(const Sample& radiograph, const std::filesystem::path& folder);

/// Draws display images at offsets in four panes of a window, which they must not leave. Throws DemoFailure.
void placeFreely(const Sample& radiograph, const std::filesystem::path& folder, ContactSheet& sheet);

}  // namespace qvr
