// What the tests of kernels share: random pictures in buffers of exactly their size, and the versions to compare.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <random>
#include <span>
#include <vector>

#include "qvr/platform/detail/codePath.h"

namespace kernels {

inline constexpr qvr::CodePath kFastPaths[] = {qvr::CodePath::fastest, qvr::CodePath::portable};

inline const char* nameOf(qvr::CodePath path) {
    return path == qvr::CodePath::fastest    ? "fastest"
           : path == qvr::CodePath::portable ? "portable"
                                             : "plain";
}

class Random {
public:
    explicit Random(unsigned seed) : m_engine(seed) {}
    int between(int low, int high) {
        return low + static_cast<int>(m_engine() % (static_cast<unsigned>(high - low) + 1U));
    }
    /// Most values of 14 bits, some beyond, some runs of equal ones.
    std::vector<std::uint16_t> pixels(std::int64_t count) {
        const unsigned beyond = static_cast<unsigned>(between(0, 3));
        std::vector<std::uint16_t> values(static_cast<std::size_t>(count));
        for (std::size_t i = 0; i < values.size(); ++i) {
            const unsigned bits = static_cast<unsigned>(m_engine());
            const unsigned value = (bits >> 8 & 31U) < beyond ? bits >> 16 : bits >> 16 & 16383U;
            values[i] = i > 0 && (bits & 7U) == 0 ? values[i - 1] : static_cast<std::uint16_t>(value);
        }
        return values;
    }

private:
    std::mt19937 m_engine;
};

/// The first difference, or success.
template <class Value>
testing::AssertionResult same(std::span<const Value> expected, std::span<const Value> actual) {
    if (expected.size() != actual.size())
        return testing::AssertionFailure() << actual.size() << " values instead of " << expected.size();
    for (std::size_t i = 0; i < expected.size(); ++i)
        if (expected[i] != actual[i])
            return testing::AssertionFailure()
                   << "value " << i << " is " << +actual[i] << " instead of " << +expected[i];
    return testing::AssertionSuccess();
}
template <class Value>
testing::AssertionResult same(const std::vector<Value>& expected, const std::vector<Value>& actual) {
    return same(std::span<const Value>(expected), std::span<const Value>(actual));
}

}  // namespace kernels
