// Pictures for tests, compared as wholes.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "qvr/image/rawImage.h"

/// Names the rows of a table of test cases by their member `name`.
inline constexpr auto nameOf = [](const auto& info) { return std::string(info.param.name); };

/// A picture in which neighbours and the two axes differ: value = 1 + 131 * row + 7 * column + base, cut to 14 bits.
inline std::vector<std::uint16_t> ramp(int width, int height, int base = 0) {
    std::vector<std::uint16_t> pixels;
    for (int row = 0; row < height; ++row)
        for (int column = 0; column < width; ++column)
            pixels.push_back(static_cast<std::uint16_t>((1 + 131 * row + 7 * column + base) & 16383));
    return pixels;
}

/// Compares two pictures; `stride` is the distance of the rows of `actual`.
template <class Pixel>
testing::AssertionResult samePicture(const std::vector<Pixel>& expected, const Pixel* actual, int width,
                                     int height, std::size_t stride) {
    for (std::size_t row = 0; row < static_cast<std::size_t>(height); ++row)
        for (std::size_t column = 0; column < static_cast<std::size_t>(width); ++column) {
            const Pixel wanted = expected.at(row * static_cast<std::size_t>(width) + column);
            const Pixel found = actual[row * stride + column];
            if (wanted == found) continue;
            return testing::AssertionFailure() << "at (column " << column << ", row " << row
                                               << "): " << +found << " instead of " << +wanted;
        }
    return testing::AssertionSuccess();
}
template <class Pixel>
testing::AssertionResult samePicture(const std::vector<Pixel>& expected, const Pixel* actual, int width,
                                     int height) {
    return samePicture(expected, actual, width, height, static_cast<std::size_t>(width));
}

/// The record of a new 14-bit image over `pixels`.
inline QVR_ST_RAW_IMAGE newRecord(int width, int height, const std::vector<std::uint16_t>& pixels,
                                  int windowWidth = 4000, int windowCenter = 3000) {
    return {.Height = height,
            .Width = width,
            .BAKWidth = width,
            .BAKHeight = height,
            .BitsStored = 14,
            .HighBit = 13,
            .PixelSpacing = 143,
            .WindowCenter = windowCenter,
            .WindowWidth = windowWidth,
            .PixelData = pixels.data()};
}
