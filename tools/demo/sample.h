// sample: the radiographs that the demo shows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace qvr {

/// A radiograph as the display works on it: 14 bits, bones bright, bottom row first.
struct Sample {
    std::string name;    ///< also begins the names of its pictures
    std::string origin;  ///< where it is from and what was done to it
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> pixels;
};

/// A window for the middle half of a radiograph, and why it is wanted.
struct MiddleWindow {
    double white = 0.0;  ///< part of the picture above the automatic window, 0 … 1
    int center = 0;
    int width = 0;
};

/// Frames and bare film outweigh the body in some pictures. Where the automatic window would show more than a third of
/// the picture white, the one of the middle is taken, as a console does on demand.
/// @param white  upper bound of the automatic window
/// @return nothing when the automatic window will do, or when the middle has none
[[nodiscard]] std::optional<MiddleWindow> windowOfTheMiddle(const Sample& sample, int white);

/// The made radiographs, a hand and a chest.
[[nodiscard]] std::vector<Sample> madeSamples();
/// The radiographs of a folder: each NAME.raw that has a NAME.json beside it, in order of their names.
[[nodiscard]] std::vector<Sample> samplesIn(const std::filesystem::path& folder);
/// Adds made radiographs, no two alike, until there are `count`.
void addMade(std::vector<Sample>& samples, std::size_t count);

}  // namespace qvr
