// The made radiographs: the same everywhere, of 14 bits, and of a shape that betrays a mirrored or turned picture.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "tools/phantom/phantom.h"

namespace {

using qvr::makePhantom;
using qvr::PhantomKind;
using qvr::PhantomOptions;
using PixelBuffer = std::vector<std::uint16_t>;

/// FNV-1a over the values, low byte first.
std::uint64_t checksum(const PixelBuffer& pixels) {
    std::uint64_t sum = 0xcbf29ce484222325U;
    for (const unsigned value : pixels) {
        sum = (sum ^ (value & 0xffU)) * 0x100000001b3U;
        sum = (sum ^ (value >> 8)) * 0x100000001b3U;
    }
    return sum;
}

struct Sample {
    const char* name;
    PhantomOptions options;
    std::uint64_t checksum;
    bool letterOnTheRight;

    friend void PrintTo(const Sample& sample, std::ostream* out) { *out << sample.name; }
};

class PhantomTest : public testing::TestWithParam<Sample> {
protected:
    PhantomOptions m_options = GetParam().options;
    PixelBuffer m_pixels = makePhantom(m_options);

    [[nodiscard]] int at(int x, int fromTop) const {
        const int row = m_options.height - 1 - fromTop;
        return m_pixels.at(static_cast<std::size_t>(row) * static_cast<std::size_t>(m_options.width) +
                           static_cast<std::size_t>(x));
    }
    [[nodiscard]] double shareBetween(int low, int high) const {
        const auto inside = std::count_if(m_pixels.begin(), m_pixels.end(),
                                          [&](int value) { return value >= low && value <= high; });
        return static_cast<double>(inside) / static_cast<double>(m_pixels.size());
    }
};

TEST_P(PhantomTest, HasTheSamePixelsOnEveryMachine) {
    EXPECT_EQ(checksum(m_pixels), GetParam().checksum);
}

TEST_P(PhantomTest, LooksLikeARadiograph) {
    ASSERT_EQ(m_pixels.size(), static_cast<std::size_t>(m_options.width * m_options.height));
    EXPECT_LE(*std::max_element(m_pixels.begin(), m_pixels.end()), 16383);
    EXPECT_GT(shareBetween(0, 40), 0.03) << "collimated border";
    EXPECT_LT(shareBetween(0, 40), 0.25) << "collimated border";
    EXPECT_GT(shareBetween(400, 900), 0.01) << "direct exposure";
    EXPECT_GT(shareBetween(2000, 9999), 0.15) << "body";
    for (const int x : {0, m_options.width - 1}) {
        for (const int y : {0, m_options.height - 1}) EXPECT_LE(at(x, y), 40) << "corner " << x << ", " << y;
    }
    const int middle = at(m_options.width / 2, m_options.height * 3 / 4);
    EXPECT_GT(middle, 3000) << "bones and soft tissue are brighter than direct exposure";
}

TEST_P(PhantomTest, ShowsTheLetterInItsUpperCorner) {
    long long sumX = 0;
    long long sumY = 0;
    long long lead = 0;
    for (int y = 0; y < m_options.height / 3; ++y) {
        for (int x = 0; x < m_options.width; ++x) {
            if (at(x, y) < 10800) continue;
            sumX += x;
            sumY += y;
            ++lead;
        }
    }
    ASSERT_GT(lead, 20);
    EXPECT_EQ(sumX / lead > m_options.width / 2, GetParam().letterOnTheRight);
    EXPECT_LT(sumY / lead, m_options.height / 3);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, PhantomTest,
    testing::Values(Sample{"hand", {PhantomKind::hand, 203, 251, 1}, 0x83ca67ec463c8905U, false},
                    Sample{"handOfAnotherSeed", {PhantomKind::hand, 203, 251, 2}, 0x2d27f0a60201d1f4U, false},
                    Sample{"chest", {PhantomKind::chest, 240, 239, 1}, 0x5f5030591aac02a1U, true}),
    [](const testing::TestParamInfo<Sample>& sample) { return std::string(sample.param.name); });

TEST(PhantomSizeTest, AnySizeIsFilledAndNoSizeIsEmpty) {
    for (const auto kind : {PhantomKind::hand, PhantomKind::chest}) {
        EXPECT_TRUE(makePhantom({kind, 0, 100, 1}).empty());
        EXPECT_TRUE(makePhantom({kind, 100, -1, 1}).empty());
        EXPECT_EQ(makePhantom({kind, 1, 1, 1}).size(), 1U);
        EXPECT_EQ(makePhantom({kind, 1, 700, 1}).size(), 700U);
        EXPECT_EQ(makePhantom({kind, 700, 3, 1}).size(), 2100U);
    }
}

}  // namespace
