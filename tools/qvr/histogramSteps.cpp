// The walk, in the order in which the steps are shown.
#include "histogramSteps.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

#include "parse.h"

namespace qvr::tool {

namespace {

constexpr int kLast = kBins - 1;

std::uint32_t at(const BinCounts& counts, int bin) {
    return counts[static_cast<std::size_t>(bin)];
}
bool sparse(const BinCounts& counts, int bin) {
    return at(counts, bin) > 0 && at(counts, bin) < 30;
}

void findPercentiles(const BinCounts& counts, HistogramSteps& steps) {
    const float low = static_cast<float>(static_cast<double>(steps.counted) * 0.05f);
    const float high = static_cast<float>(static_cast<double>(steps.counted) * 0.95f);
    steps.percentileLow = steps.pixels;
    std::int64_t sum = 0;
    bool lowFound = false;
    for (int bin = 0; bin < kBins; ++bin) {
        sum += at(counts, bin);
        const auto reached = static_cast<double>(sum);
        if (!lowFound && reached >= static_cast<double>(low)) {
            steps.percentileLow = bin;
            lowFound = true;
        }
        if (lowFound && reached >= static_cast<double>(high)) {
            steps.percentileHigh = bin;
            return;
        }
    }
}

// Main peak in the lower half: the anatomy is looked for above it.
std::int64_t walkAbove(const BinCounts& counts, HistogramSteps& steps) {
    int first = steps.mainPeak;
    while (first < kBins && at(counts, first) >= 30) ++first;
    if (first == kBins) first = 0;
    steps.edge = first;
    const auto peak = std::max_element(counts.begin() + first, counts.end());
    steps.secondPeak = *peak == 0 ? 0 : static_cast<int>(peak - counts.begin());
    steps.threshold = *peak < 1000 ? truncatedInt(*peak * 0.1) : 30;
    for (int bin = steps.secondPeak; bin > first; --bin) {
        const auto count = at(counts, bin);
        if (count == 0) continue;
        if (count < static_cast<std::uint32_t>(steps.threshold)) steps.edge = bin;
        if (count < 40) {
            steps.stopped = true;
            break;
        }
    }
    for (int bin = steps.secondPeak; bin < kBins; ++bin)
        if (sparse(counts, bin)) return bin;
    return steps.percentileHigh;
}

// Main peak in the upper half: the anatomy lies around it.
std::int64_t walkAround(const BinCounts& counts, HistogramSteps& steps) {
    std::int64_t high = steps.percentileHigh;
    for (int bin = steps.mainPeak; bin > 0 && steps.edge == 0; --bin)
        if (sparse(counts, bin)) steps.edge = bin;
    for (int bin = steps.mainPeak; bin < kBins; ++bin)
        if (sparse(counts, bin)) {
            high = bin;
            break;
        }
    std::uint32_t best = 0;
    for (int bin = steps.edge; bin > steps.percentileLow; --bin)
        if (at(counts, bin) > best) {
            best = at(counts, bin);
            steps.secondPeak = bin;
        }
    return high;
}

}  // namespace

BinCounts countValues(const AdoptedImage& image, const Region& region) {
    BinCounts counts{};
    const auto corners = toolkitCorners(region, image.height);
    for (int row = corners.second.y; row < corners.first.y; ++row) {
        const auto* line =
            image.pixels.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(image.width);
        for (int column = corners.first.x; column < corners.second.x; ++column)
            ++counts[std::min<std::size_t>(line[column], kLast)];
    }
    return counts;
}

HistogramSteps histogramSteps(const BinCounts& all, std::int64_t pixels) {
    BinCounts counts = all;
    counts.front() = counts.back() = 0;  // black and saturated pixels say nothing about the anatomy
    HistogramSteps steps;
    steps.pixels = pixels;
    for (const auto count : counts) steps.counted += count;
    steps.mainPeak = static_cast<int>(std::max_element(counts.begin(), counts.end()) - counts.begin());
    findPercentiles(counts, steps);

    steps.lowerHalf = steps.mainPeak - steps.percentileLow <= steps.percentileHigh - steps.mainPeak;
    std::int64_t high = steps.lowerHalf ? walkAbove(counts, steps) : walkAround(counts, steps);
    if (steps.edge == 0) steps.edge = (steps.secondPeak + steps.mainPeak) / 2;
    steps.farApart = std::abs(steps.mainPeak - steps.secondPeak) >= 2000;
    std::int64_t low = steps.percentileLow;
    if (steps.farApart) {
        low = steps.stopped ? steps.edge : steps.edge - 200;
        high += 100;
    }
    steps.fullRange = low < 0 || low > kLast || high < 0 || high > kLast || high < low;
    steps.low = steps.fullRange ? 0 : static_cast<int>(low);
    steps.high = steps.fullRange ? kLast : static_cast<int>(high);
    return steps;
}

std::string describe(const HistogramSteps& steps) {
    std::string text;
    const auto line = [&text](const char* name, const std::string& value) {
        text += fmt::format("    {:<20}{}\n", name, value);
    };
    line("counted pixels", fmt::format("{} of {} (values 1..16382)", steps.counted, steps.pixels));
    line("main peak", fmt::format("{}", steps.mainPeak));
    line("percentile bounds",
         fmt::format("{}..{} (5 % and 95 % of the counted)", steps.percentileLow, steps.percentileHigh));
    line("side", steps.lowerHalf ? "main peak in the lower half: the window is looked for above it"
                                 : "main peak in the upper half: the window is looked for around it");
    line("edge", fmt::format("{}", steps.edge));
    line("second peak", steps.secondPeak ? fmt::format("{}", steps.secondPeak) : "none");
    line("valley threshold",
         steps.threshold < 0 ? "not used on this side" : fmt::format("{}", steps.threshold));
    line("stop flag", steps.stopped ? "1 (a bin below 40 ended the walk)" : "0");
    line("peaks apart",
         steps.farApart ? "2000 or more: the edge decides" : "less than 2000: the percentile side stands");
    line("result", fmt::format("{}..{}{}", steps.low, steps.high,
                               steps.fullRange ? " (out of range, so all of it)" : ""));
    return text;
}

nlohmann::ordered_json toJson(const HistogramSteps& steps) {
    return {{"pixels", steps.pixels},
            {"counted", steps.counted},
            {"main_peak", steps.mainPeak},
            {"percentile_low", steps.percentileLow},
            {"percentile_high", steps.percentileHigh},
            {"side", steps.lowerHalf ? "lower" : "upper"},
            {"edge", steps.edge},
            {"second_peak", steps.secondPeak},
            {"threshold",
             steps.threshold < 0 ? nlohmann::ordered_json() : nlohmann::ordered_json(steps.threshold)},
            {"stop", steps.stopped ? 1 : 0},
            {"low", steps.low},
            {"high", steps.high}};
}

std::string toCsv(const BinCounts& counts) {
    std::string text = "value,pixels\n";
    int first = 0;
    int last = kLast;
    while (first < last && at(counts, first) == 0) ++first;
    while (last > first && at(counts, last) == 0) --last;
    for (int bin = first; bin <= last; ++bin) text += fmt::format("{},{}\n", bin, at(counts, bin));
    return text;
}

}  // namespace qvr::tool
