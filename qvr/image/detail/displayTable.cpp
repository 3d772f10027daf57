// Table entries. Curves are evaluated in double precision from factors that were rounded to single precision, so that
// the last grey level is the same everywhere.
#include "qvr/image/detail/displayTable.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "qvr/image/detail/curveValues.h"
#include "qvr/platform/detail/clones.h"
#include "qvr/platform/detail/numbers.h"

namespace qvr {

namespace {

// Everything about a table that does not change from entry to entry.
struct TableRule {
    Curve curve;
    std::int64_t low = 0;
    std::int64_t high = 0;
    std::int64_t step = 0;  // linear: fixed-point grey per pixel value
    int shift = 14;
    double inverse = 0.0;       // 1 / range
    double center = 0.0;        // sigmoid: its centre, as a part of the window
    double expScale = 0.0;      // exponential
    double logScale = 0.0;      // logarithmic
    double sigmoidStart = 0.0;  // sigmoid: what is taken away and what the rest is multiplied by
    double sigmoidScale = 1.0;
    bool wholeSigmoid = true;  // scaled so that it starts at 0 and ends at 255
};

double single(double value) {
    return static_cast<float>(value);
}

// The low 8 bits of the truncated value; 0 where there is no such integer.
std::uint8_t lowByte(double value) {
    if (!(std::abs(value) < 9223372036854775808.0)) return 0;
    return static_cast<std::uint8_t>(static_cast<std::int64_t>(value));
}

std::uint8_t curveEntry(const TableRule& rule, std::int64_t aboveLow) {
    const double k = rule.curve.k;
    const double t = static_cast<double>(aboveLow) * rule.inverse;
    switch (rule.curve.type) {
        case 1:
            return lowByte(255.0 * std::pow(t, k));
        case 2:
            return lowByte(255.0 *
                           (std::exp(static_cast<double>(rule.curve.k * aboveLow) * rule.inverse) - 1.0) *
                           rule.expScale);
        case 3:
            return lowByte(255.0 * std::log(1.0 + t) * rule.logScale);
        case 4: {
            const double bend = 1.0 + std::exp(-k * (t - rule.center));
            if (!rule.wholeSigmoid) return lowByte(255.0 / bend);
            return lowByte(255.0 * (1.0 / bend - rule.sigmoidStart) * rule.sigmoidScale);
        }
        default:
            return static_cast<std::uint8_t>((rule.step * aboveLow) >> rule.shift);
    }
}

// The rule: the entries first … last - 1, one by one.
void fillPlainly(const TableRule& rule, std::int64_t first, std::int64_t last, std::uint8_t* table) {
    for (std::int64_t i = first; i < last; ++i) table[i] = curveEntry(rule, i - rule.low);
}

// A curve value and what it is multiplied by and added to for a grey level.
struct CurveScale {
    double add = 0.0;
    double multiply = 0.0;
};

// What turns curveValues() into grey levels, when they are close enough for that: their error must stay
// below 1e-5 for every entry.
std::optional<CurveScale> curveScale(const TableRule& rule, std::int64_t last) {
    constexpr double kLargestScale = 100.0;
    const double k = rule.curve.k;
    const double end = static_cast<double>(last - rule.low) * rule.inverse;  // t is 0 … end
    if (!(end <= 1.001)) return std::nullopt;
    CurveScale scale{0.0, 255.0};
    switch (rule.curve.type) {
        case 1:
            if (k < 1 || k > 64) return std::nullopt;
            break;
        case 2:
            if (std::abs(k) * end > kLargestExponent) return std::nullopt;
            scale = {-1.0, 255.0 * rule.expScale};
            if (!(std::abs(rule.expScale) * std::exp(std::max(k * end, 0.0)) < kLargestScale))
                return std::nullopt;
            return scale;
        case 3:
            scale.multiply = 255.0 * rule.logScale;
            break;
        case 4:
            if (std::abs(k) * (end + std::abs(rule.center)) > kLargestExponent) return std::nullopt;
            if (rule.wholeSigmoid) scale = {-rule.sigmoidStart, 255.0 * rule.sigmoidScale};
            break;
        default:
            return std::nullopt;
    }
    return std::abs(scale.multiply) < 255.0 * kLargestScale ? std::optional(scale) : std::nullopt;
}

void curveValues(const TableRule& rule, const CurvePositions& at, double* values) {
    if (rule.curve.type == 1) return powerValues(at, rule.curve.k, values);
    if (rule.curve.type == 2) return exponentialValues(at, rule.curve.k, values);
    if (rule.curve.type == 3) return logarithmicValues(at, values);
    sigmoidValues(at, rule.curve.k, rule.center, values);
}

// Grey levels of close values, and whether a level is in doubt since its value lies next to a whole number.
QVR_CLONES void truncateValues(const double* __restrict values, std::size_t count, const CurveScale& scale,
                               std::uint8_t* __restrict grey, std::uint8_t* __restrict doubt) {
    constexpr double kRound = 0x1.8p52;  // added and taken away, leaves the nearest whole number
    constexpr double kDoubts = 1e5;      // within 1 / kDoubts of it
    const double add = scale.add;
    const double multiply = scale.multiply;
    for (std::size_t i = 0; i < count; ++i) {
        const double value = (values[i] + add) * multiply;
        const double distance = std::abs(value - ((value + kRound) - kRound)) * kDoubts;
        grey[i] = static_cast<std::uint8_t>(static_cast<std::int32_t>(value));
        doubt[i] = static_cast<std::int32_t>(distance) == 0 ? 1 : 0;
    }
}

// Curves in vectors: values that are good to a part of 1e-5 tell the grey level unless they lie next to a whole number,
// and those few entries are evaluated by the rule. A fifth of the time of the rule.
void fillCurve(const TableRule& rule, const CurveScale& scale, std::int64_t first, std::int64_t last,
               std::uint8_t* table) {
    double values[kCurvePart];
    std::uint8_t doubt[kCurvePart];
    for (std::int64_t begin = first; begin < last; begin += kCurvePart) {
        const auto count = std::min(static_cast<std::size_t>(last - begin), kCurvePart);
        curveValues(rule, {static_cast<double>(begin - rule.low), rule.inverse, count}, values);
        truncateValues(values, count, scale, table + begin, doubt);
        const std::uint8_t* const end = doubt + count;
        for (const std::uint8_t* at = doubt; (at = static_cast<const std::uint8_t*>(std::memchr(
                                                  at, 1, static_cast<std::size_t>(end - at)))) != nullptr;
             ++at) {
            const std::int64_t entry = begin + (at - doubt);
            table[entry] = curveEntry(rule, entry - rule.low);
        }
    }
}

// The linear curve over values that 32 bits hold.
QVR_CLONES void fillRamp(std::int32_t step, std::int32_t aboveLow, int shift, std::size_t count,
                         std::uint8_t* __restrict table) {
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t above = aboveLow + static_cast<std::int32_t>(i);
        table[i] = static_cast<std::uint8_t>((step * above) >> shift);
    }
}

void fillTable(const TableRule& rule, std::span<std::uint8_t> table, CodePath path) {
    const auto size = static_cast<std::int64_t>(table.size());
    const std::int64_t first = std::clamp<std::int64_t>(rule.low, 0, size);
    const std::int64_t last = std::clamp<std::int64_t>(rule.high + 1, first, size);
    std::fill(table.begin(), table.begin() + first, std::uint8_t{0});
    std::fill(table.begin() + last, table.end(), std::uint8_t{255});
    const bool curved = rule.curve.type >= 1 && rule.curve.type <= 4;
    const auto scale = curveScale(rule, last);
    if (path == CodePath::plain || first == last) return fillPlainly(rule, first, last, table.data());
    if (scale) return fillCurve(rule, *scale, first, last, table.data());
    constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
    const std::int64_t farthest = last - rule.low;
    if (!curved && farthest <= kLargest && rule.step <= kLargest / farthest)
        return fillRamp(static_cast<std::int32_t>(rule.step), static_cast<std::int32_t>(first - rule.low),
                        rule.shift, static_cast<std::size_t>(last - first), table.data() + first);
    fillPlainly(rule, first, last, table.data());
}

// Factors that depend on the curve alone.
TableRule ruleOf(const Curve& curve) {
    TableRule rule;
    rule.curve = curve;
    rule.center = single(static_cast<double>(curve.c) * 0.1f);
    rule.expScale = single(1.0 / (std::exp(static_cast<double>(curve.k)) - 1.0));
    return rule;
}

void fillWindowTable(const DisplayWindow& window, const Curve& curve, std::span<std::uint8_t> table,
                     int fractionBits, CodePath path) {
    const std::int64_t half = window.width / 2;
    TableRule rule = ruleOf(curve);
    rule.low = window.center - half;
    rule.high = window.center + half;
    const std::int64_t range = rule.high - rule.low;
    if (range > 0) {
        const double k = curve.k;
        rule.step = (std::int64_t{255} << fractionBits) / (range + 1);
        rule.shift = fractionBits;
        rule.inverse = single(1.0 / static_cast<double>(range));
        rule.logScale = single(1.0 / std::log(2.0));
        rule.sigmoidStart = single(1.0 / (1.0 + std::exp(k * rule.center)));
        rule.sigmoidScale =
            single(1.0 / (1.0 / (1.0 + std::exp(-k * (1.0 - rule.center))) - rule.sigmoidStart));
    } else {
        rule.curve.type = 0;  // a single value: its entry is 0 for every curve
    }
    fillTable(rule, table, path);
}

}  // namespace

