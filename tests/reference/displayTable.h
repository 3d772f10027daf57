// One entry of a lookup table at a time: the obvious version that the library's must equal.
#pragma once

#include <cmath>
#include <cstdint>

namespace reference {

inline std::uint8_t lowByte(double v) {
    return std::fabs(v) < 9.2e18 ? static_cast<std::uint8_t>(static_cast<long long>(v) & 255)
                                 : std::uint8_t{0};
}

/// bits 14 or 12: a table for pixels of that depth; 0: the table of Create8BitsLUT with its low, high and size.
struct Table {
    long long low, high;
    int type, k, c, bits;
    long long size = 0;

    static Table ofWindow(int width, int center, int type, int k, int c, int bits) {
        const long long half = width / 2;
        return {center - half, center + half, type, k, c, bits};
    }
    std::uint8_t operator()(long long i) const {
        if (i < low) return 0;
        if (i > high) return 255;
        if (bits != 0 && high == low) return 0;
        const double d = static_cast<double>(i - low), kd = k;
        const long long values = high - low + 1;
        const float inv = static_cast<float>(1.0 / static_cast<double>(bits ? high - low : values));
        const auto center = static_cast<float>(c * static_cast<double>(0.1f));
        const double t = d * inv;
        switch (type) {
            case 1:
                return lowByte(255.0 * std::pow(t, kd));
            case 2: {
                const auto a = static_cast<float>(1.0 / (std::exp(kd) - 1.0));
                return lowByte(255.0 * (std::exp(static_cast<double>(k * (i - low)) * inv) - 1.0) * a);
            }
            case 3: {
                const auto l = static_cast<float>(1.0 / std::log(bits ? 2.0 : kd + 1.0));
                return lowByte(255.0 * std::log(1.0 + t) * l);
            }
            case 4: {
                const double logistic = 1.0 / (1.0 + std::exp(-kd * (t - center)));
                if (bits == 0) return lowByte(255.0 * 1.0 / (1.0 + std::exp(-kd * (t - center))));
                const auto s0 = static_cast<float>(1.0 / (1.0 + std::exp(kd * center)));
                const auto g = static_cast<float>(1.0 / (1.0 / (1.0 + std::exp(-kd * (1.0 - center))) - s0));
                return lowByte(255.0 * (logistic - s0) * g);
            }
            default:
                if (bits == 0) return static_cast<std::uint8_t>((255 * size / values * (i - low)) >> 14);
                return static_cast<std::uint8_t>(((255LL << bits) / values * (i - low)) >> bits);
        }
    }
};

}  // namespace reference
