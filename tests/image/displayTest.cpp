// Display: the fitted size and ratios, building, letter-boxed drawing, and surfaces that misbehave.
#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "qvr/image/rawImage.h"
#include "support/pictures.h"
#include "support/recordingDC.h"
#include "support/temporaryFolder.h"

namespace {

constexpr int kMin = std::numeric_limits<int>::min(), kMax = std::numeric_limits<int>::max();
constexpr RECT kScreen{0, 0, 800, 600};

class Image : public rawImage {
public:
    Image(int width, int height, int bits = 14) : m_pixels(ramp(width, height)) {
        auto record = newRecord(width, height, m_pixels);
        record.BitsStored = bits;
        Create(&record);
    }
    CSize bitmapSize() const {
        return GetDIB() ? CSize{GetDIB()->InfoHeader->biWidth, GetDIB()->InfoHeader->biHeight} : CSize{};
    }
    std::vector<std::uint8_t> bytes() const { return {GetDIB()->Bits, GetDIB()->Bits + GetDIB()->ImageSize}; }
    using rawImage::ComputeZoomRatio;
    using rawImage::Convert14BitsTo8Bits;
    using rawImage::DrawDIB;

private:
    std::vector<std::uint16_t> m_pixels;
};

struct Fit {
    const char* name;
    int width, height;
    RECT rectangle;
    CSize size;  // (0, 0): refused
    float xRatio = 9.0f, yRatio = 8.0f;
};

TEST(FitTest, KeepsTheShapeOrRefuses) {
    const Fit rows[] = {{"wider", 3000, 2000, kScreen, {800, 533}, 0.26666668f, 0.2665f},
                        {"taller", 200, 300, {-10, 5, 790, 605}, {400, 600}, 2.0f, 2.0f},
                        {"onePixel", 1, 1, kScreen, {600, 600}, 600.0f, 600.0f},
                        {"tooThin", 3000, 1, {0, 0, 800, 600}, {0, 0}},
                        {"tooFlat", 1, 3000, kScreen, {0, 0}},
                        {"noPixels", 0, 0, kScreen, {0, 0}},
                        {"noWidth", 30, 20, {5, 0, 5, 9}, {0, 0}},
                        {"noHeight", 30, 20, {0, 9, 9, 9}, {0, 0}},
                        {"inverted", 30, 20, {800, 600, 0, 0}, {0, 0}},
                        {"largest", 30, 20, {kMin, kMin, kMax, kMax}, {0, 0}}};
    for (const Fit& row : rows) {
        SCOPED_TRACE(row.name);
        Image image(row.width, row.height);
        image.SetXRatio(9.0f);
        image.SetYRatio(8.0f);
        EXPECT_TRUE(image.ComputeZoomRatio(&row.rectangle) == row.size);
        EXPECT_EQ(image.GetXRatio(), row.xRatio);
        EXPECT_EQ(image.GetYRatio(), row.yRatio);
        image.SetXOffset(7);
        image.SetYOffset(8);
        const bool fits = row.size.cx > 0;
        EXPECT_EQ(image.BuildDisplayImage(&row.rectangle, nullptr, 1), fits ? 1 : 0);
        EXPECT_EQ(image.GetXOffset() + image.GetYOffset(), fits ? 0 : 15);
        EXPECT_TRUE(image.bitmapSize() == row.size)
            << image.bitmapSize().cx << " x " << image.bitmapSize().cy;
    }
}

struct Zoom {
    const char* name;
    float xRatio, yRatio;
    CSize size;
};

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN(), kInf = std::numeric_limits<float>::infinity();

TEST(ZoomTest, TakesTheSizeFromStoredRatios) {
    const Zoom rows[] = {{"cutToTheRectangle", 0.5f, 0.5f, {80, 60}},
                         // 300 * 0.08f is 24 in single precision and 23.999999 in double.
                         {"singlePrecision", 0.08f, 0.08f, {24, 16}},
                         {"onlyOne", 0.5f, 0.0f, {}},
                         {"infinite", kInf, 0.5f, {}},
                         {"notANumber", kNaN, 0.5f, {}},
                         {"lessThanAPixel", 0.003f, 0.5f, {}},
                         {"lowerThanAPixel", 0.5f, 0.004f, {}},
                         {"both0", 0.0f, 0.0f, {80, 53}}};
    for (const Zoom& row : rows) {
        SCOPED_TRACE(row.name);
        const auto& [name, xRatio, yRatio, size] = row;
        Image image(300, 200);
        ASSERT_EQ(image.BuildDisplayImage(&kScreen, nullptr, 1), 1);
        for (const int reset : {0, 1}) EXPECT_EQ(image.BuildDisplayImage(nullptr, nullptr, reset), 0);
        image.SetXRatio(xRatio);
        image.SetYRatio(yRatio);
        image.SetXOffset(7);
        constexpr RECT small{10, 10, 90, 70};
        EXPECT_EQ(image.BuildDisplayImage(&small, nullptr, 0), size.cx > 0 ? 1 : 0);
        EXPECT_EQ(image.GetXOffset(), 7);
        if (size.cx > 0) {
            EXPECT_TRUE(image.bitmapSize() == size)
                << image.bitmapSize().cx << " x " << image.bitmapSize().cy;
        } else {
            EXPECT_TRUE(image.bitmapSize() == (CSize{800, 533})) << "the bitmap before stays";
            EXPECT_TRUE(image.GetXRatio() == xRatio || xRatio != xRatio);
        }
    }
}

TEST(BuildDisplayImage, OtherDepthsAreBlackAndNotConverted) {
    Image image(40, 30, 12);
    EXPECT_EQ(image.BuildDisplayImage(&kScreen, nullptr, 1), 0);
    EXPECT_TRUE(image.bitmapSize() == (CSize{800, 600}));
    EXPECT_EQ(image.bytes(), std::vector<std::uint8_t>(800 * 600));
    EXPECT_EQ(image.UpdateDisplayImage(), 0);
    EXPECT_EQ(image.bytes(), std::vector<std::uint8_t>(800 * 600));
    EXPECT_EQ(image.Convert14BitsTo8Bits(), 1);
    EXPECT_NE(image.bytes(), std::vector<std::uint8_t>(800 * 600));
}

TEST(BuildDisplayImage, NeedsResidentPixels) {
    const TemporaryFolder folder;
    Image image(40, 30);
    ASSERT_EQ(image.CreateBAKFile("1", folder.path().c_str()), 1);
    ASSERT_EQ(image.ValidateFile(), 1);
    ASSERT_EQ(image.BuildDisplayImage(&kScreen, nullptr, 1), 1);
    ASSERT_EQ(image.WriteToHDD(), 1);
    image.SetXOffset(5);
    const float ratio = image.GetXRatio();
    EXPECT_EQ(image.BuildDisplayImage(&kScreen, nullptr, 1), 0);
    EXPECT_EQ(image.UpdateDisplayImage(), 0);
    EXPECT_EQ(image.GetXOffset(), 5);
    EXPECT_EQ(image.GetXRatio(), ratio);
    RecordingDC surface;
    image.Draw(&kScreen, &surface);
    EXPECT_TRUE(surface.drawn.empty());
}

TEST(UpdateDisplayImage, FollowsWindowAndCurveInTheSameBitmap) {
    Image image(40, 30);
    ASSERT_EQ(image.BuildDisplayImage(&kScreen, nullptr, 1), 1);
    const CDib* const bitmap = image.GetDIB();
    const auto before = image.bytes();
    image.SetWindowCenter(1500);
    image.SetLUTType(4);
    image.SetLUTParam(6, 3);
    EXPECT_EQ(image.bytes(), before) << "setters rebuild nothing";
    EXPECT_EQ(image.UpdateDisplayImage(), 1);
    EXPECT_EQ(image.GetDIB(), bitmap);
    const auto updated = image.bytes();
    EXPECT_NE(updated, before);
    EXPECT_EQ(image.BuildDisplayImage(&kScreen, nullptr, 0), 1);
    EXPECT_EQ(image.bytes(), updated);
}

struct Placement {
    const char* name;
    CSize bitmap;
    RECT rectangle;
    std::vector<std::string> drawn;
};

TEST(DrawDIBTest, LetterBoxes) {
    const Placement rows[] = {
        {"wide", {800, 533}, kScreen, {"fill 0,0,800,33", "fill 0,566,800,600", "stretch 0,33 800x533"}},
        {"tall", {400, 600}, kScreen, {"fill 0,0,200,600", "fill 600,0,800,600", "stretch 200,0 400x600"}},
        {"filling", {800, 600}, kScreen, {"stretch 0,0 800x600"}},
        {"smallOdd",
         {33, 25},
         {-20, 10, 60, 70},
         {"fill -20,10,60,27", "fill -20,52,60,70", "fill -20,10,3,70", "fill 36,10,60,70",
          "stretch 3,27 33x25"}},
        {"wideShrunk",
         {800, 533},
         {10, 20, 410, 320},
         {"fill 10,20,410,37", "fill 10,303,410,320", "stretch 10,37 400x266"}},
        {"empty", {80, 60}, {5, 5, 5, 50}, {}},
        {"largest", {80, 60}, {kMin, kMin, kMax, kMax}, {}}};
    for (const Placement& row : rows) {
        SCOPED_TRACE(row.name);
        const auto& [name, size, rectangle, drawn] = row;
        Image image(size.cx, size.cy);
        const RECT own{0, 0, size.cx, size.cy};
        ASSERT_EQ(image.BuildDisplayImage(&own, nullptr, 1), 1);
        RecordingDC surface;
        EXPECT_EQ(image.DrawDIB(&rectangle, &surface, SRCCOPY), drawn.empty() ? 0 : 1);
        EXPECT_EQ(surface.drawn, drawn);
        surface.drawn.clear();
        image.Draw(&rectangle, &surface);
        EXPECT_EQ(surface.drawn, drawn);
    }
}

// --- surfaces that misbehave --------------------------------------------------------------------------------------

TEST(Surface, MayThrowAnywhere) {
    Image image(80, 40);
    for (int failing = 0; failing < 12; ++failing) {
        RecordingDC surface;
        int calls = 0;
        surface.onCall = [&] {
            if (calls++ == failing) throw std::runtime_error("surface");
        };
        EXPECT_EQ(image.BuildDisplayImage(&kScreen, &surface, 1), 1)
            << "the picture does not depend on the palette";
        const int drawn = image.DrawDIB(&kScreen, &surface, SRCCOPY);
        EXPECT_EQ(drawn, failing >= 3 && calls > failing ? 0 : 1) << "call " << failing;
    }
}

TEST(Surface, MayCallBackAnywhere) {
    const TemporaryFolder folder;
    const auto other = ramp(11, 13);
    for (int action = 0; action < 5; ++action)
        for (int when = 0; when < 12; ++when) {
            Image image(80, 40);
            ASSERT_EQ(image.CreateBAKFile("1", folder.path().c_str()), 1);
            ASSERT_EQ(image.ValidateFile(), 1);
            RecordingDC surface;
            int calls = 0;
            surface.onCall = [&] {
                if (calls++ != when) return;
                if (action == 0) image.WriteToHDD();
                if (action == 1) image.Update(11, 13, other.data(), 14, 13, 100, 100);
                if (action == 2) image.BuildDisplayImage(&kScreen, &surface, 1);
                if (action == 3) image.Draw(&kScreen, &surface);
                if (action == 4 && image.GetDIB()) image.GetDIB()->Empty();
            };
            image.BuildDisplayImage(&kScreen, &surface, 1);
            image.Draw(&kScreen, &surface);
            EXPECT_TRUE(image.IsReadInRAM() || !image.GetDIB()) << "action " << action << " at call " << when;
            EXPECT_EQ(image.IsReadInRAM() || image.ReadInRAM(), true)
                << "action " << action << " at call " << when;
            EXPECT_EQ(image.BuildDisplayImage(&kScreen, &surface, 1), 1);
        }
}

TEST(Surface, WhatItBuildsMeanwhileIsNewerAndStays) {
    const auto other = ramp(11, 13, 999);
    Image image(80, 40), expected(80, 40);
    RecordingDC surface;
    bool called = false;
    surface.onCall = [&] {
        if (std::exchange(called, true)) return;
        ASSERT_EQ(image.Update(11, 13, other.data(), 14, 13, 5000, 3000), 1);
        ASSERT_EQ(image.BuildDisplayImage(&kScreen, nullptr, 1), 1);
    };
    image.BuildDisplayImage(&kScreen, &surface, 1);
    ASSERT_TRUE(called);
    ASSERT_EQ(expected.Update(11, 13, other.data(), 14, 13, 5000, 3000) +
                  expected.BuildDisplayImage(&kScreen, nullptr, 1),
              2);
    EXPECT_EQ(image.GetXRatio(), expected.GetXRatio());
    EXPECT_EQ(image.bytes(), expected.bytes());
}

TEST(DrawDIB, NeedsSurfaceRectangleAndAGoodBitmap) {
    Image image(80, 60);
    RecordingDC surface;
    EXPECT_EQ(image.DrawDIB(&kScreen, &surface, SRCCOPY), 0);
    ASSERT_EQ(image.BuildDisplayImage(&kScreen, &surface, 1), 1);
    constexpr RECT wide{0, 0, 900, 600};  // with something to fill
    EXPECT_EQ(image.DrawDIB(&wide, nullptr, SRCCOPY), 0);
    EXPECT_EQ(image.DrawDIB(nullptr, &surface, SRCCOPY), 0);
    image.GetDIB()->InfoHeader->biHeight = 601;
    EXPECT_EQ(image.DrawDIB(&kScreen, &surface, SRCCOPY), 0);
    EXPECT_TRUE(surface.drawn.empty());
    image.GetDIB()->InfoHeader->biHeight = 600;
    EXPECT_EQ(image.DrawDIB(&kScreen, &surface, 42), 1);
    EXPECT_EQ(surface.drawn, std::vector<std::string>{"stretch 0,0 800x600 rop 42"});
}

}  // namespace
