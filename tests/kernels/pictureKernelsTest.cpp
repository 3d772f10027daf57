// Reduced pictures, the blit, large buffers and large writes.
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "kernels/kernelTest.h"
#include "qvr/image/QVR_COMP.h"
#include "qvr/model/detail/thumbnail.h"
#include "qvr/platform/detail/memory.h"
#include "qvr/platform/detail/stretch.h"
#include "support/fileSizeLimit.h"
#include "support/temporaryFolder.h"

namespace {

using kernels::kFastPaths;
using kernels::nameOf;
using kernels::Random;
using kernels::same;

TEST(ReducePicture, EqualsTheRule) {
    Random random(1);
    for (int round = 0; round < 600; ++round) {
        const float step = round % 2 == 0 ? 5.0f : static_cast<float>(random.between(1000, 19000)) / 1000.0f;
        const int block = round % 2 == 0 ? 4 : static_cast<int>(step);
        const int width = random.between(1, 67);
        const int height = random.between(1, 9);
        // Just large enough for the last block.
        const int stride = static_cast<int>(static_cast<double>(width - 1) * step) + block;
        const int rows = static_cast<int>(static_cast<double>(height - 1) * step) + block;
        std::vector<std::uint8_t> source(static_cast<std::size_t>(stride) * static_cast<std::size_t>(rows));
        for (auto& byte : source)
            byte = static_cast<std::uint8_t>(random.between(round % 5 == 0 ? 254 : 0, 255));
        const qvr::BitmapRows from{source.data(), stride, rows, static_cast<std::size_t>(stride)};
        const std::size_t rowBytes = (static_cast<std::size_t>(width) + 3) / 4 * 4;
        std::vector<std::uint8_t> expected(rowBytes * static_cast<std::size_t>(height), 77);
        const auto target = [&](std::vector<std::uint8_t>& bytes) {
            return qvr::BitmapRows{bytes.data(), width, height, rowBytes};
        };
        std::vector<std::uint8_t> actual(expected);
        qvr::reducePicture(from, step, block, target(expected), qvr::CodePath::plain);
        for (const qvr::CodePath path : kFastPaths) {
            std::fill(actual.begin(), actual.end(), std::uint8_t{77});
            qvr::reducePicture(from, step, block, target(actual), path);
            ASSERT_TRUE(same(expected, actual))
                << nameOf(path) << ": step " << step << ", " << width << " x " << height;
        }
    }
}

TEST(Stretch, GreyTablesAreComputedAsTheyAreLookedUp) {
    Random random(2);
    struct {
        BITMAPINFOHEADER header;
        RGBQUAD colours[256];
    } info{};
    for (int round = 0; round < 400; ++round) {
        const int width = random.between(1, 67);
        const int height = random.between(1, 12);
        info.header.biSize = sizeof info.header;
        info.header.biWidth = width;
        info.header.biHeight = height;
        info.header.biPlanes = 1;
        info.header.biBitCount = 8;
        for (int i = 0; i < 256; ++i) {
            const auto grey = static_cast<std::uint8_t>(i);
            info.colours[i] = {grey, grey, grey, 0};
        }
        // Now and then one colour is not the grey of its place, and then the table has to be used.
        if (round % 3 == 0) info.colours[random.between(0, 255)].rgbRed ^= 1;
        std::vector<std::uint8_t> bits(static_cast<std::size_t>((width + 3) / 4 * 4 * height));
        for (auto& byte : bits) byte = static_cast<std::uint8_t>(random.between(0, 255));
        const auto bitmap = qvr::BitmapPixels::read(bits.data(), reinterpret_cast<const BITMAPINFO*>(&info));
        ASSERT_TRUE(bitmap);
        const int bitsPerPixel = random.between(1, 4) * 8;
        const std::size_t stride = 80U * static_cast<std::size_t>(bitsPerPixel / 8);
        const qvr::StretchRectangles rectangles{random.between(-9, 9),
                                                random.between(-5, 5),
                                                random.between(0, 1) ? width : random.between(1, 130),
                                                random.between(0, 1) ? height : random.between(1, 40),
                                                random.between(-3, 3),
                                                random.between(-3, 3),
                                                width,
                                                height};
        std::vector<std::uint8_t> expected(stride * 20, 77);
        std::vector<std::uint8_t> actual(expected);
        const int rows = qvr::stretchBitmap({expected.data(), 80, 20, stride, bitsPerPixel}, rectangles,
                                            *bitmap, qvr::CodePath::plain);
        ASSERT_EQ(rows,
                  qvr::stretchBitmap({actual.data(), 80, 20, stride, bitsPerPixel}, rectangles, *bitmap));
        ASSERT_TRUE(same(expected, actual)) << "round " << round << ", " << bitsPerPixel << " bits";
    }
}

// Around the sizes at which a buffer is asked for differently, all of it can be written, and cleared ones are.
TEST(Memory, LargeBuffersAreWhole) {
    for (const int rows : {1, 511, 512, 513, 1024, 2048, 9000})
        for (const int more : {-1, 0, 1}) {
            const int width = 1024 + more;
            const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(rows);
            qvr::Pixels pixels = qvr::makePixels(width, rows);
            ASSERT_TRUE(pixels);
            ASSERT_EQ(std::count(pixels.get(), pixels.get() + count, 0), static_cast<std::ptrdiff_t>(count));
            std::memset(pixels.get(), 0x5A, 2 * count);
            const qvr::Pixels copy = qvr::copyPixels(width, rows, pixels.get());
            ASSERT_EQ(std::memcmp(copy.get(), pixels.get(), 2 * count), 0);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(copy.get()) % 64, 0U);
        }
}

// Disk blocks that are reserved for a large write must not lengthen the file: length is all that tells a torn one.
TEST(RawFile, ALargeWriteThatIsCutShortLeavesAShortFile) {
    const TemporaryFolder folder;
    const std::string path = folder.path() + "/torn.raw";
    const int side = 2048;
    std::vector<std::uint16_t> pixels(std::size_t{2048} * 2048, 4711);
    const auto length = [&] {
        struct stat status {};
        return ::stat(path.c_str(), &status) == 0 ? status.st_size : -1;
    };
    ASSERT_EQ(QVR_COMP_WriteRAWFile(path.c_str(), side, side, pixels.data()), 1);
    EXPECT_EQ(length(), 2 * 2048 * 2048);
    {
        const FileSizeLimit limit(3'000'001);
        EXPECT_EQ(QVR_COMP_WriteRAWFile(path.c_str(), side, side, pixels.data()), 0);
    }
    EXPECT_EQ(length(), 3'000'001);
    EXPECT_EQ(QVR_COMP_ReadRAWFile(path.c_str(), side, side, pixels.data()), 0);
    ASSERT_EQ(QVR_COMP_WriteRAWFile(path.c_str(), side, side - 1, pixels.data()), 1);
    EXPECT_EQ(length(), 2 * 2048 * 2047) << "nothing of the reservation is left";
}

}  // namespace
