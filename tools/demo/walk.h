// walk: takes one radiograph through what a console does with it.
#pragma once

#include <filesystem>

#include "tools/demo/contactSheet.h"
#include "tools/demo/sample.h"

namespace qvr {

/// Size of the window that the pictures are drawn into.
inline constexpr int kWindowWidth = 1000;
inline constexpr int kWindowHeight = 800;

/// Creates the image and its raw copy, shows it fitted with each curve, enlarged and moved, writes it out, reads it
/// back and compares. Saves a picture of every view in `folder`, adds it to the sheet and tells it in one line.
/// Throws DemoFailure when a step fails.
void walkThrough(const Sample& sample, const std::filesystem::path& folder, ContactSheet& sheet);

}  // namespace qvr
