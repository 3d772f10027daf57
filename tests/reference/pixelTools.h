// Pixel tools value by value: the obvious versions that the library's must equal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "qvr/platform/types.h"

namespace reference {

/// Rows of `width` values, bottom row first.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint16_t> values{};

    static Picture filled(int width, int height, std::uint16_t value) {
        return {width, height,
                std::vector<std::uint16_t>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
                                           value)};
    }
    std::uint16_t& at(int x, int y) { return values.at(static_cast<std::size_t>(y * width + x)); }
    std::uint16_t at(int x, int y) const { return values.at(static_cast<std::size_t>(y * width + x)); }
};

/// A quarter turn; clockwise as displayed, that is with row 0 at the bottom.
inline Picture turned(const Picture& p, bool clockwise) {
    Picture out = Picture::filled(p.height, p.width, 0);
    for (int y = 0; y < p.height; ++y)
        for (int x = 0; x < p.width; ++x)
            (clockwise ? out.at(y, p.width - 1 - x) : out.at(p.height - 1 - y, x)) = p.at(x, y);
    return out;
}

inline Picture mirrored(const Picture& p, bool leftToRight) {
    Picture out = p;
    for (int y = 0; y < p.height; ++y)
        for (int x = 0; x < p.width; ++x)
            out.at(leftToRight ? p.width - 1 - x : x, leftToRight ? y : p.height - 1 - y) = p.at(x, y);
    return out;
}

/// `width` columns from r.left on of the rows r.bottom ... r.top - 1.
inline Picture cut(const Picture& p, const RECT& r, int width) {
    Picture out = Picture::filled(width, r.top > r.bottom ? r.top - r.bottom : 0, 0);
    for (int y = r.bottom; y < r.top; ++y)
        for (int x = 0; x < width; ++x) out.at(x, y - r.bottom) = p.at(r.left + x, y);
    return out;
}

/// The rectangle's columns, taken rightward from r.left, and rows, taken upward from r.bottom, in the middle.
inline Picture masked(const Picture& p, const RECT& r, std::uint16_t fill) {
    Picture out = Picture::filled(p.width, p.height, fill);
    const int width = std::abs(r.right - r.left), height = std::abs(r.top - r.bottom);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            out.at((p.width - width) / 2 + x, (p.height - height) / 2 + y) = p.at(r.left + x, r.bottom + y);
    return out;
}

/// The cut c; what of it lies outside k (in columns and rows of p) is filled.
inline Picture cutMasked(const Picture& p, const RECT& c, const RECT& k, std::uint16_t fill) {
    const Picture plain = cut(p, c, c.right - c.left);
    Picture out = Picture::filled(plain.width, plain.height, fill);
    for (int y = k.bottom; y < k.top; ++y)
        for (int x = k.left; x < k.left + std::abs(k.right - k.left); ++x)
            out.at(x - c.left, y - c.bottom) = plain.at(x - c.left, y - c.bottom);
    return out;
}

}  // namespace reference
