// The six ways to change what a series shows: what follows each of them, and what must not.
#include <functional>
#include <limits>

#include "examination.h"
#include "listed.h"
#include "reducedPictures.h"

namespace {

constexpr RECT kLarge{0, 0, 1200, 900};  // the picture becomes 1200 x 745, which has a preview
constexpr RECT kOther{0, 0, 1000, 900};

struct Update {
    const char* name;
    std::function<int(dcmSeries&, CDC*)> call;
    int result;          // resident; 1 where it is not resident, unless the arguments are refused
    bool display;        // the bitmap shows something else
    bool pictures;       // thumbnail and preview follow
    const char* entity;  // width, height, bits, high bit and window as the entity answers
    int changed;
    int panned = 0;
    bool refused = false;
};

const char* const kBefore = "37 23 14 13 4000 3000 ";
const std::vector<std::uint16_t> kNew = ramp(20, 10, 777);

class UpdateTest : public ExaminationTest, public testing::WithParamInterface<Update> {
protected:
    void SetUp() override {
        const QVR_ST_IMAGE record = imageRecord(1);
        ASSERT_EQ(m_series->CreateImage(&record, m_folder.path().c_str(), &kLarge, &m_surface), 1);
        if (GetParam().panned) m_series->UpdateImage(0, GetParam().panned, &kLarge, &m_surface);
    }
    std::string entity() const {
        const dcmImage& image = *m_series->GetDcmImage();
        return listed(image.GetWidth(), image.GetHeight(), image.GetBitsStored(), image.GetHighBit(),
                      image.GetWindowWidth(), image.GetWindowCenter());
    }
    dcmSeries* const m_series = plan();
};

TEST_P(UpdateTest, Resident) {
    const auto shown = reference::pictureOf(raw(m_series)->GetDIB());
    const auto thumb = reference::pictureOf(m_series->GetThumb());
    const auto preview = reference::pictureOf(m_series->GetPreview());
    EXPECT_EQ(GetParam().call(*m_series, &m_surface), GetParam().result);
    const CDib* const display = raw(m_series)->GetDIB();
    ASSERT_NE(display, nullptr);
    EXPECT_EQ(reference::pictureOf(display) != shown, GetParam().display);
    EXPECT_TRUE(same(GetParam().pictures ? reference::thumbnail(*display) : thumb, m_series->GetThumb()));
    EXPECT_TRUE(same(GetParam().pictures ? reference::preview(*display) : preview, m_series->GetPreview()));
    EXPECT_EQ(entity(), GetParam().entity);
    EXPECT_EQ(m_series->IsChanged(), GetParam().changed);
}

TEST_P(UpdateTest, NotResident) {
    ASSERT_EQ(m_series->WriteImageToHDD(), 1);
    const CDib* const thumb = m_series->GetThumb();
    const CDib* const preview = m_series->GetPreview();
    const auto before = reference::pictureOf(thumb);
    EXPECT_EQ(GetParam().call(*m_series, &m_surface), GetParam().refused ? 0 : 1);
    EXPECT_EQ(raw(m_series)->GetDIB(), nullptr);
    EXPECT_EQ(m_series->GetThumb(), thumb);
    EXPECT_EQ(m_series->GetPreview(), preview);
    EXPECT_TRUE(same(before, thumb));
    if (GetParam().result == 1) {  // otherwise only the display failed, which is not there now
        EXPECT_EQ(entity(), GetParam().entity);
        EXPECT_EQ(m_series->IsChanged(), GetParam().changed);
    }
}

constexpr auto pixels = [](int bits, const std::uint16_t* data, const RECT* screen) {
    return [=](dcmSeries& s, CDC* dc) { return s.UpdateImage(20, 10, data, bits, 11, 500, 600, screen, dc); };
};

constexpr auto shows = [](const RECT* screen, int refresh) {
    return [=](dcmSeries& s, CDC* dc) { return s.UpdateImage(screen, dc, refresh); };
};

constexpr auto window = [](int width, int center) {
    return [=](dcmSeries& s, CDC* dc) { return s.UpdateImage(width, center, dc); };
};

constexpr auto zoom = [](float x, float y) {
    return [=](dcmSeries& s, CDC* dc) { return s.UpdateImage(x, y, &kLarge, dc); };
};

constexpr auto pan = [](int x, int y) {
    return [=](dcmSeries& s, CDC* dc) { return s.UpdateImage(x, y, &kLarge, dc); };
};

constexpr auto curve = [](dcmSeries& s, CDC* dc) {
    s.SetLUT(1, 2, 5);
    return s.UpdateImage(dc);
};
INSTANTIATE_TEST_SUITE_P(
    Overloads, UpdateTest,
    testing::Values(
        Update{"pixels", pixels(14, kNew.data(), &kLarge), 1, true, true, "20 10 14 11 500 600 ", 1},
        // The entity's window is the raw image's, which has changed.
        Update{"pixelsTwelveBits", pixels(12, kNew.data(), &kLarge), 0, true, false, "37 23 14 13 500 600 ",
               0},
        Update{"pixelsNull", pixels(14, nullptr, &kLarge), 0, false, false, kBefore, 0, 0, true},
        Update{"displayRefreshed", shows(&kOther, 1), 1, true, true, kBefore, 0},
        Update{"displayNowhere", shows(nullptr, 1), 0, false, false, kBefore, 0},
        Update{"displayOnly", shows(&kOther, 0), 1, true, false, kBefore, 0},
        Update{"windowNoCentre", window(2000, 0), 0, false, false, kBefore, 0, 0, true},
        Update{"window", window(2000, 1000), 1, true, true, "37 23 14 13 2000 1000 ", 1},
        Update{"windowPanned", window(2000, 1000), 1, true, false, "37 23 14 13 2000 1000 ", 1, 3},
        Update{"windowNoWidth", window(0, 1000), 0, false, false, kBefore, 0, 0, true},
        Update{"zoom", zoom(50.0f, 50.0f), 1, true, false, kBefore, 0},
        Update{"pan", pan(1, -1), 1, true, false, kBefore, 0},
        Update{"panFarOutside", pan(2147483647, -2147483647 - 1), 1, true, false, kBefore, 0},
        Update{"curve", curve, 1, true, true, kBefore, 0}),
    nameOf);

class SeriesUpdateTest : public ExaminationTest {};

struct Zoom {
    const char* name;
    float x, y;
    RECT screen;
    int result;
    int xOffset, yOffset;
};

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN(),
                kInfinity = std::numeric_limits<float>::infinity();
constexpr RECT kView{100, 200, 900, 800};
// The image is not resident, so its file need not hold 2000 x 2500 pixels.
TEST_F(ExaminationTest, CentresTheView) {
    const Zoom rows[] = {
        {"half", 0.5f, 0.5f, kView, 1, 200, 650},
        {"eachItsOwn", 0.25f, 2.0f, kView, 1, 0, 1100},
        {"oddRest", 1.0f, 1.0f, {0, 0, 801, 601}, 1, 599, 949},
        {"huge", 3e38f, 3e38f, kView, 1, 1000, 1250},
        {"widestRectangle", 0.5f, 0.5f, {-2147483647, -2147483647, 2147483647, 2147483647}, 1, 0, 0},
        {"fitted", 0.0f, 0.0f, kView, 1, 0, 0},
        {"oneRatioAlone", 0.5f, 0.0f, kView, 0, 11, 12},
        {"negative", -0.5f, 0.5f, kView, 0, 11, 12},
        {"nan", 0.5f, kNaN, kView, 0, 11, 12},
        {"infinite", kInfinity, 0.5f, kView, 0, 11, 12},
        {"emptyRectangle", 0.5f, 0.5f, {0, 0, 0, 10}, 0, 11, 12}};
    for (const Zoom& row : rows) {
        SCOPED_TRACE(row.name);
        dcmSeries* const series = plan();
        QVR_ST_IMAGE record = storedRecord(1);
        record.Width = 2000;
        record.Height = 2500;
        ASSERT_EQ(series->OpenImage(&record), 1);
        const rawImage& image = *raw(series);
        series->UpdateImage(11, 12, &kScreen, &m_surface);
        raw(series)->SetXRatio(13.0f);
        EXPECT_EQ(series->UpdateImage(row.x, row.y, &row.screen, &m_surface), row.result);
        EXPECT_EQ(listed(image.GetXOffset(), image.GetYOffset()), listed(row.xOffset, row.yOffset));
        EXPECT_EQ(listed(image.GetXRatio(), image.GetYRatio()), row.result ? listed(row.x, row.y) : "13 0 ");
    }
}

TEST_F(SeriesUpdateTest, ZoomedBitmapStartsAtTheOffsets) {
    dcmSeries* const series = acquire(1);
    EXPECT_EQ(series->UpdateImage(10.0f, 10.0f, &kScreen, &m_surface), 1);  // 8 x 6 of 37 x 23 pixels
    EXPECT_EQ(listed(raw(series)->GetXOffset(), raw(series)->GetYOffset()), "14 8 ");
    const auto zoomed = reference::pictureOf(raw(series)->GetDIB());
    EXPECT_EQ(listed(zoomed.width, zoomed.height), "80 60 ");
    EXPECT_EQ(series->UpdateImage(1.0f, 1.0f, nullptr, &m_surface), 0);
    EXPECT_EQ(raw(series)->GetXRatio(), 10.0f);
    // Less than a column or row would be left of the image: nothing that the next refresh could show.
    EXPECT_EQ(series->UpdateImage(0.01f, 1.0f, &kScreen, &m_surface), 0);
    EXPECT_EQ(series->UpdateImage(1.0f, 0.02f, &kScreen, &m_surface), 0);
    EXPECT_EQ(listed(raw(series)->GetXRatio(), raw(series)->GetYRatio()), "10 10 ");
    EXPECT_EQ(series->UpdateImage(0.0f, 0.0f, &kScreen, &m_surface), 1);
    EXPECT_EQ(reference::pictureOf(raw(series)->GetDIB()).height, 49);
}

TEST_F(SeriesUpdateTest, UndoBringsDisplayAndPicturesBack) {
    dcmSeries* const series = acquire(1);
    const auto shown = reference::pictureOf(raw(series)->GetDIB());
    const auto thumb = reference::pictureOf(series->GetThumb());
    EXPECT_EQ(series->ReadUndoData(&kScreen, &m_surface), 0);
    EXPECT_EQ(series->SaveUndoData(), 1);
    ASSERT_EQ(series->UpdateImage(20, 10, kNew.data(), 14, 13, 500, 600, &kScreen, &m_surface), 1);
    series->UpdateImage(3, 3, &kScreen, &m_surface);
    EXPECT_EQ(series->ReadUndoData(nullptr, &m_surface), 0);
    EXPECT_TRUE(samePicture(kNew, raw(series)->GetPixelData(), 20, 10));
    EXPECT_EQ(series->ReadUndoData(&kScreen, &m_surface), 1);
    EXPECT_TRUE(resident(series, 1));
    EXPECT_TRUE(same(shown, raw(series)->GetDIB()));
    EXPECT_TRUE(same(thumb, series->GetThumb()));
}

}  // namespace
