// Curves as plain arithmetic, which the compiler vectorises; the C library's functions give one value at a time.
#include "qvr/image/detail/curveValues.h"

#include <bit>
#include <cstdint>

#include "qvr/platform/detail/clones.h"

namespace qvr {

namespace {

inline __attribute__((always_inline)) double position(const CurvePositions& at, std::size_t i) {
    return (at.first + static_cast<double>(static_cast<std::int32_t>(i))) * at.inverse;
}

// e^x = 2^n * e^r with |r| <= ln 2 / 2, and a Taylor polynomial for e^r. Adding `kRound` rounds to a whole number, which
// then stands in the lowest bits.
inline __attribute__((always_inline)) double exponential(double x) {
    constexpr double kRound = 0x1.8p52;
    constexpr double kLog2E = 0x1.71547652b82fep0;
    constexpr double kLn2High = 0x1.62e42fefa0000p-1;
    constexpr double kLn2Low = 0x1.cf79abc9e3b3ap-40;
    const double shifted = x * kLog2E + kRound;
    const double n = shifted - kRound;
    const double r = (x - n * kLn2High) - n * kLn2Low;
    double p = 1.0 / 362880.0;
    p = p * r + 1.0 / 40320.0;
    p = p * r + 1.0 / 5040.0;
    p = p * r + 1.0 / 720.0;
    p = p * r + 1.0 / 120.0;
    p = p * r + 1.0 / 24.0;
    p = p * r + 1.0 / 6.0;
    p = p * r + 0.5;
    p = p * r + 1.0;
    p = p * r + 1.0;
    const std::uint64_t power = (std::bit_cast<std::uint64_t>(shifted) + 1023U) << 52;
    return p * std::bit_cast<double>(power);
}

// ln(1 + t) = 2 artanh(s) with s = t / (2 + t) <= 1/3.
inline __attribute__((always_inline)) double logarithm(double t) {
    const double s = t / (2.0 + t);
    const double q = s * s;
    double p = 1.0 / 19.0;
    p = p * q + 1.0 / 17.0;
    p = p * q + 1.0 / 15.0;
    p = p * q + 1.0 / 13.0;
    p = p * q + 1.0 / 11.0;
    p = p * q + 1.0 / 9.0;
    p = p * q + 1.0 / 7.0;
    p = p * q + 1.0 / 5.0;
    p = p * q + 1.0 / 3.0;
    p = p * q + 1.0;
    return 2.0 * s * p;
}

QVR_CLONES void fillPositions(const CurvePositions& at, double* __restrict values) {
    for (std::size_t i = 0; i < at.count; ++i) values[i] = position(at, i);
}

QVR_CLONES void multiply(double* __restrict values, const double* __restrict by, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) values[i] *= by[i];
}

QVR_CLONES void square(double* values, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) values[i] *= values[i];
}

QVR_CLONES void exponentials(const CurvePositions& at, double k, double* __restrict values) {
    for (std::size_t i = 0; i < at.count; ++i) values[i] = exponential(k * position(at, i));
}

QVR_CLONES void logarithms(const CurvePositions& at, double* __restrict values) {
    for (std::size_t i = 0; i < at.count; ++i) values[i] = logarithm(position(at, i));
}

QVR_CLONES void sigmoids(const CurvePositions& at, double k, double center, double* __restrict values) {
    for (std::size_t i = 0; i < at.count; ++i)
        values[i] = 1.0 / (1.0 + exponential(-k * (position(at, i) - center)));
}

}  // namespace

void powerValues(const CurvePositions& at, int k, double* values) {
    double power[kCurvePart];  // t, t^2, t^4, …
    fillPositions(at, power);
    for (std::size_t i = 0; i < at.count; ++i) values[i] = 1.0;
    for (int left = k; left != 0; left >>= 1) {
        if (left & 1) multiply(values, power, at.count);
        square(power, at.count);
    }
}

void exponentialValues(const CurvePositions& at, double k, double* values) {
    exponentials(at, k, values);
}

void logarithmicValues(const CurvePositions& at, double* values) {
    logarithms(at, values);
}

void sigmoidValues(const CurvePositions& at, double k, double center, double* values) {
    sigmoids(at, k, center, values);
}

}  // namespace qvr
