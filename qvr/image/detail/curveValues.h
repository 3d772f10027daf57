// Many values of a curve at once, close enough to tell most grey levels.
#pragma once

#include <cstddef>

namespace qvr {

/// The values t^k, e^(k t), ln(1 + t) and 1 / (1 + e^(-k (t - center))) for t = (first + i) * inverse, i from 0. They
/// differ from the exact ones by less than kCurveError times the largest value of the curve, and from processor to
/// processor not at all.
inline constexpr double kCurveError = 1e-10;
inline constexpr std::size_t kCurvePart = 512;  ///< most values of one call
inline constexpr double kLargestExponent = 600.0;

struct CurvePositions {
    double first = 0.0;  ///< a whole number
    double inverse = 0.0;
    std::size_t count = 0;
};

/// @param k  1 … 64; t at most 1.001
void powerValues(const CurvePositions& at, int k, double* values);
/// @param k  k * t within ± kLargestExponent
void exponentialValues(const CurvePositions& at, double k, double* values);
/// t within 0 … 1.001
void logarithmicValues(const CurvePositions& at, double* values);
/// @param k,center  k * (t - center) within ± kLargestExponent
void sigmoidValues(const CurvePositions& at, double k, double center, double* values);

}  // namespace qvr
