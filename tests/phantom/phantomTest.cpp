// The made radiographs: the same everywhere, of 14 bits, and of every size.
#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
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

TEST(Phantom, HasTheSamePixelsOnEveryMachine) {
    const std::pair<PhantomOptions, std::uint64_t> samples[] = {
        {{PhantomKind::hand, 203, 251, 1}, 0x83ca67ec463c8905U},
        {{PhantomKind::hand, 203, 251, 2}, 0x2d27f0a60201d1f4U},
        {{PhantomKind::chest, 240, 239, 1}, 0x5f5030591aac02a1U}};
    for (const auto& [options, sum] : samples)
        EXPECT_EQ(checksum(makePhantom(options)), sum) << options.width << " x " << options.height;
}

TEST(Phantom, AnySizeIsFilledAndNoSizeIsEmpty) {
    for (const auto kind : {PhantomKind::hand, PhantomKind::chest}) {
        EXPECT_TRUE(makePhantom({kind, 0, 100, 1}).empty());
        EXPECT_TRUE(makePhantom({kind, 100, -1, 1}).empty());
        EXPECT_EQ(makePhantom({kind, 1, 1, 1}).size(), 1U);
        EXPECT_EQ(makePhantom({kind, 1, 700, 1}).size(), 700U);
        EXPECT_EQ(makePhantom({kind, 700, 3, 1}).size(), 2100U);
    }
}

}  // namespace
