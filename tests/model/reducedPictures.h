// Thumbnail and preview byte by byte: the obvious version that the library's must equal.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "qvr/image/CDib.h"
#include "support/pictures.h"

namespace reference {

struct Picture {
    int width = 0, height = 0;
    std::vector<std::uint8_t> bytes;
    friend bool operator==(const Picture&, const Picture&) = default;
};

inline std::size_t strideOf(int width) {
    return static_cast<std::size_t>((width + 3) / 4 * 4);
}

/// The picture bytes of a bitmap, without padding; 0 x 0 for null.
inline Picture pictureOf(const CDib* bitmap) {
    if (!bitmap || !bitmap->InfoHeader) return {};
    Picture picture{bitmap->InfoHeader->biWidth, bitmap->InfoHeader->biHeight, {}};
    for (int y = 0; y < picture.height; ++y) {
        const std::uint8_t* const row = bitmap->Bits + static_cast<std::size_t>(y) * strideOf(picture.width);
        picture.bytes.insert(picture.bytes.end(), row, row + picture.width);
    }
    return picture;
}

inline Picture reduced(const CDib& display, int width, int height, float step, int block) {
    const std::size_t stride = strideOf(display.InfoHeader->biWidth);
    if (width < 1 || height < 1) return {};
    Picture picture{width, height, {}};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int row = static_cast<int>(y * static_cast<double>(step));
            const int column = static_cast<int>(x * static_cast<double>(step));
            int sum = 0;
            for (int i = 0; i < block; ++i)
                for (int j = 0; j < block; ++j)
                    sum += display.Bits[static_cast<std::size_t>(row + i) * stride +
                                        static_cast<std::size_t>(column + j)];
            picture.bytes.push_back(static_cast<std::uint8_t>(sum / (block * block)));
        }
    return picture;
}

inline Picture thumbnail(const CDib& display) {
    const auto stride = static_cast<int>(strideOf(display.InfoHeader->biWidth));
    return reduced(display, stride / 5, display.InfoHeader->biHeight / 5, 5.0f, 4);
}

inline Picture preview(const CDib& display) {
    const int width = display.InfoHeader->biWidth, height = display.InfoHeader->biHeight;
    if (static_cast<long long>(width) * height <= 600000) return {};
    const auto stride = static_cast<int>(strideOf(width));
    const auto scale = static_cast<float>(600.0 / (stride >= height ? stride : height));
    const auto step = static_cast<float>(1.0 / static_cast<double>(scale));
    return reduced(display, stride >= height ? 600 : static_cast<int>(stride * static_cast<double>(scale)),
                   stride >= height ? static_cast<int>(height * static_cast<double>(scale)) : 600, step,
                   static_cast<int>(step));
}

}  // namespace reference

inline testing::AssertionResult same(const reference::Picture& expected, const CDib* bitmap) {
    const reference::Picture found = reference::pictureOf(bitmap);
    if (found.width != expected.width || found.height != expected.height)
        return testing::AssertionFailure() << found.width << " x " << found.height << " instead of "
                                           << expected.width << " x " << expected.height;
    return samePicture(expected.bytes, found.bytes.data(), found.width, found.height);
}
