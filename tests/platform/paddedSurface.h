// A surface over memory with room between its rows, for tests that must see every touched byte.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "qvr/platform/CRasterDC.h"

inline constexpr int kLow = std::numeric_limits<int>::min();
inline constexpr int kHigh = std::numeric_limits<int>::max();
inline constexpr int kWidth = 37, kHeight = 23;  // of the surface

// What a surface of a depth shows for a colour.
inline COLORREF shown(COLORREF colour, int bits) {
    const std::uint32_t r = colour & 255, g = colour >> 8 & 255, b = colour >> 16 & 255;
    if (bits == 8)
        return static_cast<COLORREF>(std::lround((299 * r + 587 * g + 114 * b) / 1000.0)) * 0x010101u;
    if (bits != 16) return colour;
    const auto kept = [](std::uint32_t value, int count) {
        const std::uint32_t top = value >> (8 - count), all = (1u << count) - 1;
        return (top << (8 - count)) | (top << (8 - count)) >> count | (top == all ? 255u >> count : 0);
    };
    return kept(b, 5) << 16 | kept(g, 6) << 8 | kept(r, 5);
}

// A surface over memory with room between its rows; every byte starts as kUntouched.
inline constexpr std::uint8_t kUntouched = 0xA5;
class PaddedSurface {
public:
    PaddedSurface(int width, int height, int bits)
        : m_used(static_cast<std::size_t>(width * bits / 8)),
          m_stride(m_used + 7),
          m_memory(m_stride * static_cast<std::size_t>(height), kUntouched),
          dc(m_memory.data(), width, height, m_stride, bits) {}

    bool paddingIsUntouched() const {
        for (std::size_t i = 0; i < m_memory.size(); ++i) {
            if (i % m_stride >= m_used && m_memory[i] != kUntouched) return false;
        }
        return true;
    }
    bool isUntouched() const { return m_memory == std::vector<std::uint8_t>(m_memory.size(), kUntouched); }

private:
    std::size_t m_used, m_stride;
    std::vector<std::uint8_t> m_memory;

public:
    CRasterDC dc;
};
