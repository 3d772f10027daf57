// Picture files are made in memory, so that writing them is one step that succeeds or leaves nothing.
#include "picture.h"

#include <fmt/format.h>
#include <png.h>

#include <algorithm>
#include <cctype>
#include <cstring>

#include "adoption.h"
#include "errors.h"

namespace qvr::tool {

namespace {

using Bytes = std::vector<std::uint8_t>;

void append(Bytes& out, const void* data, std::size_t size) {
    const auto* bytes = static_cast<const std::uint8_t*>(data);
    out.insert(out.end(), bytes, bytes + size);
}

[[noreturn]] void notMade(const char* kind) {
    throw Failure(Exit::internal, "", "no picture", fmt::format("the {} could not be made", kind));
}

Bytes encodePng(const GreyPicture& picture) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    const auto& bytes = picture.colours.empty() ? picture.pixels : picture.colours;
    image.format = picture.colours.empty() ? PNG_FORMAT_GRAY : PNG_FORMAT_RGB;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    Bytes out(size);
    if (!png_image_write_to_memory(&image, out.data(), &size, 0, bytes.data(), 0, nullptr)) notMade("PNG");
    out.resize(size);
    return out;
}

// One row as a bitmap has it: greys, or blue, green and red.
void copyRow(const GreyPicture& picture, std::size_t y, std::uint8_t* out) {
    const auto width = static_cast<std::size_t>(picture.width);
    if (picture.colours.empty()) {
        std::memcpy(out, picture.pixels.data() + y * width, width);
        return;
    }
    const auto* from = picture.colours.data() + 3 * y * width;
    for (std::size_t x = 0; x < width; ++x)
        for (std::size_t i = 0; i < 3; ++i) out[3 * x + i] = from[3 * x + 2 - i];
}

// The library's bitmap lays out header, colours and padded rows.
Bytes encodeBmp(const GreyPicture& picture) {
    CDib bitmap(picture.width, picture.height, picture.colours.empty() ? 8 : 24);
    const Bytes black(picture.pixels.size());
    if (!bitmap.CreateFromPixels(picture.width, picture.height, black.data(), nullptr, nullptr))
        notMade("bitmap");
    const auto height = static_cast<std::size_t>(picture.height);
    const std::size_t stride = bitmap.ImageSize / height;
    for (std::size_t y = 0; y < height; ++y) copyRow(picture, y, bitmap.Bits + (height - 1 - y) * stride);

    const std::size_t headers = 54 + 4 * static_cast<std::size_t>(bitmap.ColorTableEntries);
    Bytes out = {'B', 'M'};
    const auto number = [&out](std::size_t value) {
        for (int shift = 0; shift < 32; shift += 8)
            out.push_back(static_cast<std::uint8_t>(value >> shift & 0xff));
    };
    number(headers + bitmap.ImageSize);
    number(0);
    number(headers);
    append(out, bitmap.InfoHeader, headers - 14);
    append(out, bitmap.Bits, bitmap.ImageSize);
    return out;
}

Bytes encodePgm(const GreyPicture& picture) {
    const std::string header = fmt::format("P5\n{} {}\n255\n", picture.width, picture.height);
    Bytes out(header.begin(), header.end());
    append(out, picture.pixels.data(), picture.pixels.size());
    return out;
}

Bytes encodeRaw(const GreyPicture& picture) {
    Bytes out;
    out.reserve(2 * picture.pixels.size());
    for (const auto grey : bottomRowFirst(std::span(picture.pixels), picture.width, picture.height)) {
        out.push_back(grey);
        out.push_back(0);
    }
    return out;
}

}  // namespace

GreyPicture pictureOf(const CDib& bitmap) {
    GreyPicture out{bitmap.InfoHeader->biWidth, bitmap.InfoHeader->biHeight, {}, {}};
    const auto width = static_cast<std::size_t>(out.width);
    const auto height = static_cast<std::size_t>(out.height);
    const std::size_t stride = (width + 3) / 4 * 4;
    out.pixels.reserve(width * height);
    for (std::size_t y = 0; y < height; ++y) {
        const auto* row = bitmap.Bits + (height - 1 - y) * stride;
        out.pixels.insert(out.pixels.end(), row, row + width);
    }
    return out;
}

PictureFormat pictureFormat(const std::string& target) {
    if (target == "-") return PictureFormat::png;
    const auto name = target.substr(target.find_last_of('/') + 1);
    const auto dot = name.find_last_of('.');
    std::string extension = dot == std::string::npos ? std::string() : name.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (extension == "png") return PictureFormat::png;
    if (extension == "bmp") return PictureFormat::bmp;
    if (extension == "pgm") return PictureFormat::pgm;
    if (extension == "raw") return PictureFormat::raw;
    throw Failure(Exit::usage, target, "not written",
                  "its extension is none that a picture can be written as", "Use .png, .bmp, .pgm or .raw.");
}

std::vector<std::uint8_t> encode(const GreyPicture& picture, PictureFormat format) {
    switch (format) {
        case PictureFormat::png:
            return encodePng(picture);
        case PictureFormat::bmp:
            return encodeBmp(picture);
        case PictureFormat::pgm:
            return encodePgm(picture);
        case PictureFormat::raw:
            return encodeRaw(picture);
    }
    return {};
}

}  // namespace qvr::tool
