// bitmaps: CDib objects in the hands of a host: files, comparison, a protocol's pictogram.
#pragma once

#include <filesystem>
#include <string>

#include "qvr/qvr.h"
#include "tools/demo/screen.h"

namespace qvr {

/// Size of a complete bitmap.
[[nodiscard]] CSize sizeOf(const CDib& bitmap);
/// The byte of an 8-bit bitmap, with row 0 at the bottom of the picture.
[[nodiscard]] int greyAt(const CDib& bitmap, int column, int row);
/// Whether two complete 8-bit bitmaps have the same size and the same picture; what pads their rows does not count.
[[nodiscard]] bool sameBitmap(const CDib& a, const CDib& b);

/// Writes a bitmap file, reads it back and compares. Throws DemoFailure.
void writeBitmap(CDib& bitmap, const std::filesystem::path& path);
/// Throws DemoFailure.
void readBitmap(CDib& bitmap, const std::filesystem::path& path);
/// Draws a bitmap into the top left corner, pixel for pixel. Throws DemoFailure.
void showBitmap(CDib& bitmap, Screen& screen);

/// Writes the bitmap that a series shows while it has no image: a frame and a name. Throws DemoFailure.
void writePictogram(const std::string& name, const std::filesystem::path& path);

}  // namespace qvr
