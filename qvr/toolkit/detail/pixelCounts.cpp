// The histogram's counters. What limits counting is not memory but increments that wait for the one before to the same
// counter, and counters that do not fit into the nearest cache.
#include <cstring>

#include "qvr/platform/detail/clones.h"
#include "qvr/toolkit/detail/histogramWindow.h"

namespace qvr {

namespace {

constexpr std::uint16_t kLastBin = kHistogramBins - 1;

// The rule, but for the two bins at the ends, which are emptied afterwards.
void countPlainly(const PixelRows& pixels, Histogram& histogram) {
    for (std::int64_t row = 0; row < pixels.rows; ++row)
        for (std::int64_t x = 0; x < pixels.width; ++x) {
            const std::uint16_t value = pixels.first[row * pixels.stride + x];
            ++histogram.counts[value < kLastBin ? value : kLastBin];
        }
}

// Neighbouring pixels, which are often equal, are counted in different banks, and 16-bit counters let both banks stay in
// the nearest cache; they are emptied into the histogram before one of them can overflow. Equal pixels in a row, as in a
// collimated border, are counted at once. Three quarters of the time of one bank of 32-bit counters; four banks, or a
// look at every four pixels, take longer than they save.
class Banks {
public:
    void count(const std::uint16_t* values, std::int64_t count, Histogram& histogram) {
        while (count > 0) {
            const std::int64_t part = count < m_left ? count : m_left;
            add(values, part);
            values += part;
            count -= part;
            m_left -= (part + 1) / 2 * 2;  // an odd one out goes to the first bank
            if (m_left == 0) empty(histogram);
        }
    }

    void empty(Histogram& histogram) {
        flush(m_counters, histogram.counts.data());
        std::memset(m_counters, 0, sizeof m_counters);
        m_left = kMost;
    }

private:
    // No counter grows by more than one for every two pixels.
    static constexpr std::int64_t kMost = 131070;
    static constexpr std::size_t kBanks = 2;
    using Counters = std::uint16_t[kBanks][kHistogramBins];

    void addOne(std::uint16_t value, std::int64_t place) {
        ++m_counters[static_cast<std::size_t>(place % 2)][value < kLastBin ? value : kLastBin];
    }

    static std::uint64_t fourOf(const std::uint16_t* values) {
        std::uint64_t four;
        std::memcpy(&four, values, sizeof four);
        return four;
    }

    void addFour(std::uint64_t four) {
        ++m_counters[0][four & 0xFFFFU];
        ++m_counters[1][four >> 16 & 0xFFFFU];
        ++m_counters[0][four >> 32 & 0xFFFFU];
        ++m_counters[1][four >> 48];
    }

    // Whether `count` values are one and the same; the last are looked at first, as they hardly ever are.
    static bool areEqual(const std::uint16_t* values, std::int64_t count) {
        const std::uint64_t four = fourOf(values);
        if (four != fourOf(values + count - 4)) return false;
        std::uint64_t differing = four ^ (four >> 16 | four << 48);
        for (std::int64_t k = 4; k < count; k += 4) differing |= four ^ fourOf(values + k);
        return differing == 0;
    }

    void add(const std::uint16_t* values, std::int64_t count) {
        constexpr std::uint64_t kBeyond = 0xC000C000C000C000U;  // bits of values above 16383
        constexpr std::int64_t kTogether = 32;
        std::int64_t x = 0;
        for (; x + kTogether <= count; x += kTogether) {
            const std::uint16_t first = values[x];
            if (first < kHistogramBins && areEqual(values + x, kTogether)) {
                for (auto& bank : m_counters)
                    bank[first] = static_cast<std::uint16_t>(bank[first] + kTogether / 2);
                continue;
            }
            // Read again for every four: held in registers, all of them would not leave enough for the addresses.
            for (std::int64_t k = 0; k < kTogether; k += 4) {
                const std::uint64_t four = fourOf(values + x + k);
                if ((four & kBeyond) == 0)
                    addFour(four);
                else
                    for (std::int64_t i = 0; i < 4; ++i) addOne(values[x + k + i], i);
            }
        }
        for (; x < count; ++x) addOne(values[x], x);
    }

    QVR_CLONES static void flush(const Counters& banks, std::uint32_t* __restrict counts) {
        for (std::size_t bin = 0; bin < kHistogramBins; ++bin)
            counts[bin] += std::uint32_t{banks[0][bin]} + banks[1][bin];
    }

    Counters m_counters = {};
    std::int64_t m_left = kMost;  // pixels until a counter could overflow
};

}  // namespace

void countPixels(const PixelRows& pixels, Histogram& histogram, CodePath path) {
    histogram.counts.fill(0);
    if (path == CodePath::plain) {
        countPlainly(pixels, histogram);
    } else {
        Banks banks;
        for (std::int64_t row = 0; row < pixels.rows; ++row)
            banks.count(pixels.first + row * pixels.stride, pixels.width, histogram);
        banks.empty(histogram);
    }
    histogram.counts[0] = 0;
    histogram.counts[kLastBin] = 0;
    histogram.counted = 0;
    for (const std::uint32_t count : histogram.counts) histogram.counted += count;
}

}  // namespace qvr
