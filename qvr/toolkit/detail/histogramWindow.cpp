// The automatic window of 14-bit pixels.
//
// A radiograph's histogram has a main peak and often a second one (direct exposure or the collimated border beside the
// anatomy). When the two lie far apart, the window is laid around the anatomy's side of the valley between them;
// otherwise the percentile bounds stand.
#include "qvr/toolkit/detail/histogramWindow.h"

#include <algorithm>
#include <cstdlib>

#include "qvr/platform/detail/numbers.h"

namespace qvr {

namespace {

constexpr int kLastBin = kHistogramBins - 1;
constexpr std::uint32_t kSparse = 30;      // below this a bin is sparse, unless it is empty
constexpr std::uint32_t kStop = 40;        // the walk into the valley stops below this
constexpr std::uint32_t kHighPeak = 1000;  // a second peak from here on has the fixed valley threshold
constexpr std::uint32_t kValleyThreshold = 30;
constexpr int kPeakDistance = 2000;
constexpr int kMarginBelow = 200;
constexpr int kMarginAbove = 100;

// What the two walks find on their side of the main peak.
struct Valley {
    std::int64_t edge = 0;
    std::int64_t secondPeak = 0;
    bool stopped = false;
};

class Walk {
public:
    explicit Walk(const Histogram& histogram) : m_counts(histogram.counts) {}

    bool sparse(int bin) const { return count(bin) != 0 && count(bin) < kSparse; }
    std::uint32_t count(int bin) const { return m_counts[static_cast<std::size_t>(bin)]; }

    int mainPeak() const {
        return static_cast<int>(std::max_element(m_counts.begin(), m_counts.end()) - m_counts.begin());
    }

    // The first sparse bin from `from` upward, or `otherwise`.
    std::int64_t firstSparseFrom(int from, std::int64_t otherwise) const {
        for (int bin = from; bin <= kLastBin; ++bin)
            if (sparse(bin)) return bin;
        return otherwise;
    }

    Valley aboveMainPeak(int peak) const;
    Valley aroundMainPeak(int peak, std::int64_t low) const;

private:
    const std::array<std::uint32_t, kHistogramBins>& m_counts;
};

// The main peak lies in the lower half: the second peak is looked for above the first thin place behind it.
Valley Walk::aboveMainPeak(int peak) const {
    Valley valley;
    int first = peak;
    while (first <= kLastBin && count(first) >= kSparse) ++first;
    if (first > kLastBin) first = 0;
    valley.edge = first;

    const auto highest = std::max_element(m_counts.begin() + first, m_counts.end());
    if (*highest == 0) return valley;
    const int second = static_cast<int>(highest - m_counts.begin());
    valley.secondPeak = second;
    const std::uint32_t threshold =
        *highest < kHighPeak ? static_cast<std::uint32_t>(toInt(*highest * 0.1)) : kValleyThreshold;
    for (int bin = second; bin > first && !valley.stopped; --bin) {
        if (count(bin) == 0) continue;
        if (count(bin) < threshold) valley.edge = bin;
        valley.stopped = count(bin) < kStop;
    }
    return valley;
}

// The main peak lies in the upper half: the edge is the first thin place below it, the second peak lies under that.
Valley Walk::aroundMainPeak(int peak, std::int64_t low) const {
    Valley valley;
    int edge = peak;
    while (edge > 0 && !sparse(edge)) --edge;
    valley.edge = edge;
    std::uint32_t highest = 0;
    for (int bin = edge; bin > low; --bin) {
        if (count(bin) <= highest) continue;
        highest = count(bin);
        valley.secondPeak = bin;
    }
    return valley;
}

struct Percentiles {
    std::int64_t low;
    std::int64_t high;
};

Percentiles percentiles(const Histogram& histogram, std::int64_t pixelCount, float lowFraction,
                        float highFraction) {
    // Rounded to single precision once: which bin is reached first can depend on it.
    const double lowThreshold = static_cast<float>(static_cast<double>(histogram.counted) * lowFraction);
    const double highThreshold = static_cast<float>(static_cast<double>(histogram.counted) * highFraction);
    Percentiles bounds{pixelCount, 0};
    bool lowFound = false;
    std::int64_t sum = 0;
    for (int bin = 0; bin <= kLastBin; ++bin) {
        sum += histogram.counts[static_cast<std::size_t>(bin)];
        if (!lowFound && static_cast<double>(sum) >= lowThreshold) {
            lowFound = true;
            bounds.low = bin;
        }
        if (lowFound && static_cast<double>(sum) >= highThreshold) {
            bounds.high = bin;
            break;
        }
    }
    return bounds;
}

}  // namespace

HistogramBounds histogramWindow(const Histogram& histogram, std::int64_t pixelCount, float lowFraction,
                                float highFraction) {
    const Walk walk(histogram);
    const int peak = walk.mainPeak();
    auto [low, high] = percentiles(histogram, pixelCount, lowFraction, highFraction);

    const bool lowerHalf = peak - low <= high - peak;
    Valley valley = lowerHalf ? walk.aboveMainPeak(peak) : walk.aroundMainPeak(peak, low);
    high = walk.firstSparseFrom(lowerHalf ? static_cast<int>(valley.secondPeak) : peak, high);
    if (valley.edge == 0) valley.edge = (valley.secondPeak + peak) / 2;

    if (std::abs(peak - valley.secondPeak) >= kPeakDistance) {
        low = valley.stopped ? valley.edge : valley.edge - kMarginBelow;
        high += kMarginAbove;
    }
    if (low < 0 || low > kLastBin || high < 0 || high > kLastBin || high < low) return {0, kLastBin};
    return {static_cast<int>(low), static_cast<int>(high)};
}

}  // namespace qvr
