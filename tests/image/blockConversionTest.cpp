// From pixels to bitmap: the conversion against the plain one at every edge of a view, and what it refuses.
#include "qvr/image/detail/blockConversion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "qvr/image/detail/displayPipeline.h"
#include "reference/blockMeans.h"
#include "reference/displayTable.h"
#include "support/pictures.h"
#include "support/refuseAllocation.h"

namespace {

constexpr int kMin = std::numeric_limits<int>::min(), kMax = std::numeric_limits<int>::max();
constexpr std::uint8_t kPadding = 0xA5;

// Converts a picture `width` wide into a bitmap full of kPadding; whatever lies behind a row must stay so.
testing::AssertionResult convertsLikeThePlainVersion(const std::vector<std::uint16_t>& pixels, int width,
                                                     const qvr::DisplayView& view, int bitmapWidth = 37,
                                                     int bitmapHeight = 11) {
    const int height = static_cast<int>(pixels.size()) / width;
    const auto means =
        reference::blockMeans(pixels, width, height, {view.xOffset, view.yOffset, view.xRatio, view.yRatio},
                              bitmapWidth, bitmapHeight);
    const auto table = reference::Table::ofWindow(9000, 8000, 0, 1, 5, 14);
    const int stride = (bitmapWidth + 3) / 4 * 4;
    std::vector<std::uint8_t> expected(static_cast<std::size_t>(stride * bitmapHeight), kPadding);
    for (int y = 0; y < bitmapHeight; ++y)
        for (int x = 0; x < bitmapWidth; ++x) {
            const int mean = means[static_cast<std::size_t>(y * bitmapWidth + x)];
            expected[static_cast<std::size_t>(y * stride + x)] = mean < 0 ? std::uint8_t{0} : table(mean);
        }
    const auto bitmap = qvr::makeGreyBitmap(bitmapWidth, bitmapHeight, nullptr);
    std::fill_n(bitmap->Bits, bitmap->ImageSize, kPadding);
    if (!qvr::convertDisplay({pixels.data(), width, height, 14, {9000, 8000}, {}}, view, bitmap.get()))
        return testing::AssertionFailure() << "refused";
    return samePicture(expected, bitmap->Bits, stride, bitmapHeight);
}

// Sizes, windows and curves of all kinds are tried in tests/kernels.
TEST(BlockConversion, FollowsEveryOffsetAndRatio) {
    for (const int width : {1, 23, 66})
        for (const int offset : {0, 5, -3, kMin, kMax})
            for (const float ratio : {1.0f, 0.3f, 1.7f, 1e-30f, 1e-45f, 3e38f}) {
                SCOPED_TRACE(testing::Message()
                             << width << " columns, offset " << offset << " ratio " << ratio);
                const auto pixels = ramp(width, 20);
                EXPECT_TRUE(convertsLikeThePlainVersion(pixels, width, {offset, 2, ratio, 0.4f}));
                EXPECT_TRUE(convertsLikeThePlainVersion(pixels, width, {2, offset, 0.4f, ratio}));
            }
}

TEST(BlockConversion, BlocksTooLargeFor32BitsAreAddedUp) {
    for (const int side : {256, 257, 300}) {
        const auto count = static_cast<std::size_t>(side * (side + 1));
        const float ratio = 1.0f / static_cast<float>(side);
        for (const auto& pixels : {ramp(side, side + 1), std::vector<std::uint16_t>(count, 65535)})
            EXPECT_TRUE(convertsLikeThePlainVersion(pixels, side, {0, 0, ratio, ratio}, 2, 2)) << side;
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
