// Extreme arguments for the pixel tools, raw files and images: no crash, no touch outside a buffer of exactly the size told (the
// sanitizers watch), no call that takes long, and nothing changed where a call is refused.
#include <gtest/gtest.h>
#include <qvr/qvr.h>

#include <chrono>
#include <climits>
#include <cstdint>
#include <memory>
#include <vector>

#include "extremes.h"
#include "tests/support/temporaryFolder.h"

namespace {

TEST(Extremes, PixelTools) {
    int a = 7;
    int b = 7;
    for (const int mode : {0, 1}) {
        forEverySize([&](int w, int h, std::uint16_t* p) { return QVR_DISP_Rotate(w, h, p, a, b, mode); });
        forEverySize([&](int w, int h, std::uint16_t* p) { return QVR_DISP_Mirror(w, h, p, mode); });
    }
    forEverySize(
        [&](int w, int h, std::uint16_t* p) { return QVR_DISP_AutoWL(a, b, w, h, p, 14, 0.05f, 0.95f); });
    for (const float fraction : kRatios) {
        Exact pixels(100);
        EXPECT_EQ(QVR_DISP_AutoWL(a, b, 10, 10, pixels.get(), 14, fraction, 1.0f - fraction), 1);
        EXPECT_TRUE(a >= 0 && a <= b && b <= 16383) << fraction;
    }
    for (const int bits : kInts)
        for (const int center : kInts) {
            Exact pixels(100);
            EXPECT_EQ(QVR_DISP_Invert(10, 10, pixels.get(), bits, center, a), 0);
            EXPECT_TRUE(pixels.untouched());
        }
    Exact pixel(1);
    EXPECT_EQ(QVR_DISP_Invert(INT_MAX, INT_MAX, pixel.get(), 14, 5, a), 0);
    EXPECT_TRUE(pixel.untouched());
}

TEST(Extremes, RectanglesOfThePixelTools) {
    const Exact source(60 * 60);
    const RECT fine{0, 60, 60, 0};
    int low = 0;
    int high = 0;
    forEveryRectangle([&](const RECT& r) {
        Exact pixels(60 * 60);
        Exact output(60 * 60);
        QVR_DISP_Mask(60, 60, pixels.get(), &r, 0);
        QVR_DISP_AutoWLByROI(low, high, 60, 60, source.get(), 14, {r.left, r.top}, {r.right, r.bottom}, 0.05f,
                             0.95f);
        if (!QVR_DISP_Cut(60, 60, source.get(), &r, 60, 60, output.get())) {
            EXPECT_TRUE(output.untouched());
        }
        QVR_DISP_Cut_Mask(60, 60, source.get(), &r, &fine, 60, 60, output.get(), 1);
        QVR_DISP_Cut_Mask(60, 60, source.get(), &fine, &r, 60, 60, output.get(), 1);
    });
    Exact output(60 * 60);
    for (const int width : kInts) {
        if (width >= 0 && width <= 60) continue;
        EXPECT_EQ(QVR_DISP_Cut(60, 60, source.get(), &fine, width, 0, output.get()), 0) << width;
    }
    EXPECT_EQ(QVR_DISP_Cut(60, 60, nullptr, &fine, 60, 60, output.get()), 0);
    EXPECT_EQ(QVR_DISP_Cut(60, 60, source.get(), nullptr, 60, 60, output.get()), 0);
    EXPECT_EQ(QVR_DISP_Cut(60, 60, source.get(), &fine, 60, 60, nullptr), 0);
    EXPECT_TRUE(output.untouched());
}

TEST(Extremes, LookupTables) {
    std::unique_ptr<std::uint8_t[]> table(new std::uint8_t[4096]);
    for (int type = -1; type < 6; ++type)
        for (const int low : kInts)
            for (const int high : kInts)
                for (const int k : kInts)
                    EXPECT_EQ(rawImage::Create8BitsLUT(type, low, high, k, k, 4096, table.get()), 1);
    for (const int size : {INT_MIN, -1, 0})
        EXPECT_EQ(rawImage::Create8BitsLUT(0, 0, 1, 1, 5, size, nullptr), 1);
    EXPECT_EQ(rawImage::Create8BitsLUT(0, 0, 1, 1, 5, INT_MAX, nullptr), 1);
}

TEST(Extremes, RawFiles) {
    const TemporaryFolder folder;
    const auto path = folder / "pixels.raw";
    forEverySize(
        [&](int w, int h, std::uint16_t* p) { return QVR_COMP_WriteRAWFile(path.c_str(), w, h, p); });
    forEverySize([&](int w, int h, std::uint16_t* p) { return QVR_COMP_ReadRAWFile(path.c_str(), w, h, p); });
    Exact pixels(1);
    for (const char* missing : {static_cast<const char*>(nullptr), "", "/", "/no/such/folder/file"}) {
        EXPECT_EQ(QVR_COMP_WriteRAWFile(missing, 1, 1, pixels.get()), 0);
        EXPECT_EQ(QVR_COMP_ReadRAWFile(missing, 1, 1, pixels.get()), 0);
    }
}

TEST(Extremes, RawImageSizes) {
    forEverySize([](int w, int h, std::uint16_t* p) {
        rawImage image;
        QVR_ST_RAW_IMAGE record;
        record.Width = w;
        record.Height = h;
        record.BitsStored = 14;
        record.PixelData = p;
        return image.Create(&record);
    });
    forEverySize([](int w, int h, std::uint16_t* p) {
        const auto image = smallImage();
        const int done = image->Update(w, h, p, 14, 13, 0, 0);
        if (!done) {
            EXPECT_EQ(image->GetWidth(), 3);
        }
        return done;
    });
    rawImage empty;
    EXPECT_EQ(empty.Create(nullptr), 0);
    EXPECT_EQ(empty.Open(nullptr), 0);
    EXPECT_EQ(empty.WriteToHDD(), 0);
    EXPECT_EQ(empty.ReadInRAM(), 0);
    EXPECT_EQ(empty.CreateBAKFile(nullptr, nullptr), 0);
    EXPECT_EQ(empty.WriteFileForPROC(nullptr), 0);
    EXPECT_EQ(empty.WriteFileForPRES(nullptr, nullptr), 0);
}

TEST(Extremes, DisplayViews) {
    CRasterDC surface(16, 12);
    const auto image = smallImage();
    const RECT rectangle{0, 0, 16, 12};
    for (const float x : kRatios)
        for (const float y : kRatios)
            for (const int offset : kInts) {
                image->SetXRatio(x);
                image->SetYRatio(y);
                image->SetXOffset(offset);
                image->SetYOffset(-(offset / 2));
                image->BuildDisplayImage(&rectangle, &surface, 0);
                image->UpdateDisplayImage();
                image->Draw(&rectangle, &surface);
            }
    forEveryRectangle([&](const RECT& r) {
        // A bitmap as large as its rectangle is what was asked for: only sides that a machine can hold.
        const double area = (static_cast<double>(r.right) - r.left) * (static_cast<double>(r.bottom) - r.top);
        image->Draw(&r, &surface);
        if (area > 4e6) return;
        image->BuildDisplayImage(&r, &surface, 1);
    });
    EXPECT_EQ(image->BuildDisplayImage(nullptr, &surface, 1), 0);
    for (const int width : kInts)
        for (const int center : kInts)
            for (int type = 0; type < 6; ++type) {
                image->SetWindowWidth(width);
                image->SetWindowCenter(center);
                image->SetLUTType(type);
                image->SetLUTParam(width, center);
                EXPECT_EQ(image->BuildDisplayImage(&rectangle, nullptr, 1), 1);
            }
}

TEST(Extremes, Marks) {
    CRasterDC surface(64, 48);
    const RECT rectangle{0, 0, 64, 48};
    const auto image = smallImage(300, 200);
    EXPECT_EQ(image->AddMark("L", &rectangle, &surface), 0) << "no bitmap yet";
    ASSERT_EQ(image->BuildDisplayImage(&rectangle, &surface, 1), 1);
    EXPECT_EQ(image->AddMark("L", nullptr, &surface), 0);
    EXPECT_EQ(image->AddMark("L", &rectangle, nullptr), 0);
    const RECT wide{0, 0, 600, 400};
    ASSERT_EQ(image->BuildDisplayImage(&wide, &surface, 1), 1);
    ASSERT_EQ(image->AddMark(nullptr, &wide, &surface), 1);
    for (const int x : kInts)
        for (const int y : kInts) {
            image->SetMarkDISPLeftTop(0, {x, y}, &wide, &surface);
            image->MoveMark(0, x, y, &wide, &surface);
            image->PtInMarkRect({x, y}, &surface);
            image->MoveMark(x, 1, 1, &wide, &surface);
            image->InflateMark(x, &wide, &surface);
            image->DeflateMark(y);
            image->SetMarkSelected(x);
            image->Draw(&wide, &surface);
        }
    image->DeleteMark(INT_MIN);
    image->DeleteMark(INT_MAX);
    EXPECT_EQ(image->GetMarkCount(), 1);
    std::uint16_t pixels[6] = {};
    for (const float ratio : kRatios) {
        image->SetYRatio(ratio);
        for (const int bits : {INT_MIN, 9, 10, 12, 13, 14, 16, 17, INT_MAX})
            image->WriteMark(3, 2, pixels, bits, &surface);
    }
    EXPECT_EQ(image->WriteMark(INT_MAX, INT_MAX, pixels, 14, &surface), 0);
    EXPECT_EQ(image->WriteMark(3, 2, nullptr, 14, &surface), 0);
    EXPECT_EQ(image->WriteMark(3, 2, pixels, 14, nullptr), 0);
}

TEST(Extremes, PrintImages) {
    const Exact source(8 * 8);
    CDib bitmap(4, 4, 8);
    ASSERT_TRUE(bitmap.CreateSection(nullptr));
    for (const int column : kInts)
        for (const int row : kInts)
            for (const int window : kInts) {
                const bool inside = column >= 0 && column <= 4 && row >= 0 && row <= 4;
                EXPECT_EQ(rawImage::CreatePrintImage14Bits(8, 8, source.get(), column, row, window, window, 4,
                                                           window, window, &bitmap),
                          inside ? 1 : 0);
            }
    for (const int side : kInts)
        EXPECT_EQ(rawImage::CreatePrintImage12Bits(side, 8, source.get(), 5, 5, 10, 10, 0, 1, 5, &bitmap), 0)
            << side;
}

TEST(Extremes, BitmapsAndSurfaces) {
    for (const int width : kInts)
        for (const int height : kInts)
            for (const int bits : {INT_MIN, 0, 1, 8, 24, 65536 + 8, INT_MAX}) {
                CDib bitmap(width, height, bits);
                if (bitmap.ImageSize > 1U << 22) continue;
                bitmap.CreateSection(nullptr);
                CRasterDC surface(8, 8);
                bitmap.Draw(&surface, INT_MIN, -1, INT_MAX, 2, 0, 0, INT_MAX, INT_MAX, SRCCOPY);
            }
    CRasterDC surface(8, 8);
    forEveryRectangle([&](const RECT& r) {
        surface.FillSolidRect(&r, 0xFFFFFF);
        surface.DrawText("L", -1, &r, 0x10025);
    });
    for (const int x : kInts)
        for (const int y : kInts) {
            surface.MoveTo(x, -(y / 2));
            surface.LineTo(y, x);
        }
    for (const int height : kInts) {
        CFont font(height, height, "Arial", 1);
        CFont* const previous = surface.SelectObject(&font);
        const CSize extent = surface.GetTextExtent("Left", -1);
        EXPECT_TRUE(extent.cx >= 0 && extent.cy >= 0) << height;
        surface.SelectObject(previous);
    }
}

TEST(Extremes, ExaminationPositions) {
    dcmExam exam;
    CRasterDC surface(8, 8);
    const RECT rectangle{0, 0, 8, 8};
    const QVR_ST_STUDY studyRecord;
    const QVR_ST_SERIES seriesRecord;
    ASSERT_TRUE(exam.CreateStudy(&studyRecord, dcmStudy::CR));
    ASSERT_TRUE(exam.CreateSeries(0, &seriesRecord));
    EXPECT_FALSE(exam.CreateStudy(nullptr, dcmStudy::CR));
    EXPECT_FALSE(exam.CreateSeries(0, nullptr));
    EXPECT_FALSE(exam.CreateWorklist(nullptr));
    const QVR_ST_IMAGE image;
    for (const int position : {INT_MIN, -1, 1, 2, 65535, INT_MAX}) {
        EXPECT_FALSE(exam.GetStudy(position));
        EXPECT_FALSE(exam.GetSeriesInRAM(position));
        EXPECT_FALSE(exam.GetWorklist(position));
        EXPECT_FALSE(exam.CreateImage(0, position, &image, "", &rectangle, &surface));
        EXPECT_FALSE(exam.OpenImage(position, 0, &image, &rectangle, &surface));
        EXPECT_EQ(exam.ActivateImage(0, position, &rectangle, &surface), 0);
        EXPECT_EQ(exam.RejectImage(position, 0), 0);
        exam.DrawImage(0, position, &rectangle, &surface);
        exam.DrawImage(position, 0, nullptr, nullptr);
        exam.SetLUT(position, 0, 0, 0);
    }
    EXPECT_EQ(exam.ReadSeriesInRAM(nullptr, &rectangle, &surface), 0);
    EXPECT_EQ(exam.WriteSeriesToHDD(nullptr), 0);
}

TEST(Extremes, StandaloneImage) {
    CRasterDC surface(16, 12);
    const RECT rectangle{0, 0, 16, 12};
    forEverySize([](int w, int h, std::uint16_t* p) {
        CQVRImage image;
        return image.Update(w, h, p, 14, 13, 0, 0);
    });
    CQVRImage image;
    const std::uint16_t pixels[6] = {1, 2, 3, 4, 5, 6};
    ASSERT_EQ(image.Update(3, 2, pixels, 14, 13, 100, 50), 1);
    ASSERT_EQ(image.BuildDisplayImage(&rectangle, &surface, 1), 1);
    for (const int x : kInts)
        for (const int y : kInts) image.FreeDraw({x, y}, &rectangle, &surface);
    forEveryRectangle([&](const RECT& r) { image.FreeDraw({1, 1}, &r, &surface); });
}

// The longest calls on a full detector image, each far below the second that a user notices.
TEST(Extremes, NoCallOnALargeImageTakesASecond) {
    constexpr int side = 4096;
    std::vector<std::uint16_t> pixels(std::size_t{side} * side, 900);
    rawImage image;
    QVR_ST_RAW_IMAGE record;
    record.Width = side;
    record.Height = side;
    record.BitsStored = 14;
    record.PixelData = pixels.data();
    ASSERT_EQ(image.Create(&record), 1);
    CRasterDC surface(640, 480);
    const RECT rectangle{0, 0, 640, 480};
    ASSERT_EQ(image.BuildDisplayImage(&rectangle, &surface, 1), 1);
    ASSERT_EQ(image.AddMark("L", &rectangle, &surface), 1);
    const auto timed = [](const char* name, auto&& call) {
        const auto begin = std::chrono::steady_clock::now();
        call();
        const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
        // Twenty times the goal: the sanitizers slow everything down, and the machine may be shared.
        EXPECT_LT(taken.count(), 20.0) << name;
    };
    for (const float ratio : kRatios) {
        image.SetXRatio(ratio);
        image.SetYRatio(ratio);
        timed("build", [&] { image.BuildDisplayImage(&rectangle, &surface, 0); });
        timed("burn", [&] { image.WriteMark(side, side, pixels.data(), 14, &surface); });
    }
    int width = 0;
    int height = 0;
    const RECT all{0, side, side, 0};
    const RECT part{5, side - 5, side - 5, 5};
    std::vector<std::uint16_t> output(pixels.size());
    CDib bitmap(side, side, 8);
    ASSERT_TRUE(bitmap.CreateSection(nullptr));
    timed("mirror", [&] { QVR_DISP_Mirror(side, side, pixels.data(), 0); });
    timed("invert", [&] { QVR_DISP_Invert(side, side, pixels.data(), 14, 8000, width); });
    timed("window", [&] { QVR_DISP_AutoWL(width, height, side, side, pixels.data(), 14, 0.05f, 0.95f); });
    timed("cut",
          [&] { QVR_DISP_Cut_Mask(side, side, pixels.data(), &all, &part, side, side, output.data(), 1); });
    timed("print", [&] {
        rawImage::CreatePrintImage14Bits(side, side, pixels.data(), 0, 0, 4000, 900, 4, 100, 5, &bitmap);
    });
    timed("undo", [&] { image.SaveUndoData() && image.ReadUndoData(); });
    timed("update", [&] { image.Update(side, side, pixels.data(), 14, 13, 0, 0); });
    timed("rotate", [&] { QVR_DISP_Rotate(side, side, pixels.data(), width, height, 0); });
    timed("far away", [&] {
        const RECT far{INT_MIN, INT_MIN, INT_MIN + 640, INT_MIN + 480};
        image.Draw(&far, &surface);
    });
}

}  // namespace
