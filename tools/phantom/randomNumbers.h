// randomNumbers: numbers that are the same on every machine, in a row or by position.
#pragma once

#include <cstdint>

namespace qvr {

/// Scrambles 64 bits so that neighbouring inputs have unrelated outputs.
constexpr std::uint64_t scrambled(std::uint64_t value) {
    value += 0x9e3779b97f4a7c15U;
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9U;
    value = (value ^ (value >> 27)) * 0x94d049bb133111ebU;
    return value ^ (value >> 31);
}

/// 64 random bits as a number from 0 up to, not including, 1.
constexpr double unitInterval(std::uint64_t bits) {
    return static_cast<double>(bits >> 11) * 0x1p-53;
}

/// About normally distributed, mean 0 and deviation 1, never beyond 3.5: the sum of four 16-bit numbers.
constexpr double bellCurve(std::uint64_t bits) {
    const auto sum = (bits & 0xffffU) + ((bits >> 16) & 0xffffU) + ((bits >> 32) & 0xffffU) + (bits >> 48);
    return (static_cast<double>(sum) - 131070.0) * (1.0 / 37837.0);
}

class RandomNumbers {
public:
    explicit RandomNumbers(std::uint64_t seed) : m_state(seed) {}

    std::uint64_t bits() { return m_state = scrambled(m_state); }
    double between(double low, double high) { return low + (high - low) * unitInterval(bits()); }

private:
    std::uint64_t m_state;
};

}  // namespace qvr
