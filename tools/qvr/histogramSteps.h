// The steps by which the automatic window is found, told for people.
//
// The library answers with two bounds only. This is its walk over the histogram a second time, with everything on the
// way kept; whoever shows it compares the bounds with the library's.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "adoption.h"
#include "regions.h"

namespace qvr::tool {

inline constexpr int kBins = 16384;
using BinCounts = std::array<std::uint32_t, kBins>;

/// How often every value occurs in a region; values above 16383 count as 16383.
BinCounts countValues(const AdoptedImage& image, const Region& region);

struct HistogramSteps {
    std::int64_t pixels = 0;   ///< of the region
    std::int64_t counted = 0;  ///< of them between 1 and 16382
    int mainPeak = 0;
    std::int64_t percentileLow = 0, percentileHigh = 0;
    bool lowerHalf = false;  ///< the main peak lies in the lower half of the percentile bounds
    int edge = 0;
    int secondPeak = 0;
    int threshold = -1;  ///< of the valley; -1 where there is none (main peak in the upper half)
    bool stopped = false;
    bool farApart =
        false;  ///< the two peaks lie at least 2000 apart, so the edge decides and not the percentiles
    bool fullRange = false;  ///< the bounds left 0..16383, so the full range stands instead
    int low = 0, high = 0;
};

/// The walk with the fractions 0.05 and 0.95.
HistogramSteps histogramSteps(const BinCounts& counts, std::int64_t pixels);

/// One line per step.
std::string describe(const HistogramSteps& steps);
nlohmann::ordered_json toJson(const HistogramSteps& steps);
/// "value,pixels" lines from the lowest to the highest value that occurs.
std::string toCsv(const BinCounts& counts);

}  // namespace qvr::tool
