// Pixels of a surface: how a colour is kept at 8, 16, 24 and 32 bits.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "qvr/platform/types.h"

namespace qvr {

static_assert(std::endian::native == std::endian::little, "pixels are stored as little-endian integers");

/// A colour as 0x00RRGGBB: stored little-endian it is the pixel of a bitmap, blue first.
using Rgb = std::uint32_t;

constexpr Rgb rgb(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return red << 16 | green << 8 | blue;
}
constexpr std::uint32_t redOf(Rgb colour) {
    return colour >> 16 & 0xFF;
}
constexpr std::uint32_t greenOf(Rgb colour) {
    return colour >> 8 & 0xFF;
}
constexpr std::uint32_t blueOf(Rgb colour) {
    return colour & 0xFF;
}

/// 0x00BBGGRR to 0x00RRGGBB and back.
constexpr std::uint32_t swappedRedBlue(std::uint32_t colour) {
    return rgb(blueOf(colour), greenOf(colour), redOf(colour));
}

/// Five or six bits as eight, so that all ones become 255.
constexpr std::uint32_t widened5(std::uint32_t value) {
    return value << 3 | value >> 2;
}
constexpr std::uint32_t widened6(std::uint32_t value) {
    return value << 2 | value >> 4;
}

/// Pixel memory of a surface, rows top-down.
struct PixelMemory {
    std::uint8_t* pixels = nullptr;
    int width = 0;
    int height = 0;
    std::size_t stride = 0;  // bytes from row to row
    int bits = 32;           // per pixel: 8, 16, 24 or 32

    std::uint8_t* at(std::int64_t x, std::int64_t y) const {
        return pixels + static_cast<std::size_t>(y) * stride +
               static_cast<std::size_t>(x) * static_cast<std::size_t>(bits / 8);
    }
};

/// How one depth keeps its pixels.
template <int Bits>
struct PixelFormat {
    static constexpr std::size_t kBytes = Bits / 8;

    static constexpr std::uint32_t packed(Rgb colour) {
        if constexpr (Bits == 8) {
            return (299 * redOf(colour) + 587 * greenOf(colour) + 114 * blueOf(colour) + 500) / 1000;
        } else if constexpr (Bits == 16) {
            return redOf(colour) >> 3 << 11 | greenOf(colour) >> 2 << 5 | blueOf(colour) >> 3;
        } else {
            return colour & 0xFFFFFF;
        }
    }
    static constexpr Rgb unpacked(std::uint32_t pixel) {
        if constexpr (Bits == 8) {
            return rgb(pixel, pixel, pixel);
        } else if constexpr (Bits == 16) {
            return rgb(widened5(pixel >> 11), widened6(pixel >> 5 & 0x3F), widened5(pixel & 0x1F));
        } else {
            return pixel & 0xFFFFFF;
        }
    }
    // Byte by byte through memcpy: the memory of a host need not be aligned.
    static void store(std::uint8_t* to, std::uint32_t pixel) { std::memcpy(to, &pixel, kBytes); }
    static std::uint32_t load(const std::uint8_t* from) {
        std::uint32_t pixel = 0;
        std::memcpy(&pixel, from, kBytes);
        return pixel;
    }
};

/// Calls `work` with the PixelFormat of a depth, so that its loops are compiled for that depth.
template <class Work>
decltype(auto) withFormat(int bits, Work&& work) {
    switch (bits) {
        case 8:
            return work(PixelFormat<8>{});
        case 16:
            return work(PixelFormat<16>{});
        case 24:
            return work(PixelFormat<24>{});
        default:
            return work(PixelFormat<32>{});
    }
}

/// `colour` over `background`; coverage 0 gives the background and 255 the colour, both exactly.
constexpr Rgb blended(Rgb background, Rgb colour, std::uint32_t coverage) {
    const auto mixed = [coverage](std::uint32_t below, std::uint32_t above) {
        return (below * (255 - coverage) + above * coverage + 127) / 255;
    };
    return rgb(mixed(redOf(background), redOf(colour)), mixed(greenOf(background), greenOf(colour)),
               mixed(blueOf(background), blueOf(colour)));
}

}  // namespace qvr
