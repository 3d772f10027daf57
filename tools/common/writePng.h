// writePng: saves a picture as a PNG file.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace qvr {

/// What the bytes of a picture stand for.
enum class PictureFormat { grey8, rgb24 };

/// A picture in memory: rows from the top, without padding.
struct Picture {
    int width = 0;
    int height = 0;
    PictureFormat format = PictureFormat::grey8;
    std::span<const std::uint8_t> bytes;  ///< width * height * (1 or 3) bytes, not owned
};

/// Writes a picture to a file, over one that is there.
/// @return an empty text; otherwise why it failed, and no file of that name is left half written
[[nodiscard]] std::string writePng(const std::string& path, const Picture& picture);

}  // namespace qvr
