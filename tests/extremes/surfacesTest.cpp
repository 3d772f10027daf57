// Extreme arguments for surfaces, bitmaps, dates, texts and files.
#include <gtest/gtest.h>
#include <qvr/qvr.h>

#include <climits>
#include <cstdint>
#include <filesystem>
#include <string>

#include "extremes.h"
#include "tests/support/temporaryFolder.h"

namespace {

class OpenCanvas : public CRasterDC {
public:
    using CRasterDC::CRasterDC;
    using CRasterDC::SetTextSmoothing;
};

TEST(Extremes, RasterSizes) {
    for (const int width : kInts)
        for (const int height : kInts)
            for (const int bits : {INT_MIN, -1, 0, 1, 8, 16, 24, 32, INT_MAX}) {
                // Pixels that are not there: nothing may be drawn.
                CRasterDC none(nullptr, width, height, SIZE_MAX, bits);
                EXPECT_EQ(none.GetPixel(0, 0), 0U);
                EXPECT_EQ(none.GetRow(0), nullptr);
                const auto count = pixelsOf(width, height);
                if (count && *count > 200000) continue;
                const CRasterDC raster(width, height, bits);
                EXPECT_TRUE(raster.GetWidth() == 0 || (raster.GetWidth() == width && count && *count > 0));
                CRasterDC model(2, 2, 32);
                const auto compatible = model.CreateCompatibleRaster(width, height);
                EXPECT_EQ(compatible != nullptr, count && *count > 0) << width << " x " << height;
            }
    Exact pixels(8 * 8);
    for (const std::size_t stride : {std::size_t{0}, std::size_t{1}, std::size_t{15}}) {
        CRasterDC narrow(pixels.get(), 8, 8, stride, 16);
        const RECT all{0, 0, 8, 8};
        narrow.FillSolidRect(&all, 0xFFFFFF);
        EXPECT_TRUE(pixels.untouched()) << stride;
    }
}

TEST(Extremes, RasterPositions) {
    OpenCanvas surface(8, 8);
    surface.FillSolidRect(nullptr, 0xFFFFFF);
    for (const int x : kInts)
        for (const int y : kInts) {
            surface.SetBkMode(x);
            surface.SetTextColor(static_cast<COLORREF>(y));
            surface.SetStretchBltMode(x);
            surface.SetTextSmoothing(y);
            EXPECT_EQ(surface.GetPixel(x, y), 0U);
            EXPECT_EQ(surface.GetRow(y) != nullptr, y >= 0 && y < 8) << y;
            CPen pen(x, y, 0xFF);
            CPen* const previous = surface.SelectObject(&pen);
            surface.MoveTo(x, y);
            surface.LineTo(x, y);  // no step, no pixel
            surface.SelectObject(previous);
        }
    surface.SelectObject(static_cast<CPen*>(nullptr));
    surface.SelectObject(static_cast<CFont*>(nullptr));
    surface.SelectPalette(nullptr, INT_MIN);
    surface.RealizePalette();
    surface.DrawText(nullptr, -1, nullptr, 0);
    const RECT box{0, 0, 8, 8};
    for (const int length : {INT_MIN, -2, -1, 0, 1}) surface.DrawText("L", length, &box, UINT_MAX);
    surface.DrawText(nullptr, 5, &box, 0);
    EXPECT_EQ(surface.GetTextExtent(nullptr, 5).cx, 0);
}

TEST(Extremes, StretchedBitmaps) {
    CRasterDC surface(8, 8);
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info.bmiHeader.biWidth = 4;
    info.bmiHeader.biHeight = 4;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    const Exact bits(4 * 4 * 2);
    const auto stretch = [&](int a, int b, int c, int d, const BITMAPINFO* header) {
        surface.StretchDIBits(a, b, c, d, 0, 0, 4, 4, bits.get(), header, SRCCOPY);
        surface.StretchDIBits(0, 0, 8, 8, a, b, c, d, bits.get(), header, SRCCOPY);
    };
    for (const int a : kInts)
        for (const int b : kInts)
            for (const int c : kInts)
                for (const int d : kInts) stretch(a, b, c, d, &info);
    EXPECT_EQ(surface.StretchDIBits(0, 0, 8, 8, 0, 0, 4, 4, nullptr, &info, SRCCOPY), 0);
    EXPECT_EQ(surface.StretchDIBits(0, 0, 8, 8, 0, 0, 4, 4, bits.get(), nullptr, SRCCOPY), 0);
    for (const int side : {INT_MIN, -5, 0, 5, 65535, INT_MAX}) {
        // A header that promises other sides than the storage has is the caller's fault, and refused where it can be seen.
        BITMAPINFO odd = info;
        odd.bmiHeader.biWidth = side;
        if (side <= 0) {
            EXPECT_EQ(surface.StretchDIBits(0, 0, 8, 8, 0, 0, 4, 4, bits.get(), &odd, SRCCOPY), 0) << side;
        }
        odd = info;
        odd.bmiHeader.biBitCount = static_cast<std::uint16_t>(side);
        EXPECT_EQ(surface.StretchDIBits(0, 0, 8, 8, 0, 0, 4, 4, bits.get(), &odd, SRCCOPY), 0) << side;
    }
}

TEST(Extremes, Palettes) {
    const RGBQUAD entry{1, 2, 3, 0};
    for (const int count : {INT_MIN, -1, 0, 1}) {
        const CPalette palette(&entry, count);
        const CPalette without(nullptr, count);
        for (const int index : kInts) {
            (void)palette.GetEntry(index);
            (void)without.GetEntry(index);
        }
    }
}

TEST(Extremes, BitmapsFromPixels) {
    const std::uint8_t pixels[6] = {1, 2, 3, 4, 5, 6};
    const std::uint32_t colours[256] = {};
    for (const int width : kInts)
        for (const int height : kInts) {
            CDib bitmap(3, 2, 8);
            ASSERT_TRUE(bitmap.CreateSection(nullptr));
            const bool fits = width >= 0 && height >= 0 && std::int64_t{width} * height <= 6;
            const int done = bitmap.CreateFromPixels(width, height, pixels, colours, nullptr);
            EXPECT_TRUE(fits || !done) << width << " x " << height;
            EXPECT_EQ(bitmap.CreateFromPixels(width, height, nullptr, nullptr, nullptr), 0);
            EXPECT_EQ(CDib().CreateFromPixels(width, height, pixels, colours, nullptr), 0);
        }
    for (const int bits : kInts) {
        CDib bitmap;
        bitmap.ComputeColorTableEntries(bits);
        EXPECT_TRUE(bitmap.ColorTableEntries >= 0 && bitmap.ColorTableEntries <= 256) << bits;
        bitmap.UsePalette(nullptr, bits);
        EXPECT_EQ(bitmap.MakePalette(), 0);
    }
    CFile closed;
    CArchive storing(&closed, CArchive::store);
    CArchive nowhere(nullptr, CArchive::load);
    CDib bitmap(3, 2, 8);
    EXPECT_EQ(bitmap.Write(nullptr), 0);
    EXPECT_EQ(bitmap.Write(&closed), 0);
    EXPECT_NO_THROW(bitmap.Serialize(storing));
    EXPECT_NO_THROW(bitmap.Serialize(nowhere));
    EXPECT_EQ(bitmap.Read(nullptr), 0);
    EXPECT_EQ(bitmap.Read(&closed), 0);
}

TEST(Extremes, Dates) {
    const double days[] = {-1e300,
                           -693594,
                           -0.75,
                           -0.0,
                           0,
                           1e-30,
                           2958465.999999999,
                           2958466,
                           1e300,
                           std::numeric_limits<double>::infinity(),
                           std::numeric_limits<double>::quiet_NaN()};
    const auto inRange = [](const COleDateTime& date) {
        return date.GetStatus() != COleDateTime::valid ||
               (date.GetMonth() >= 1 && date.GetMonth() <= 12 && date.GetDay() >= 1 && date.GetDay() <= 31 &&
                date.GetHour() >= 0 && date.GetHour() <= 23 && date.GetMinute() >= 0 &&
                date.GetMinute() <= 59 && date.GetSecond() >= 0 && date.GetSecond() <= 59);
    };
    for (const double a : days)
        for (const double b : days) {
            const COleDateTime date(a);
            const COleDateTimeSpan span(b);
            EXPECT_TRUE(inRange(date)) << a;
            EXPECT_TRUE(inRange(date + span)) << a << " + " << b;
            EXPECT_TRUE(inRange(date - span)) << a << " - " << b;
            (void)(date - COleDateTime(b)).GetDays();
            EXPECT_FALSE(date < COleDateTime(b) && COleDateTime(b) < date);
            EXPECT_EQ(date == COleDateTime(b), COleDateTime(b) == date);
            dcmAgeString age(date);
            age.SetPatientBirthDate(COleDateTime(b));
            EXPECT_LE(std::string(age.GetAgeString()).size(), 4U) << b;
        }
    for (const int a : kInts)
        for (const int b : kInts)
            for (const int c : kInts) {
                EXPECT_TRUE(inRange(COleDateTime(a, b, c, 0, 0, 0)));
                EXPECT_TRUE(inRange(COleDateTime(2024, 5, 31, a, b, c)));
            }
}

TEST(Extremes, Texts) {
    CString text;
    text.Format("%d|%s|%u", INT_MIN, std::string(100000, 'x').c_str(), UINT_MAX);
    EXPECT_EQ(text.GetLength(), 11 + 1 + 100000 + 1 + 10);
    CMark mark;
    for (const char* words : {static_cast<const char*>(nullptr), "", "\xff\xfe", "%s%n"})
        mark.SetMarkText(words);
    CMark copy(mark);
    copy = *&copy;
    mark = copy;
    CMark moved(std::move(copy));
    moved = std::move(mark);
    EXPECT_STREQ(moved.GetMarkText(), "%s%n");
}

TEST(Extremes, Files) {
    const TemporaryFolder folder;
    for (const char* path : {static_cast<const char*>(nullptr), "", "/", "/no/such/folder/file"}) {
        for (const int flag : kInts) {
            CFile file;
            EXPECT_EQ(file.Open(path, static_cast<unsigned>(flag) | CFile::modeWrite), 0);
            EXPECT_EQ(CopyFileA(path, (folder / "copy").c_str(), flag), 0);
            EXPECT_EQ(CopyFileA("/proc/self/status", path, flag), 0);
        }
        EXPECT_EQ(CFileFind().FindFile(path), path && std::string(path) == "/" ? 1 : 0);
        EXPECT_EQ(DeleteFileA(path), 0);
    }
    EXPECT_EQ(CreateDirectoryA(nullptr), 0);
    EXPECT_EQ(CreateDirectoryA(""), 0);
    CFile file;
    std::uint8_t byte = 0;
    EXPECT_THROW(file.Read(&byte, 1), CFileException);
    EXPECT_THROW(file.Write(&byte, 1), CFileException);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

}  // namespace