std::optional<GreyRamp> greyRamp(const DisplayWindow& window, const Curve& curve, int bits) {
    constexpr std::int64_t kFarthest = std::int64_t{1} << 30;
    const std::int64_t half = window.width / 2;
    const std::int64_t low = window.center - half;
    const std::int64_t high = window.center + half;
    if ((curve.type >= 1 && curve.type <= 4) || high <= low || low < -kFarthest || high > kFarthest)
        return std::nullopt;
    const std::int64_t step = (std::int64_t{255} << bits) / (high - low + 1);
    return GreyRamp{static_cast<int>(low), static_cast<int>(high), static_cast<int>(step), bits};
}

void fillDisplayTable(const DisplayWindow& window, const Curve& curve,
                      std::span<std::uint8_t, kTable14Bits> table, CodePath path) noexcept {
    fillWindowTable(window, curve, table, 14, path);
}

void fillDisplayTable(const DisplayWindow& window, const Curve& curve,
                      std::span<std::uint8_t, kTable12Bits> table, CodePath path) noexcept {
    fillWindowTable(window, curve, table, 12, path);
}

void fillBoundsTable(int low, int high, const Curve& curve, std::span<std::uint8_t> table,
                     CodePath path) noexcept {
    TableRule rule = ruleOf(curve);
    rule.low = low;
    rule.high = high;
    rule.wholeSigmoid = false;
    if (low <= high) {
        const std::int64_t values = rule.high - rule.low + 1;
        rule.step = 255 * static_cast<std::int64_t>(table.size()) / values;
        rule.inverse = single(1.0 / static_cast<double>(values));
        rule.logScale = single(1.0 / std::log(static_cast<double>(curve.k) + 1.0));
    }
    fillTable(rule, table, path);
}

}  // namespace qvr
