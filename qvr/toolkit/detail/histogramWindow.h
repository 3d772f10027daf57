// The automatic window of 14-bit pixels, from their histogram.
#pragma once

#include <array>
#include <cstdint>

#include "qvr/platform/detail/codePath.h"

namespace qvr {

inline constexpr int kHistogramBins = 16384;

/// One counter per pixel value. Bins 0 and 16383 stay empty: those values are not counted.
struct Histogram {
    std::array<std::uint32_t, kHistogramBins> counts{};
    std::int64_t counted = 0;
};

/// A buffer, or a part of one: `rows` rows of `width` values that start `stride` values apart.
struct PixelRows {
    const std::uint16_t* first = nullptr;
    std::int64_t width = 0;
    std::int64_t rows = 0;
    std::int64_t stride = 0;
};

struct HistogramBounds {
    int low = 0;
    int high = 0;
};

/// Clears `histogram` and counts every value v with 0 < v < 16383.
void countPixels(const PixelRows& pixels, Histogram& histogram, CodePath path = CodePath::fastest);

/// The bounds for a buffer of `pixelCount` pixels. Always within 0 … 16383, low not above high.
HistogramBounds histogramWindow(const Histogram& histogram, std::int64_t pixelCount, float lowFraction,
                                float highFraction);

}  // namespace qvr
