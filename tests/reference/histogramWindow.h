// The automatic window, bin by bin: the obvious version that the library's must equal.
#pragma once

#include <array>
#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

namespace reference {

inline std::pair<int, int> histogramWindow(const std::vector<std::uint16_t>& pixels, float a, float b) {
    std::vector<long> count(16384);
    long n = 0;
    for (const int v : pixels)
        if (v > 0 && v < 16383) ++count[static_cast<std::size_t>(v)], ++n;
    const auto at = [&](long bin) { return count[static_cast<std::size_t>(bin)]; };
    const auto sparse = [&](long bin) { return at(bin) > 0 && at(bin) < 30; };

    long p = 0;
    for (long i = 0; i < 16384; ++i)
        if (at(i) > at(p)) p = i;

    const auto tLow = static_cast<float>(static_cast<double>(n) * a);
    const auto tHigh = static_cast<float>(static_cast<double>(n) * b);
    long l = static_cast<long>(pixels.size()), h = 0, s = 0;
    for (long i = 0, haveLow = 0; i < 16384; ++i) {
        s += at(i);
        if (!haveLow && static_cast<double>(s) >= tLow) haveLow = 1, l = i;
        if (haveLow && static_cast<double>(s) >= tHigh) {
            h = i;
            break;
        }
    }

    long e = 0, q = 0, f = 0, from = p;
    if (p - l <= h - p) {
        while (at(from) >= 30) ++from;  // ends at the latest at 16383, which is never counted
        const long e0 = e = from;
        long m = 0;
        for (long i = e0; i < 16384; ++i)
            if (at(i) > m) m = at(i), q = i;
        const long t = m < 1000 ? static_cast<long>(static_cast<double>(m) * 0.1) : 30;
        for (long i = q; i > e0 && !f; --i) {
            if (at(i) == 0) continue;
            if (at(i) < t) e = i;
            if (at(i) < 40) f = 1;
        }
        from = q;
    } else {
        for (long i = p; i >= 1 && e == 0; --i)
            if (sparse(i)) e = i;
        for (long i = e, m = 0; i > l; --i)
            if (at(i) > m) m = at(i), q = i;
    }
    for (long i = from; i < 16384; ++i)
        if (sparse(i)) {
            h = i;
            break;
        }
    if (e == 0) e = (q + p) / 2;
    if (std::labs(p - q) >= 2000) l = f ? e : e - 200, h += 100;
    if (l < 0 || l > 16383 || h < 0 || h > 16383 || h < l) return {0, 16383};
    return {static_cast<int>(l), static_cast<int>(h)};
}

}  // namespace reference
