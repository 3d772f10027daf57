// Pictures and the files they are written into.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <qvr/image/CDib.h>

namespace qvr::tool {

/// A grey picture, top row first, rows without padding.
struct GreyPicture {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;
    std::vector<std::uint8_t>
        colours;  ///< red, green, blue of every pixel; empty where there is nothing but grey
};

/// The picture in an 8-bit grey bitmap of the library.
GreyPicture pictureOf(const CDib& bitmap);

enum class PictureFormat {
    png,  ///< 8-bit grey, or colours
    bmp,  ///< the same, bottom row first
    pgm,  ///< P5, largest value 255
    raw   ///< the library's raw pixel file: 16 bits little-endian, bottom row first; here with values 0..255
};

/// From the extension, in any case; "-" (standard output) is PNG. @throws Failure for any other name
PictureFormat pictureFormat(const std::string& target);

/// The bytes of the file; PGM and raw files hold greys alone. @throws Failure when there is no memory for them
std::vector<std::uint8_t> encode(const GreyPicture& picture, PictureFormat format);

}  // namespace qvr::tool
