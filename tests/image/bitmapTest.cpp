// CDib: metrics, the file format and what it must withstand, palettes, and headers that were changed from outside.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "qvr/image/CDib.h"
#include "qvr/platform/CRasterDC.h"
#include "support/fileSizeLimit.h"
#include "support/pictures.h"
#include "support/recordingDC.h"
#include "support/refuseAllocation.h"
#include "support/temporaryFolder.h"

namespace {

constexpr std::uint32_t kColours[] = {0x010203, 0xA0B0C0, 0x00FF00, 0xFF0000, 0x0000FF};

testing::AssertionResult isEmpty(const CDib& bitmap) {
    const bool empty = !bitmap.InfoHeader && !bitmap.ColorTable && !bitmap.Bits && bitmap.ImageSize == 0 &&
                       bitmap.ColorTableEntries == 0;
    return empty ? testing::AssertionSuccess() : testing::AssertionFailure() << "not empty";
}

int read(CDib& bitmap, const TemporaryFolder& folder, const std::string& stream) {
    CFile file;
    file.Open(folder.file("read.bmp", stream).c_str(), CFile::modeRead);
    return bitmap.Read(&file);
}

std::string written(CDib& bitmap, const TemporaryFolder& folder) {
    CFile file;
    file.Open((folder / "written.bmp").c_str(), CFile::modeReadWrite | CFile::modeCreate);
    return bitmap.Write(&file) ? contentOf(folder / "written.bmp") : "(failed)";
}

void put(std::string& stream, std::size_t offset, std::uint32_t value, std::size_t bytes = 4) {
    std::memcpy(stream.data() + offset, &value, bytes);
}

// A stream of a bitmap with `entries` colours and pixel bytes 1, 2, 3, ….
std::string streamOf(int width, int height, int bitCount, int entries, std::uint32_t imageSize) {
    std::string stream(static_cast<std::size_t>(54 + 4 * entries) + imageSize, '\0');
    put(stream, 0, 0x4D42, 2);
    put(stream, 10, static_cast<std::uint32_t>(54 + 4 * entries));
    put(stream, 14, 40);
    put(stream, 18, static_cast<std::uint32_t>(width));
    put(stream, 22, static_cast<std::uint32_t>(height));
    put(stream, 26, 1, 2);
    put(stream, 28, static_cast<std::uint32_t>(bitCount), 2);
    for (int i = 0; i < entries; ++i) put(stream, static_cast<std::size_t>(54 + 4 * i), kColours[i % 5]);
    for (std::uint32_t i = 0; i < imageSize; ++i)
        stream[static_cast<std::size_t>(54 + 4 * entries) + i] = static_cast<char>(i + 1);
    return stream;
}

struct Depth {
    const char* name;
    int width, height, bits, entries;
    std::uint32_t imageSize;
};

TEST(DepthTest, HasItsMetricsPaletteAndStream) {
    const Depth rows[] = {
        {"grey", 301, 200, 8, 256, 60800},        {"oneBit", 33, 3, 1, 2, 24},
        {"sixteenBits", 3, 2, 16, 0, 16},         {"colour", 301, 2, 24, 0, 1808},
        {"topDown", 5, -4, 8, 256, 32},           {"noSide", 0, 5, 8, 256, 0},
        {"wraps32Bits", 65536, 65536, 8, 256, 0}, {"largest", 2147483647, 2147483647, 32, 0, 0}};
    for (const Depth& row : rows) {
        SCOPED_TRACE(row.name);
        CDib bitmap(row.width, row.height, row.bits);
        EXPECT_EQ(bitmap.ColorTableEntries, row.entries);
        EXPECT_EQ(bitmap.ImageSize, row.imageSize);
        EXPECT_EQ(bitmap.Bits, nullptr);
        EXPECT_EQ(bitmap.MakePalette(), row.entries > 0 ? 1 : 0);
        const BITMAPINFOHEADER& header = *bitmap.InfoHeader;
        EXPECT_EQ(
            (std::vector<long>{header.biSize, header.biWidth, header.biHeight, header.biPlanes,
                               header.biBitCount, header.biCompression, header.biSizeImage, header.biClrUsed,
                               header.biClrImportant}),
            (std::vector<long>{40, row.width, row.height, 1, row.bits, 0, 0, row.entries, row.entries}));
        const bool drawable = row.imageSize > 0;
        EXPECT_EQ(bitmap.CreateSection(nullptr) != nullptr, drawable);
        EXPECT_EQ(bitmap.CreateSection(nullptr), nullptr) << "storage is there already";
        if (!drawable) continue;
        EXPECT_TRUE(std::all_of(bitmap.Bits, bitmap.Bits + row.imageSize, [](int b) { return b == 0; }));

        for (std::uint32_t i = 0; i < row.imageSize; ++i)
            bitmap.Bits[i] = static_cast<std::uint8_t>(i * 7 + 1);
        for (int i = 0; i < row.entries; ++i) bitmap.ColorTable[i].rgbGreen = static_cast<std::uint8_t>(i);
        const TemporaryFolder folder;
        const std::string stream = written(bitmap, folder);
        const std::size_t offset = static_cast<std::size_t>(54 + 4 * row.entries);
        ASSERT_EQ(stream.size(), offset + row.imageSize);
        std::string fileHeader("BM\0\0\0\0\0\0\0\0\0\0\0\0", 14);
        put(fileHeader, 2, static_cast<std::uint32_t>(stream.size()));
        put(fileHeader, 10, static_cast<std::uint32_t>(offset));
        EXPECT_EQ(stream.substr(0, 14), fileHeader);

        CDib copy;
        ASSERT_EQ(read(copy, folder, stream), 1);
        EXPECT_EQ(written(copy, folder), stream);
        EXPECT_EQ(std::memcmp(copy.Bits, bitmap.Bits, row.imageSize), 0);
    }
}

// --- reading ------------------------------------------------------------------------------------------------------

struct Stream {
    const char* name;
    std::string bytes;
    int result;
    int entries = 0;
};

std::string patched(std::string stream, std::size_t offset, std::uint32_t value, std::size_t bytes = 4) {
    put(stream, offset, value, bytes);
    return stream;
}
const std::string kGood = streamOf(5, 3, 8, 256, 24), kOneBit = streamOf(5, 3, 1, 5, 12);

TEST(StreamTest, IsReadOrLeavesTheBitmapEmpty) {
    const Stream rows[] = {{"good", kGood, 1, 256},
                           {"oneBitFiveColours", patched(kOneBit, 46, 5), 1, 5},
                           {"topDown", patched(kGood, 22, 0xFFFFFFFDu), 1, 256},
                           {"fewColours", patched(kGood, 46, 3), 1, 3},
                           {"compressed", patched(kGood, 30, 1), 1, 256},
                           {"largerImage", patched(kGood, 34, 100), 1, 256},
                           {"pixelsCut", kGood.substr(0, 1080), 1, 256},
                           {"coloursCut", kGood.substr(0, 100), 1, 256},
                           {"largestOffset", patched(kGood, 10, 65536), 1, 256},
                           {"nothing", "", 0},
                           {"shortFileHeader", kGood.substr(0, 13), 0},
                           {"shortInfoHeader", kGood.substr(0, 24), 0},
                           {"otherType", patched(kGood, 0, 0x4D43, 2), 0},
                           {"longHeader", patched(kGood, 14, 124), 0},
                           {"offsetTooSmall", patched(kGood, 10, 53), 0},
                           {"offsetOfNoHeader", patched(kGood, 10, 13), 0},
                           {"offsetTooLarge", patched(kGood, 10, 65537), 0},
                           {"coloursBeyondOffset", patched(kGood, 10, 54 + 4 * 255), 0},
                           {"colours257", patched(patched(kGood, 46, 257), 10, 65536), 0},
                           {"coloursOf24BitsBeyondOffset", patched(streamOf(5, 3, 24, 0, 48), 46, 200), 0},
                           {"threeBits", patched(kGood, 28, 3, 2), 0},
                           {"noWidth", patched(kGood, 18, 0), 0},
                           {"tooWide", patched(kGood, 18, 32768), 0},
                           {"noHeight", patched(kGood, 22, 0), 0},
                           {"smallestHeight", patched(kGood, 22, 0x80000000u), 0},
                           {"imageTooSmall", patched(kGood, 34, 23), 0},
                           {"imageTooLarge", patched(kGood, 34, (256u << 20) + 1), 0}};
    for (const Stream& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryFolder folder;
        CDib bitmap(4, 4, 8);
        bitmap.CreateSection(nullptr);
        EXPECT_EQ(read(bitmap, folder, row.bytes), row.result);
        if (row.result == 0) {
            EXPECT_TRUE(isEmpty(bitmap));
            continue;
        }
        EXPECT_EQ(bitmap.ColorTableEntries, row.entries);
        CRasterDC surface(20, 20);
        EXPECT_EQ(bitmap.Draw(&surface, 0, 0, 20, 20, -3, -3, 20, 20, SRCCOPY), 1);
    }
}

TEST(BitmapStream, MissingPixelsAreZero) {
    const TemporaryFolder folder;
    CDib bitmap;
    ASSERT_EQ(read(bitmap, folder, kGood.substr(0, 1080)), 1);
    std::vector<std::uint8_t> expected(24);
    expected[0] = 1;
    expected[1] = 2;
    EXPECT_TRUE(samePicture(expected, bitmap.Bits, 8, 3));
}

TEST(BitmapStream, FileErrorsAndNullLeaveTheBitmapEmpty) {
    const TemporaryFolder folder;
    CDib bitmap(4, 4, 8);
    CFile closed;
    EXPECT_EQ(bitmap.Read(&closed), 0);
    EXPECT_TRUE(isEmpty(bitmap));
    EXPECT_EQ(bitmap.Read(nullptr), 0);
    ASSERT_EQ(read(bitmap, folder, kGood), 1);
    EXPECT_EQ(bitmap.Write(&closed), 0);
    EXPECT_EQ(bitmap.Write(nullptr), 0);
    CFile full;
    ASSERT_EQ(full.Open("/dev/full", CFile::modeWrite), 1);
    EXPECT_EQ(bitmap.Write(&full), 0);
    const FileSizeLimit limit(100);
    EXPECT_EQ(written(bitmap, folder), "(failed)");
}

TEST(BitmapStream, GoesThroughAnArchive) {
    const TemporaryFolder folder;
    CFile file;
    ASSERT_EQ(file.Open(folder.file("a.bmp", kGood).c_str(), CFile::modeRead), 1);
    const std::unique_ptr<CObject> made(CDib::classCDib.CreateObject());
    made->AssertValid();
    made->Dump();
    EXPECT_STREQ(made->GetRuntimeClass()->m_lpszClassName, "CDib");
    EXPECT_EQ(made->GetRuntimeClass()->m_wSchema, 0u);
    CArchive loading(&file, CArchive::load);
    made->Serialize(loading);
    CFile copy;
    ASSERT_EQ(copy.Open((folder / "b.bmp").c_str(), CFile::modeWrite | CFile::modeCreate), 1);
    CArchive storing(&copy, CArchive::store);
    made->Serialize(storing);
    EXPECT_EQ(contentOf(folder / "b.bmp"), patched(kGood, 2, static_cast<std::uint32_t>(kGood.size())));
    CArchive nowhere(nullptr, CArchive::load);
    made->Serialize(nowhere);
    EXPECT_TRUE(isEmpty(static_cast<const CDib&>(*made)));
}

// --- pixels, palette, drawing -------------------------------------------------------------------------------------

TEST(CreateFromPixels, TakesColoursAndOneBlockOfPixels) {
    RecordingDC surface;
    CDib bitmap(3, 2, 4);
    const std::vector<std::uint32_t> colours(16, 0x00332211);
    const std::uint8_t pixels[] = {1, 2, 3, 4, 5, 6};
    EXPECT_EQ(bitmap.CreateFromPixels(3, 2, pixels, colours.data(), &surface), 1);
    EXPECT_EQ(bitmap.ColorTable[15].rgbRed, 0x11);
    EXPECT_EQ(bitmap.ColorTable[15].rgbGreen, 0x22);
    EXPECT_EQ(bitmap.ColorTable[15].rgbBlue, 0x33);
    EXPECT_TRUE(samePicture<std::uint8_t>({1, 2, 3, 4, 5, 6, 0, 0}, bitmap.Bits, 8, 1));
    EXPECT_EQ(surface.paletteEntries(), 0) << "the palette before is selected again";
    EXPECT_EQ(bitmap.CreateFromPixels(2, 1, pixels + 4, nullptr, nullptr), 1);
    EXPECT_EQ(bitmap.ColorTable[7].rgbBlue, 7);
    EXPECT_TRUE(samePicture<std::uint8_t>({5, 6, 3, 4, 5, 6, 0, 0}, bitmap.Bits, 8, 1));
    surface.onCall = [&] { bitmap.Empty(); };
    EXPECT_EQ(bitmap.CreateFromPixels(3, 2, pixels, nullptr, &surface), 1) << "the surface comes last";
}

TEST(CreateFromPixels, NeverCopiesBeyondTheStorage) {
    const std::vector<std::uint8_t> pixels(100, 7);
    CDib bitmap(3, 2, 8), empty;
    EXPECT_EQ(bitmap.CreateFromPixels(3, 3, pixels.data(), nullptr, nullptr), 0);
    EXPECT_EQ(bitmap.CreateFromPixels(-3, -2, pixels.data(), nullptr, nullptr), 0);
    EXPECT_EQ(bitmap.CreateFromPixels(65536, 65536, pixels.data(), nullptr, nullptr), 0);
    EXPECT_EQ(bitmap.CreateFromPixels(3, 2, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(empty.CreateFromPixels(0, 0, pixels.data(), nullptr, nullptr), 0);
    EXPECT_EQ(bitmap.CreateFromPixels(2, 4, pixels.data(), nullptr, nullptr), 1);
    EXPECT_EQ(bitmap.CreateFromPixels(3, 3, pixels.data(), nullptr, nullptr), 0);
}

TEST(DrawBitmap, SelectsPaletteAndModeOnlyMeanwhile) {
    RecordingDC surface;
    surface.SetStretchBltMode(4);
    RGBQUAD colours[3];
    CPalette before(colours, 3);
    surface.SelectPalette(&before, 0);
    CDib bitmap(5, 3, 8), empty;
    EXPECT_EQ(bitmap.Draw(&surface, 0, 0, 5, 3, 0, 0, 5, 3, SRCCOPY), 0) << "no storage";
    EXPECT_EQ(empty.Draw(&surface, 0, 0, 5, 3, 0, 0, 5, 3, SRCCOPY), 0);
    bitmap.CreateSection(&surface);
    bitmap.MakePalette();
    EXPECT_EQ(bitmap.Draw(nullptr, 0, 0, 5, 3, 0, 0, 5, 3, SRCCOPY), 0);
    EXPECT_EQ(bitmap.Draw(&surface, 1, 2, 30, 40, 1, 0, 3, 2, SRCCOPY), 1);
    EXPECT_EQ(surface.drawn, std::vector<std::string>{"stretch 1,2 30x40 from 1,0 3x2"});
    EXPECT_EQ(surface.modes, std::vector<int>{3});
    EXPECT_EQ(surface.palettes, std::vector<int>{256});
    EXPECT_EQ(surface.stretchMode(), 4);
    EXPECT_EQ(surface.paletteEntries(), 3);
    surface.onCall = [] { throw std::runtime_error("surface"); };
    EXPECT_EQ(bitmap.Draw(&surface, 0, 0, 5, 3, 0, 0, 5, 3, SRCCOPY), 0);
    surface.onCall = [] {};

    bitmap.UsePalette(&surface, 0);
    EXPECT_EQ(surface.paletteEntries(), 256);
    bitmap.Empty();
    EXPECT_EQ(surface.paletteEntries(), 0) << "a palette that is gone is not used";
}

struct Meddling {
    const char* name;
    void (*change)(CDib&);
};

std::uint8_t foreign[4096];
TEST(MeddlingTest, IsNoticed) {
    const Meddling rows[] = {
        {"width", [](CDib& b) { b.InfoHeader->biWidth = 9; }},
        {"negativeWidth", [](CDib& b) { b.InfoHeader->biWidth = -5; }},
        {"noHeight", [](CDib& b) { b.InfoHeader->biHeight = 0; }},
        {"height", [](CDib& b) { b.InfoHeader->biHeight = 4; }},
        {"bitCount", [](CDib& b) { b.InfoHeader->biBitCount = 24; }},
        {"headerSize", [](CDib& b) { b.InfoHeader->biSize = 12; }},
        {"coloursUsed", [](CDib& b) { b.InfoHeader->biClrUsed = 0; }},
        {"imageSize", [](CDib& b) { b.ImageSize = 25; }},
        {"bits", [](CDib& b) { b.Bits = foreign; }},
        {"colours", [](CDib& b) { b.ColorTable = reinterpret_cast<RGBQUAD*>(foreign); }},
        {"entries", [](CDib& b) { b.ColorTableEntries = 5; }},
        {"negativeEntries", [](CDib& b) { b.ColorTableEntries = -1; }},
        {"smallerImage", [](CDib& b) { b.ImageSize = 23; }},
        {"noBits", [](CDib& b) { b.Bits = nullptr; }},
        {"header", [](CDib& b) { b.InfoHeader = reinterpret_cast<BITMAPINFOHEADER*>(foreign); }},
        {"headerCopy", [](CDib& b) {
             std::memcpy(foreign, b.InfoHeader, sizeof *b.InfoHeader);
             b.InfoHeader = reinterpret_cast<BITMAPINFOHEADER*>(foreign);
         }}};
    for (const Meddling& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryFolder folder;
        CDib bitmap;
        ASSERT_EQ(read(bitmap, folder, patched(streamOf(5, 3, 8, 4, 24), 46, 4)), 1);
        row.change(bitmap);
        CRasterDC surface(9, 9);
        EXPECT_EQ(bitmap.Draw(&surface, 0, 0, 9, 9, 0, 0, 5, 3, SRCCOPY), 0);
        EXPECT_EQ(written(bitmap, folder), "(failed)");
        bitmap.Empty();
        EXPECT_TRUE(isEmpty(bitmap));
    }
}

// The host's own kind of file.
class CallingFile : public CFile {
public:
    std::function<void()> onCall = [] {};
    std::size_t Read(void* buffer, std::size_t count) override {
        onCall();
        return CFile::Read(buffer, count);
    }
    void Write(const void* buffer, std::size_t count) override {
        onCall();
        CFile::Write(buffer, count);
    }
};

TEST(BitmapStream, AFileMayEmptyTheBitmapMeanwhile) {
    const TemporaryFolder folder;
    CDib bitmap;
    CallingFile file;
    file.onCall = [&] { bitmap.Empty(); };
    ASSERT_EQ(file.Open(folder.file("a.bmp", kGood).c_str(), CFile::modeRead), 1);
    EXPECT_EQ(bitmap.Read(&file), 1);
    const std::string target = folder / "b.bmp";
    ASSERT_EQ(file.Open(target.c_str(), CFile::modeWrite | CFile::modeCreate), 1);
    EXPECT_EQ(bitmap.Write(&file), 1);
    file.Close();
    EXPECT_EQ(contentOf(target).substr(14), kGood.substr(14)) << "all but the length of the file";
    EXPECT_TRUE(isEmpty(bitmap));
}

TEST(BitmapStream, WithoutTheColoursOfItsHeaderNoneIsWritten) {
    const TemporaryFolder folder;
    CDib bitmap(5, 3, 8);
    ASSERT_TRUE(bitmap.CreateSection(nullptr));
    bitmap.InfoHeader->biClrUsed = 0;
    EXPECT_NE(written(bitmap, folder), "(failed)");
    bitmap.ComputeColorTableEntries(24);
    EXPECT_EQ(written(bitmap, folder), "(failed)");
}

TEST(Bitmap, ATableThatIsCalledLongerGivesNoPalette) {
    CDib bitmap(5, 3, 4);
    bitmap.ColorTableEntries = 17;
    EXPECT_EQ(bitmap.MakePalette(), 0);
}

TEST(Bitmap, ABitCountThatIsCutTo8HasNoColoursAndIsRefused) {
    CDib bitmap(5, 3, 0x10008);
    bitmap.CreateSection(nullptr);
    CRasterDC surface(9, 9);
    EXPECT_EQ(bitmap.Draw(&surface, 0, 0, 9, 9, 0, 0, 5, 3, SRCCOPY), 0);
}

TEST(Bitmap, ColoursFollowTheHeaderOrTheBitCount) {
    CDib bitmap(5, 3, 8);
    bitmap.ComputeColorTableEntries(4);
    EXPECT_EQ(bitmap.ColorTableEntries, 256) << "the header's own number comes first";
    bitmap.InfoHeader->biClrUsed = 0;
    for (const auto& [bits, entries] :
         {std::pair{1, 2}, {4, 16}, {8, 256}, {7, 256}, {24, 0}, {9, 0}, {16, 0}, {32, 0}}) {
        bitmap.ComputeColorTableEntries(bits);
        EXPECT_EQ(bitmap.ColorTableEntries, entries) << bits << " bits";
    }
    bitmap.InfoHeader->biSize = 12;
    EXPECT_THROW(bitmap.ComputeMetrics(), CDibException);
    EXPECT_THROW(CDib().ComputeMetrics(), CDibException);
}

TEST(BitmapStream, WithoutMemoryTheBitmapIsEmpty) {
    const TemporaryFolder folder;
    CDib bitmap;
    CFile file;
    const auto prepare = [&] { file.Open(folder.file("a.bmp", kGood).c_str(), CFile::modeRead); };
    const long refusals = refuseEachAllocation(
        prepare, [&] { return bitmap.Read(&file); },
        [&](int result, bool refused) {
            EXPECT_TRUE(result == 1 || refused);  // a picture without palette can be shown
            EXPECT_TRUE(result == 1 ? bitmap.Bits && bitmap.Bits[0] == 1 : bool(isEmpty(bitmap)));
        });
    EXPECT_GT(refusals, 2);
}

}  // namespace
