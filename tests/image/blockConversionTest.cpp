// From pixels to bitmap: the fast conversion against the plain one, for every width, view and edge.
#include "qvr/image/detail/blockConversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>

#include "qvr/image/detail/displayPipeline.h"
#include "reference/blockMeans.h"
#include "reference/displayTable.h"
#include "support/pictures.h"
#include "support/refuseAllocation.h"

namespace {

constexpr int kMin = std::numeric_limits<int>::min(), kMax = std::numeric_limits<int>::max();
constexpr std::uint8_t kPadding = 0xA5;

struct Setting {
    qvr::DisplaySource source;
    qvr::DisplayView view;
    int width, height;  // of the bitmap
};

std::string describe(const Setting& s) {
    return "image " + std::to_string(s.source.width) + 'x' + std::to_string(s.source.height) + " bitmap " +
           std::to_string(s.width) + 'x' + std::to_string(s.height) + " offsets " +
           std::to_string(s.view.xOffset) + ' ' + std::to_string(s.view.yOffset) + " ratios " +
           testing::PrintToString(s.view.xRatio) + ' ' + testing::PrintToString(s.view.yRatio) + " curve " +
           std::to_string(s.source.curve.type);
}

// Converts into a bitmap full of kPadding; whatever lies behind a row must stay so.
testing::AssertionResult convertsLikeThePlainVersion(const Setting& s) {
    const qvr::DisplaySource& source = s.source;
    const std::vector<std::uint16_t> pixels(source.pixels, source.pixels + source.width * source.height);
    const auto means = reference::blockMeans(pixels, source.width, source.height,
                                             {s.view.xOffset, s.view.yOffset, s.view.xRatio, s.view.yRatio},
                                             s.width, s.height);
    const auto table = reference::Table::ofWindow(source.window.width, source.window.center,
                                                  source.curve.type, source.curve.k, source.curve.c, 14);
    const int stride = (s.width + 3) / 4 * 4;
    std::vector<std::uint8_t> expected(static_cast<std::size_t>(stride * s.height), kPadding);
    for (int y = 0; y < s.height; ++y)
        for (int x = 0; x < s.width; ++x) {
            const int mean = means[static_cast<std::size_t>(y * s.width + x)];
            expected[static_cast<std::size_t>(y * stride + x)] = mean < 0 ? std::uint8_t{0} : table(mean);
        }
    const auto bitmap = qvr::makeGreyBitmap(s.width, s.height, nullptr);
    std::fill_n(bitmap->Bits, bitmap->ImageSize, kPadding);
    if (!qvr::convertDisplay(source, s.view, bitmap.get())) return testing::AssertionFailure() << describe(s);
    return samePicture(expected, bitmap->Bits, stride, s.height) << "; " << describe(s);
}

TEST(BlockConversion, EqualsThePlainVersionAtEveryWidth) {
    std::mt19937 random(11);
    const auto between = [&](int low, int high) {
        return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
    };
    const auto ratio = [&] {
        constexpr float kRatios[] = {1.0f, 0.5f, 0.3f,  0.25f,  0.26666668f, 0.9f,
                                     1.7f, 3.0f, 1e-3f, 1e-30f, 1e-45f,      3e38f};
        const int i = between(0, 23);
        return i < 12 ? kRatios[i] : static_cast<float>(between(10, 1100)) / 1000.0f;
    };
    const auto offset = [&](int size) {
        const int i = between(0, 9);
        return i < 4 ? 0 : i == 4 ? kMin : i == 5 ? kMax : between(-size - 3, size + 3);
    };
    for (int width = 1; width <= 67; ++width)
        for (int round = 0; round < 12; ++round) {
            const int height = between(1, 40);
            std::vector<std::uint16_t> pixels(static_cast<std::size_t>(width * height));
            for (auto& pixel : pixels)
                pixel = static_cast<std::uint16_t>(random() & (round % 3 ? 0x3FFF : 0xFFFF));
            const Setting setting{{pixels.data(),
                                   width,
                                   height,
                                   14,
                                   {between(-10, 18000), between(0, 16383)},
                                   {between(0, 4), between(-2, 6), between(0, 10)}},
                                  {offset(width), offset(height), ratio(), ratio()},
                                  between(1, 70),
                                  between(1, 30)};
            ASSERT_TRUE(convertsLikeThePlainVersion(setting));
        }
}

TEST(BlockConversion, BlocksTooLargeFor32BitsAreAddedUp) {
    for (const int side : {256, 257, 300}) {
        auto pixels = ramp(side, side + 1);
        const float ratio = 1.0f / static_cast<float>(side);
        EXPECT_TRUE(convertsLikeThePlainVersion(
            {{pixels.data(), side, side + 1, 14, {9000, 8000}, {}}, {0, 0, ratio, ratio}, 2, 2}));
        std::fill(pixels.begin(), pixels.end(), std::uint16_t{65535});
        EXPECT_TRUE(convertsLikeThePlainVersion(
            {{pixels.data(), side, side + 1, 14, {16380, 8192}, {}}, {0, 0, ratio, ratio}, 2, 2}));
    }
}

TEST(BlockConversion, RefusalsLeaveTheBitmapAsItWas) {
    const auto pixels = ramp(20, 20);
    const qvr::DisplaySource source{pixels.data(), 20, 20, 14, {1000, 500}, {}};
    const auto bitmap = qvr::makeGreyBitmap(9, 9, nullptr);
    std::fill_n(bitmap->Bits, bitmap->ImageSize, kPadding);
    const auto untouched = [&] {
        return std::all_of(bitmap->Bits, bitmap->Bits + 12 * 9, [](int b) { return b == kPadding; });
    };
    for (const float bad :
         {0.0f, -0.5f, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        EXPECT_FALSE(qvr::convertDisplay(source, {0, 0, bad, 0.5f}, bitmap.get()));
        EXPECT_FALSE(qvr::convertDisplay(source, {0, 0, 0.5f, bad}, bitmap.get()));
    }
    qvr::DisplaySource noPixels = source;
    noPixels.pixels = nullptr;
    EXPECT_FALSE(qvr::convertDisplay(noPixels, {0, 0, 0.5f, 0.5f}, bitmap.get()));
    EXPECT_FALSE(qvr::convertDisplay(source, {0, 0, 0.5f, 0.5f}, nullptr));
    bitmap->InfoHeader->biWidth = 100;  // more than its storage
    EXPECT_FALSE(qvr::convertDisplay(source, {0, 0, 0.5f, 0.5f}, bitmap.get()));
    EXPECT_TRUE(untouched());
    bitmap->InfoHeader->biWidth = 9;
    for (long skipped = 0; skipped < 6; ++skipped) {
        const RefuseAllocation refusal(skipped);
        EXPECT_THROW(qvr::convertDisplay(source, {0, 0, 0.5f, 0.5f}, bitmap.get()), std::bad_alloc);
    }
    EXPECT_TRUE(untouched());
    EXPECT_TRUE(qvr::convertDisplay(source, {0, 0, 0.5f, 0.5f}, bitmap.get()));
}

}  // namespace
