// Block means pixel by pixel: the obvious version that the library's conversion must equal.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

namespace reference {

struct View {
    int xOffset, yOffset;
    float xRatio, yRatio;
};

inline long long clampedTrunc(double v) {
    return v > 2147483647.0 ? 2147483647LL : static_cast<long long>(v);
}

/// The mean of each block of the bitmap, cut to 16383, or -1 where no pixel of the image lies in it.
inline std::vector<int> blockMeans(const std::vector<std::uint16_t>& pixels, int width, int height,
                                   const View& view, int bitmapWidth, int bitmapHeight) {
    const float fx = 1.0f / view.xRatio, fy = 1.0f / view.yRatio;
    const long long bw = std::max(1LL, clampedTrunc(fx)), bh = std::max(1LL, clampedTrunc(fy));
    std::vector<int> means;
    for (int y = 0; y < bitmapHeight; ++y)
        for (int x = 0; x < bitmapWidth; ++x) {
            const long long sx = (x ? clampedTrunc(static_cast<double>(x) * fx) : 0) + view.xOffset;
            const long long sy = (y ? clampedTrunc(static_cast<double>(y) * fy) : 0) + view.yOffset;
            long long sum = 0, count = 0;
            for (long long r = std::max(0LL, sy); r < std::min<long long>(sy + bh, height); ++r)
                for (long long c = std::max(0LL, sx); c < std::min<long long>(sx + bw, width); ++c, ++count)
                    sum += pixels[static_cast<std::size_t>(r * width + c)];
            means.push_back(count == 0 ? -1 : static_cast<int>(std::min(sum / count, 16383LL)));
        }
    return means;
}

}  // namespace reference
