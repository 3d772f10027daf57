// PNG files through the simplified interface of libpng, which needs no long jumps across our frames.
#include "tools/common/writePng.h"

#include <png.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>

namespace qvr {

std::string writePng(const std::string& path, const Picture& picture) {
    const std::size_t channels = picture.format == PictureFormat::rgb24 ? 3 : 1;
    if (picture.width <= 0 || picture.height <= 0) return "the picture is empty";
    if (picture.bytes.size() !=
        channels * static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height)) {
        return "the picture's bytes do not match its size";
    }

    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = picture.format == PictureFormat::rgb24 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;

    // A stream of our own: libpng's messages do not name the cause of a failed open.
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return std::strerror(errno);
    const bool written = png_image_write_to_stdio(&image, file, 0, picture.bytes.data(), 0, nullptr) != 0;
    std::string failure = written ? std::string() : std::string(image.message);
    if (std::fclose(file) != 0 && failure.empty()) failure = std::strerror(errno);
    if (!failure.empty()) std::remove(path.c_str());
    return failure;
}

}  // namespace qvr
