// A host: its own surface, its own image class with the protected operations, strings, dates, bitmaps and files.
#include <gtest/gtest.h>
#include <qvr/qvr.h>

#include <cstdlib>
#include <filesystem>
#include <numeric>
#include <type_traits>
#include <vector>

namespace {

// What owns pixels, files or a place in a list is never copied, by accident least of all; values are.
template <class... Types>
constexpr bool kNoneCopies =
    !(... || (std::is_copy_constructible_v<Types> || std::is_copy_assignable_v<Types>));
template <class... Types>
constexpr bool kAllCopy = (... && (std::is_copy_constructible_v<Types> && std::is_copy_assignable_v<Types>));
template <class... Types>
constexpr bool kNoneThrowsAtItsEnd = (... && std::is_nothrow_destructible_v<Types>);

static_assert(
    kNoneCopies<rawImage, CDib, dcmImage, dcmCRImage, dcmDXImage, dcmSeries, dcmCRSeries, dcmDXSeries,
                dcmStudy, dcmExam, dcmWorklist, CFile, CArchive, CDC, CRasterDC, CFont, CPen, CPalette>);
static_assert(kAllCopy<CQVRImage, CMark, CString, COleDateTime, dcmPersonName, dcmAgeString, dcmCode,
                       dcmProtocol, dcmEquipment, QVR_ST_RAW_IMAGE, QVR_ST_IMAGE, QVR_ST_SERIES, QVR_ST_STUDY,
                       QVR_ST_PROTOCOL, QVR_ST_WORKLIST, QVR_ST_EQUIPMENT>);
static_assert(kNoneThrowsAtItsEnd<rawImage, CQVRImage, CDib, CMark, dcmExam, dcmStudy, dcmSeries, dcmImage,
                                  dcmWorklist, dcmProtocol, dcmEquipment, CFile, CArchive, CDC, CRasterDC>);
// A value that no modality has is a value all the same: a cast to it is no undefined behaviour.
static_assert(std::is_same_v<std::underlying_type_t<dcmStudy::Modality>, int>);

// Forwards to a raster, as a host's window forwards to its toolkit.
class Window : public CDC {
public:
    void FillSolidRect(const RECT* rect, COLORREF colour) override {
        ++m_fills;
        m_raster.FillSolidRect(rect, colour);
    }
    int StretchDIBits(int dx, int dy, int dw, int dh, int sx, int sy, int sw, int sh, const void* bits,
                      const BITMAPINFO* info, std::uint32_t rop) override {
        return m_raster.StretchDIBits(dx, dy, dw, dh, sx, sy, sw, sh, bits, info, rop);
    }
    CRasterDC m_raster{80, 60};
    int m_fills = 0;
};

class Image : public rawImage {
public:
    using rawImage::ComputeZoomRatio;
    using rawImage::Convert14BitsTo8Bits;
    using rawImage::DrawDIB;
};

std::vector<std::uint16_t> pixels(int width, int height) {
    std::vector<std::uint16_t> values(static_cast<std::size_t>(width * height));
    std::iota(values.begin(), values.end(), std::uint16_t{1});
    return values;
}

class HostTest : public testing::Test {
protected:
    HostTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "qvr-host-XXXXXX").string();
        m_folder = ::mkdtemp(pattern.data());
    }
    ~HostTest() override { std::filesystem::remove_all(m_folder); }
    std::string m_folder;
};

TEST_F(HostTest, AcquiresShowsStoresAndReadsAnImage) {
    const auto values = pixels(40, 20);
    QVR_ST_RAW_IMAGE record{.Height = 20,
                            .Width = 40,
                            .BitsStored = 14,
                            .WindowCenter = 400,
                            .WindowWidth = 800,
                            .PixelData = values.data()};
    Image image;
    ASSERT_EQ(image.Create(&record), 1);
    ASSERT_EQ(image.CreateBAKFile("1.2", m_folder.c_str()), 1);
    Window window;
    const RECT whole{0, 0, 80, 60};
    ASSERT_EQ(image.BuildDisplayImage(&whole, &window, 1), 1);
    EXPECT_TRUE(image.ComputeZoomRatio(&whole) == (CSize{80, 40}));
    EXPECT_EQ(image.Convert14BitsTo8Bits(), 1);
    EXPECT_EQ(image.DrawDIB(&whole, &window, SRCCOPY), 1);
    EXPECT_EQ(window.m_fills, 2);
    EXPECT_EQ(window.m_raster.GetPixel(0, 9), 0u) << "above the picture";
    EXPECT_GT(window.m_raster.GetPixel(0, 10), window.m_raster.GetPixel(0, 48)) << "later rows are higher up";

    ASSERT_EQ(image.WriteToHDD(), 1);
    std::vector<std::uint16_t> read(values.size());
    EXPECT_EQ(QVR_COMP_ReadRAWFile(image.GetFilePath(), 40, 20, read.data()), 1);
    EXPECT_EQ(read, values);
    EXPECT_EQ(image.ReadInRAM(), 1);
}

TEST(Host, CatchesTheTwoErrorsThatAreThrown) {
    char byte;
    EXPECT_THROW(CFile().Read(&byte, 1), CFileException);
    EXPECT_THROW(CFile().Write(&byte, 1), std::exception);
    EXPECT_THROW(CDib().ComputeMetrics(), CException);
    EXPECT_STRNE(CException().what(), "");
    const CFileException file(5);
    const CDibException bitmap;
    for (const std::exception* error :
         {static_cast<const std::exception*>(&file), static_cast<const std::exception*>(&bitmap)})
        EXPECT_NE(std::string(error->what()).find("error"), std::string::npos);
}

}  // namespace
