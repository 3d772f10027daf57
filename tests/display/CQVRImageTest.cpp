// CQVRImage: whose pixels are kept, what a call changes and what it leaves, drawing, deep copies.
#include "qvr/display/CQVRImage.h"

#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "qvr/image/detail/bitmapRows.h"
#include "qvr/image/rawImage.h"
#include "support/pictures.h"
#include "support/recordingDC.h"
#include "support/refuseAllocation.h"

namespace {

constexpr RECT kScreen{0, 0, 80, 60};
constexpr int kHigh = std::numeric_limits<int>::max();

QVR_ST_QVR_IMAGE record(int width, int height, const std::vector<std::uint16_t>& pixels,
                        int windowWidth = 4000, int windowCenter = 3000) {
    return {.Height = height,
            .Width = width,
            .BitsStored = 14,
            .HighBit = 13,
            .PixelSpacing = 143,
            .WindowCenter = windowCenter,
            .WindowWidth = windowWidth,
            .PixelData = pixels.data()};
}

std::vector<int> valuesOf(const CQVRImage& i) {
    return {i.GetWidth(),
            i.GetHeight(),
            i.GetPixelSpacing(),
            i.GetBitsStored(),
            i.GetHighBit(),
            i.GetWindowWidth(),
            i.GetWindowCenter(),
            i.GetInitialWindowWidth(),
            i.GetInitialWindowCenter(),
            i.GetXOffset(),
            i.GetYOffset(),
            i.GetLUTType(),
            i.GetLUTParamK(),
            i.GetLUTParamC()};
}
template <class Image>
std::vector<std::uint8_t> bitmapOf(const Image& image) {
    std::vector<std::uint8_t> bytes;
    const qvr::BitmapRows rows = qvr::rowsOf(image.GetDIB());
    for (int y = 0; y < rows.height; ++y) bytes.insert(bytes.end(), rows.row(y), rows.row(y) + rows.width);
    return bytes;
}

class CQVRImageTest : public testing::Test {
protected:
    void create(int width, int height) {
        m_pixels = ramp(width, height);
        const auto r = record(width, height, m_pixels);
        ASSERT_EQ(m_image.Create(&r), 1);
    }
    std::vector<std::uint16_t> m_pixels;
    CQVRImage m_image;
    RecordingDC m_surface;
};

TEST_F(CQVRImageTest, CreateTakesACopyAndKeepsBitmapZoomAndCurve) {
    create(37, 23);
    EXPECT_EQ(valuesOf(m_image), (std::vector{37, 23, 143, 14, 13, 4000, 3000, 4000, 3000, 0, 0, 0, 1, 5}));
    ASSERT_EQ(m_image.BuildDisplayImage(&kScreen, &m_surface, 1), 1);
    const CDib* const bitmap = m_image.GetDIB();
    const float ratio = m_image.GetXRatio();
    m_image.SetXOffset(3);
    m_image.SetLUTType(2);
    const auto other = ramp(5, 7, 99);
    const auto r = record(5, 7, other, 300, 0);  // no centre: the automatic window, here too narrow
    ASSERT_EQ(m_image.Create(&r), 1);
    EXPECT_EQ(valuesOf(m_image),
              (std::vector{5, 7, 143, 14, 13, m_image.GetWindowWidth(), m_image.GetWindowCenter(),
                           m_image.GetWindowWidth(), m_image.GetWindowCenter(), 3, 0, 2, 1, 5}));
    EXPECT_GT(m_image.GetWindowWidth(), 300);
    EXPECT_TRUE(samePicture(other, m_image.GetPixelData(), 5, 7));
    EXPECT_NE(m_image.GetPixelData(), other.data());
    EXPECT_EQ(m_image.GetDIB(), bitmap);
    EXPECT_EQ(m_image.GetXRatio(), ratio);
}

TEST_F(CQVRImageTest, UpdateDropsBitmapAndOffsetsAndKeepsTheRest) {
    create(37, 23);
    ASSERT_EQ(m_image.BuildDisplayImage(&kScreen, &m_surface, 1), 1);
    const float ratio = m_image.GetXRatio();
    m_image.SetXOffset(3), m_image.SetYOffset(4), m_image.SetLUTParam(7, 8);
    const auto other = ramp(9, 4, 50);
    ASSERT_EQ(m_image.Update(9, 4, other.data(), 12, 11, 200, 100), 1);
    EXPECT_EQ(valuesOf(m_image), (std::vector{9, 4, 143, 12, 11, 200, 100, 200, 100, 0, 0, 0, 7, 8}));
    EXPECT_TRUE(samePicture(other, m_image.GetPixelData(), 9, 4));
    EXPECT_EQ(m_image.GetDIB(), nullptr);
    EXPECT_EQ(m_image.GetXRatio(), ratio);
    EXPECT_EQ(m_image.BuildDisplayImage(&kScreen, &m_surface, 1), 0) << "12 bits stay black";
    EXPECT_EQ(m_image.UpdateDisplayImage(), 0);
}

TEST_F(CQVRImageTest, ItsOwnPixelsMayComeBack) {
    create(37, 23);
    const auto expected = std::vector<std::uint16_t>(m_pixels.begin() + 37, m_pixels.end());
    ASSERT_EQ(m_image.Update(37, 22, m_image.GetPixelData() + 37, 14, 13, 1, 1), 1);
    EXPECT_TRUE(samePicture(expected, m_image.GetPixelData(), 37, 22));
    auto r = record(37, 22, m_pixels);
    r.PixelData = m_image.GetPixelData();
    ASSERT_EQ(m_image.Create(&r), 1);
    EXPECT_TRUE(samePicture(expected, m_image.GetPixelData(), 37, 22));
}

TEST_F(CQVRImageTest, RefusalsLeaveEverything) {
    create(37, 23);
    ASSERT_EQ(m_image.BuildDisplayImage(&kScreen, &m_surface, 1), 1);
    const auto before = valuesOf(m_image);
    const CDib* const bitmap = m_image.GetDIB();
    auto r = record(1, 1, m_pixels);
    r.PixelData = nullptr;
    EXPECT_EQ(m_image.Create(nullptr), 0);
    EXPECT_EQ(m_image.Create(&r), 0);
    EXPECT_EQ(m_image.Update(1, 1, nullptr, 14, 13, 1, 1), 0);
    EXPECT_EQ(m_image.Update(-1, 1, m_pixels.data(), 14, 13, 1, 1), 0);
    EXPECT_EQ(m_image.Update(kHigh, kHigh, m_pixels.data(), 14, 13, 0, 0), 0);
    for (const RECT& bad : {RECT{0, 0, 0, 9}, RECT{9, 9, 0, 0}})
        EXPECT_EQ(m_image.BuildDisplayImage(&bad, &m_surface, 1), 0);
    EXPECT_EQ(m_image.BuildDisplayImage(nullptr, &m_surface, 1), 0);
    EXPECT_EQ(valuesOf(m_image), before);
    EXPECT_EQ(m_image.GetDIB(), bitmap);
    EXPECT_TRUE(samePicture(m_pixels, m_image.GetPixelData(), 37, 23));
}

TEST_F(CQVRImageTest, ShowsWhatTheRawImageShows) {
    create(203, 117);
    rawImage raw;
    const auto r = newRecord(203, 117, m_pixels);
    ASSERT_EQ(raw.Create(&r), 1);
    struct Open : CQVRImage {
        using CQVRImage::ComputeZoomRatio;
        explicit Open(const CQVRImage& image) : CQVRImage(image) {}
    } open(m_image);
    EXPECT_EQ(open.ComputeZoomRatio(&kScreen), (CSize{80, 46}));
    EXPECT_EQ(open.GetXRatio(), 80.0f / 203);
    const auto shown = [&](auto& image) {
        std::vector<std::vector<std::uint8_t>> pictures;
        m_surface.drawn.clear();
        const auto show = [&](int reset) {
            EXPECT_EQ(image.BuildDisplayImage(&kScreen, &m_surface, reset), 1);
            pictures.push_back(bitmapOf(image));
            image.Draw(&kScreen, &m_surface);
        };
        show(1);
        image.SetLUTType(4), image.SetLUTParam(9, 6);
        show(0);
        image.SetXOffset(9), image.SetYOffset(6);
        show(0);
        image.SetWindowWidth(1800), image.SetWindowCenter(1200);
        show(0);
        return std::pair(pictures, m_surface.drawn);
    };
    EXPECT_EQ(shown(m_image), shown(raw));
}

TEST_F(CQVRImageTest, FreeDrawPaintsNothingButTheBitmap) {
    create(200, 100);
    const RECT room{0, 0, 500, 400}, own{0, 0, 200, 100};
    ASSERT_EQ(m_image.BuildDisplayImage(&own, &m_surface, 1), 1);
    for (const CPoint offset :
         {CPoint{50, 30}, CPoint{400, 350}, CPoint{-50, -30}, CPoint{500, 0}, CPoint{0, -kHigh}})
        m_image.FreeDraw(offset, &room, &m_surface);
    EXPECT_EQ(m_surface.drawn,
              (std::vector<std::string>{"stretch 50,30 200x100", "stretch 400,350 100x50 from 0,50 100x50",
                                        "stretch 0,0 150x70 from 50,0 150x70"}));
    m_image.FreeDraw({0, 0}, nullptr, &m_surface);
    m_image.FreeDraw({0, 0}, &room, nullptr);
    CQVRImage().FreeDraw({0, 0}, &room, &m_surface);
    EXPECT_EQ(m_surface.drawn.size(), 3u);
    m_surface.onCall = [&] { m_image.Update(1, 1, m_pixels.data(), 14, 13, 1, 1); };  // drops the bitmap
    m_image.FreeDraw({0, 0}, &room, &m_surface);
    EXPECT_EQ(m_image.GetDIB(), nullptr);
}

TEST_F(CQVRImageTest, ASurfaceMayThrow) {
    create(37, 23);
    ASSERT_EQ(m_image.BuildDisplayImage(&kScreen, nullptr, 1), 1);
    const auto before = bitmapOf(m_image);
    m_surface.onCall = [] { throw std::runtime_error("surface"); };
    EXPECT_EQ(m_image.BuildDisplayImage(&kScreen, &m_surface, 1), 1) << "only the palette is missing";
    m_image.Draw(&kScreen, &m_surface);
    m_image.FreeDraw({1, 1}, &kScreen, &m_surface);
    EXPECT_EQ(bitmapOf(m_image), before);
}

TEST_F(CQVRImageTest, CopiesAreDeep) {
    create(37, 23);
    ASSERT_EQ(m_image.BuildDisplayImage(&kScreen, &m_surface, 1), 1);
    m_image.SetXOffset(3), m_image.SetLUTType(3), m_image.SetLUTParam(7, 8);
    CQVRImage copy(m_image), assigned;
    const auto small = record(2, 2, m_pixels);
    ASSERT_EQ(assigned.Create(&small), 1);
    assigned = m_image;
    const auto bitmap = bitmapOf(m_image);
    for (CQVRImage* other : {&copy, &assigned}) {
        EXPECT_EQ(valuesOf(*other), valuesOf(m_image));
        EXPECT_EQ(other->GetYRatio(), m_image.GetYRatio());
        EXPECT_NE(other->GetPixelData(), m_image.GetPixelData());
        EXPECT_NE(other->GetDIB(), m_image.GetDIB());
        EXPECT_EQ(bitmapOf(*other), bitmap);
        other->GetPixelData()[0] = 12345;
        other->SetWindowCenter(100);
        EXPECT_EQ(other->UpdateDisplayImage(), 1);
        EXPECT_NE(bitmapOf(*other), bitmap);
    }
    EXPECT_TRUE(samePicture(m_pixels, m_image.GetPixelData(), 37, 23));
    EXPECT_EQ(bitmapOf(m_image), bitmap);
    const CQVRImage& self = copy;
    copy = self;
    EXPECT_EQ(copy.GetPixelData()[0], 12345);
}

TEST_F(CQVRImageTest, CopiesWithoutMemoryAreAllOrNothing) {
    create(37, 23);
    ASSERT_EQ(m_image.BuildDisplayImage(&kScreen, &m_surface, 1), 1);
    const auto small = ramp(3, 3);
    const auto r = record(3, 3, small);
    std::optional<CQVRImage> target;
    const long refusals =
        refuseEachAllocation([&] { target.emplace().Create(&r); }, [&] { return *target = m_image, 1; },
                             [&](int, bool) {
                                 const bool taken = target->GetWidth() == 37;
                                 EXPECT_EQ(valuesOf(*target)[0], taken ? 37 : 3);
                                 EXPECT_TRUE(samePicture(taken ? m_pixels : small, target->GetPixelData(),
                                                         taken ? 37 : 3, taken ? 23 : 3));
                                 EXPECT_EQ(target->GetDIB() != nullptr, taken);
                             });
    EXPECT_GE(refusals, 4);
    {
        const RefuseAllocation refusal(0);
        EXPECT_EQ(target.emplace().Create(&r), 0);
    }
    EXPECT_EQ(CQVRImage(*target).GetPixelData(), nullptr) << "a copy of no pixels";
}

}  // namespace
