// Lookup tables: the worked examples, and every entry of many windows and curves against the plain version.
#include "qvr/image/detail/displayTable.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "qvr/image/rawImage.h"
#include "reference/displayTable.h"

namespace {

constexpr int kMin = std::numeric_limits<int>::min(), kMax = std::numeric_limits<int>::max();

qvr::DisplayTable tableOf(qvr::DisplayWindow window, qvr::Curve curve) {
    qvr::DisplayTable table;
    table.fill(77);
    qvr::fillDisplayTable(window, curve, table);
    return table;
}

struct Grey {
    int type;
    std::vector<int> expected;  // at 1499, 1500, 2000, 2500, 2501
};

TEST(GreyTest, OfWindow1000At2000) {
    // Linear, power, exponential, logarithmic, sigmoid, and two numbers that name no curve.
    const Grey rows[] = {{0, {0, 0, 127, 254, 255}}, {1, {0, 0, 127, 255, 255}}, {2, {0, 0, 96, 255, 255}},
                         {3, {0, 0, 149, 255, 255}}, {4, {0, 0, 127, 255, 255}}, {5, {0, 0, 127, 254, 255}},
                         {-1, {0, 0, 127, 254, 255}}};
    for (const Grey& row : rows) {
        SCOPED_TRACE(row.type);
        const auto table = tableOf({1000, 2000}, {row.type, 1, 5});
        EXPECT_EQ((std::vector<int>{table[1499], table[1500], table[2000], table[2500], table[2501]}),
                  row.expected);
    }
}

TEST(DisplayTable, EqualsThePlainVersion) {
    std::mt19937 random(3);
    const auto between = [&](int low, int high) {
        return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
    };
    struct Setting {
        qvr::DisplayWindow window;
        qvr::Curve curve;
    };
    std::vector<Setting> settings;
    for (int i = 0; i < 150; ++i)
        settings.push_back({{between(-50, 20000), between(-3000, 18000)},
                            {between(-1, 5), between(-4, 9), between(-3, 15)}});
    for (int type = 0; type <= 4; ++type)
        for (const int k : {kMin, -800, -1, 0, 2, 800, kMax})
            for (const int center : {4000, kMin, kMax})
                for (const int width : {3000, 0, 1, -200, kMin, kMax})
                    settings.push_back({{width, center}, {type, k, k}});

    for (const auto& [window, curve] : settings) {
        SCOPED_TRACE(testing::Message() << "window " << window.width << '/' << window.center << " type "
                                        << curve.type << " k " << curve.k << " c " << curve.c);
        const auto table = tableOf(window, curve);
        std::array<std::uint8_t, qvr::kTable12Bits> table12;
        qvr::fillDisplayTable(window, curve, table12);
        const auto plain = [&w = window, &c = curve](int bits) {
            return reference::Table::ofWindow(w.width, w.center, c.type, c.k, c.c, bits);
        };
        const auto plain14 = plain(14), plain12 = plain(12);
        for (std::size_t i = 0; i < table.size(); ++i)
            ASSERT_EQ(table[i], plain14(static_cast<long>(i))) << "entry " << i;
        for (std::size_t i = 0; i < table12.size(); ++i)
            ASSERT_EQ(table12[i], plain12(static_cast<long>(i))) << "entry " << i << " of 12 bits";
    }
}

TEST(Create8BitsLUT, EqualsThePlainVersion) {
    for (int type = -1; type <= 5; ++type)
        for (const int k : {kMin, -2, -1, 0, 1, 3, 700, kMax})
            for (const auto& [low, high] : {std::pair{1500, 2500},
                                            {0, 16383},
                                            {700, 700},
                                            {-50, 90},
                                            {900, 800},
                                            {900, 899},
                                            {kMin, kMax},
                                            {16000, kMax}})
                for (const int size : {1, 300, 4096, 16384, 70000}) {
                    std::vector<std::uint8_t> table(static_cast<std::size_t>(size) + 1, 77);
                    ASSERT_EQ(rawImage::Create8BitsLUT(type, low, high, k, 5, size, table.data()), 1);
                    const reference::Table plain{low, high, type, k, 5, 0, size};
                    for (int i = 0; i < size; ++i)
                        ASSERT_EQ(table[static_cast<std::size_t>(i)], plain(i))
                            << "type " << type << " k " << k << " bounds " << low << ' ' << high << " size "
                            << size << " entry " << i;
                    ASSERT_EQ(table.back(), 77) << "behind the table";
                }
}

TEST(Create8BitsLUT, HasItsOwnFactors) {
    std::vector<std::uint8_t> table(16384, 77);
    const auto lut = [&](int type, int size) {
        rawImage::Create8BitsLUT(type, 1500, 2500, 1, 5, size, table.data());
    };
    lut(0, 0);
    lut(0, kMin);
    EXPECT_EQ(table, std::vector<std::uint8_t>(16384, 77));
    EXPECT_EQ(rawImage::Create8BitsLUT(0, 0, 9, 1, 5, 16384, nullptr), 1);
    lut(0, 16384);
    const auto display = tableOf({1000, 2000}, {});
    EXPECT_TRUE(std::equal(table.begin(), table.end(), display.begin()));
    lut(0, 4096);
    EXPECT_EQ(table[2500], 63);
    lut(4, 16384);
    EXPECT_EQ(table[1500], 96);   // 255 / (1 + e^0.5)
    EXPECT_EQ(table[2500], 158);  // 255 / (1 + e^-0.499)

    constexpr int kLong = 9'000'000;  // 255 for each value: more than 32 bits hold
    std::vector<std::uint8_t> large(kLong);
    EXPECT_EQ(rawImage::Create8BitsLUT(0, 0, kLong - 1, 1, 5, kLong, large.data()), 1);
    EXPECT_EQ(large.back(), (255LL * (kLong - 1) >> 14) % 256);
}

}  // namespace
