// Burned marks: which pixels, at every surface depth, at every edge; and that what is burned is what was seen.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cfloat>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "marks/markSurface.h"
#include "qvr/image/detail/bitmapRows.h"
#include "qvr/marks/detail/burnIn.h"
#include "qvr/platform/CRasterDC.h"
#include "qvr/platform/detail/textDecoding.h"
#include "qvr/platform/detail/textFaces.h"
#include "support/temporaryFolder.h"

namespace {

using Pixels = std::vector<std::uint16_t>;
constexpr int kWidth = 151, kHeight = 97;

CMark markAt(const char* text, CPoint place, int height = 40) {
    CMark mark;
    mark.SetMarkText(text);
    mark.SetDISPFontHeight(height);
    mark.SetPIXLeftTop(place);
    return mark;
}

// A picture of other values than any burned one, with the mark burned in.
Pixels burned(const CMark& mark, CDC& surface, int width = kWidth, int height = kHeight, int bits = 14,
              float ratio = 1) {
    Pixels pixels(static_cast<std::size_t>(width * height), 7);
    EXPECT_EQ(qvr::BurnInMark(width, height, pixels.data(), bits, &mark, ratio, &surface), 1);
    return pixels;
}

TEST(BurnIn, EveryFullPixelOfTheTextBecomesTheBrightestValue) {
    CRasterDC raster(160, 160), surface(1, 1);  // drawn here as the user would see it at that size
    raster.SetTextSmoothing(0);
    CFont font(160, 400, "Arial", 1);
    raster.SelectObject(&font);
    raster.SetTextColor(0xFFFFFF);
    const RECT box{0, 0, 160, 160};
    raster.DrawText("R", -1, &box, DT_CENTER | DT_VCENTER);
    for (const auto& [bits, value] :
         {std::pair(10, 1023), std::pair(12, 4095), std::pair(14, 16383), std::pair(16, 65535)}) {
        const Pixels pixels = burned(markAt("R", {30, 20}), surface, 300, 200, bits, 0.25f);
        int count = 0;
        for (int y = 0; y < 200; ++y)
            for (int x = 0; x < 300; ++x) {
                const bool text = raster.GetPixel(x - 30, y - 20) != 0;
                count += text;
                ASSERT_EQ(pixels[static_cast<std::size_t>((199 - y) * 300 + x)], text ? value : 7)
                    << x << ", " << y;
            }
        EXPECT_GT(count, 1500);
    }
}

TEST(BurnIn, SurfaceDepthMakesNoDifference) {
    CRasterDC surface32(1, 1);
    for (const float ratio : {1.0f, 0.37f, 0.8f}) {
        const Pixels expected = burned(markAt("Rg 12", {5, 9}), surface32, kWidth, kHeight, 14, ratio);
        EXPECT_GT(std::count(expected.begin(), expected.end(), 16383), 100);
        for (const int bits : {8, 16, 24}) {
            CRasterDC surface(1, 1, bits);
            EXPECT_TRUE(samePicture(
                expected, burned(markAt("Rg 12", {5, 9}), surface, kWidth, kHeight, 14, ratio).data(), kWidth,
                kHeight))
                << bits;
        }
        RecordingDC host;
        EXPECT_EQ(burned(markAt("Rg 12", {5, 9}), host, kWidth, kHeight, 14, ratio), expected);
    }
}

TEST(BurnIn, WhatLiesOutsideIsLeftOut) {
    CRasterDC surface(1, 1);
    constexpr int margin = 200, wide = kWidth + 2 * margin, high = kHeight + 2 * margin;
    int total = 0;
    for (const CPoint at :
         {CPoint{-30, 10}, CPoint{130, 10}, CPoint{20, -15}, CPoint{20, 80}, CPoint{-60, -20},
          CPoint{140, 90}, CPoint{-80, 70}, CPoint{150, 96}, CPoint{-2, 30}}) {
        // The same mark inside a larger picture, of which the middle is taken.
        const Pixels large = burned(markAt("MWgM", {at.x + margin, at.y + margin}, 60), surface, wide, high);
        const Pixels small = burned(markAt("MWgM", at, 60), surface);
        int inked = 0, different = 0;
        for (int row = 0; row < kHeight; ++row)
            for (int x = 0; x < kWidth; ++x) {
                const auto expected = large[static_cast<std::size_t>((row + margin) * wide + x + margin)];
                inked += expected != 7;
                different += expected != small[static_cast<std::size_t>(row * kWidth + x)];
            }
        // An outline that is cut by the edge may be rounded the other way at a pixel.
        EXPECT_LE(different, inked / 500) << at.x << ", " << at.y;
        total += inked;
    }
    EXPECT_GT(total, 3000);
    constexpr int low = std::numeric_limits<int>::min(), far = std::numeric_limits<int>::max();
    for (const CPoint at :
         {CPoint{kWidth, 0}, CPoint{0, kHeight}, CPoint{low, 0}, CPoint{0, low}, CPoint{far, far}})
        EXPECT_EQ(burned(markAt("MWgM", at), surface), Pixels(kWidth * kHeight, 7));
}

TEST(BurnIn, TinyRatiosEndWithoutMuchMemory) {
    CRasterDC surface(1, 1);
    const auto peak = [] {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss / 1024;  // MiB
    };
    const auto before = peak();
    for (const float ratio : {1e-3f, 1e-6f, 1e-12f, FLT_TRUE_MIN})
        for (const CPoint at : {CPoint{0, 0}, CPoint{-1000, -1000}, CPoint{-100000000, -100000000}})
            burned(markAt("MWgM", at), surface, kWidth, kHeight, 14, ratio);
    EXPECT_LT(peak() - before, 256);
}

TEST(BurnIn, WhatCannotBeBurnedChangesNothing) {
    CRasterDC surface(1, 1);
    class SmallRasters : public RecordingDC {
        std::unique_ptr<CRasterDC> CreateCompatibleRaster(int width, int height) override {
            return depth == 32 ? std::make_unique<CRasterDC>(1, 1, depth)
                               : std::make_unique<CRasterDC>(width, height, depth);
        }

    public:
        int depth = 32;
    } small, deep;
    deep.depth = 24;
    const CMark mark = markAt("R", {0, 0});
    Pixels pixels(kWidth * kHeight, 7);
    const auto burn = [&](int bits, float ratio, int width = kWidth, int height = kHeight) {
        return qvr::BurnInMark(width, height, pixels.data(), bits, &mark, ratio, &surface);
    };
    for (const int bits : {0, 8, 11, 13, 15, 17, 32, -14}) EXPECT_EQ(burn(bits, 1), 0) << bits;
    for (const float ratio : {0.0f, -1.0f, 1e9f, NAN, INFINITY}) EXPECT_EQ(burn(14, ratio), 0) << ratio;
    EXPECT_EQ(burn(14, 1, -kWidth, kHeight), 0);
    EXPECT_EQ(burn(14, 1, 1 << 20, 1 << 20), 0);
    EXPECT_EQ(qvr::BurnInMark(kWidth, kHeight, nullptr, 14, &mark, 1, &surface), 0);
    EXPECT_EQ(qvr::BurnInMark(kWidth, kHeight, pixels.data(), 14, nullptr, 1, &surface), 0);
    EXPECT_EQ(qvr::BurnInMark(kWidth, kHeight, pixels.data(), 14, &mark, 1, nullptr), 0);
    EXPECT_EQ(qvr::BurnInMark(kWidth, kHeight, pixels.data(), 14, &mark, 1, &small), 0);
    EXPECT_EQ(qvr::BurnInMark(kWidth, kHeight, pixels.data(), 14, &mark, 1, &deep), 0);
    EXPECT_EQ(pixels, Pixels(kWidth * kHeight, 7));
}

TEST(BurnIn, WriteMarkBurnsAllItCan) {
    constexpr RECT rect{0, 0, 400, 200};
    MarkedImage image;
    image.show(800, 400, rect);
    CRasterDC surface(400, 200);
    ASSERT_EQ(image.AddMark("L", &rect, &surface) + image.AddMark("R", &rect, &surface), 2);
    const Pixels before(800 * 400, 7);
    Pixels pixels = before;
    EXPECT_EQ(image.WriteMark(800, 400, pixels.data(), 13, &surface), 0);
    EXPECT_EQ(pixels, before);
    const auto burn = [&](Pixels& into, const char* text, int column) {
        const CMark mark = markAt(text, {column, 0});
        qvr::BurnInMark(800, 400, into.data(), 12, &mark, 0.5f, &surface);
    };
    Pixels second = before;
    burn(second, "R", 90);
    Pixels both = second;
    burn(both, "L", 10);
    EXPECT_EQ(image.WriteMark(800, 400, pixels.data(), 12, &surface), 1);
    EXPECT_EQ(pixels, both);

    class FirstRasterFails : public RecordingDC {
        std::unique_ptr<CRasterDC> CreateCompatibleRaster(int width, int height) override {
            if (m_calls == 3) throw std::runtime_error("surface");
            return m_calls++ == 0 ? nullptr : CDC::CreateCompatibleRaster(width, height);
        }
        int m_calls = 0;
    } failing;
    pixels = before;
    EXPECT_EQ(image.WriteMark(800, 400, pixels.data(), 12, &failing), 0);
    EXPECT_EQ(pixels, second);
    EXPECT_EQ(image.WriteMark(800, 400, pixels.data(), 12, &failing), 0) << "it throws from now on";
    EXPECT_EQ(pixels, second);
}

TEST(BurnIn, OwnPixelsMayGoMeanwhile) {
    RecordingDC surface;
    constexpr RECT rect{0, 0, 400, 200};
    CRasterDC shown(400, 200);
    const Pixels small(4, 1), other(800 * 400, 9);
    for (const bool sameSize : {false, true}) {
        MarkedImage image;
        image.show(800, 400, rect);
        ASSERT_EQ(image.AddMark("L", &rect, &shown), 1);
        surface.onCall = [&] {
            const float ratio = image.GetYRatio();
            sameSize ? image.Update(800, 400, other.data(), 14, 13, 5, 5)
                     : image.Update(2, 2, small.data(), 14, 13, 5, 5);
            image.SetYRatio(ratio);
        };
        EXPECT_EQ(image.WriteMark(800, 400, image.GetPixelData(), 14, &surface), sameSize);
        const std::uint16_t* const left = image.GetPixelData();
        EXPECT_EQ(std::count(left, left + image.GetWidth() * image.GetHeight(), 16383) > 100, sameSize);
    }
}

// Exits with 0 when no text is measured or drawn, no mark is added or burned, and nothing is changed.
[[noreturn]] void burnWithFontsOf(const std::string& configuration) {
    setenv("FONTCONFIG_FILE", configuration.c_str(), 1);
    constexpr RECT rect{0, 0, 400, 200};
    MarkedImage image;
    image.show(800, 400, rect);
    CRasterDC surface(400, 200);
    const CMark mark = markAt("L", {0, 0});
    Pixels pixels(800 * 400, 7);
    const bool drawn = surface.GetTextExtent("L", -1) != CSize{} || surface.GetTextExtent("", 0) != CSize{} ||
                       surface.DrawText("L", -1, &rect, 0) != 0;
    const bool done = drawn || image.AddMark("L", &rect, &surface) != 0 ||
                      image.AddMark("", &rect, &surface) != 0 || image.GetMarkCount() != 0 ||
                      qvr::BurnInMark(800, 400, pixels.data(), 14, &mark, 0.5f, &surface) != 0;
    std::exit(done || pixels != Pixels(800 * 400, 7) ? 1 : 0);
}

TEST(BurnInDeathTest, WithoutFontsAddingAndBurningFail) {
    GTEST_FLAG_SET(death_test_style,
                   "threadsafe");         // a new process: the list of fonts is read once per process
    static const TemporaryFolder folder;  // the child only exits: static, so that its own is removed, too
    const std::string configuration =
        folder.file("fonts.conf", "<?xml version=\"1.0\"?><fontconfig></fontconfig>");
    EXPECT_EXIT(burnWithFontsOf(configuration), testing::ExitedWithCode(0), "");
}

// --- seen is burned -----------------------------------------------------------------------------------------------

struct View {
    const char* name;
    int width, height;  // of the image
    RECT rectangle;
    float ratio;    // 0: the fitted view
    CPoint offset;  // columns from the left, rows from the bottom
    bool moved;     // by the user, into the middle; otherwise as added at the top edge
};

constexpr View kViews[] = {
    {"fitted", 1200, 900, {20, 30, 620, 480}, 0, {0, 0}, true},
    {"fittedAsAdded", 1200, 900, {20, 30, 620, 480}, 0, {0, 0}, false},
    {"letterboxed", 1021, 1313, {0, 0, 700, 500}, 0, {0, 0}, true},
    {"zoomedToTheMiddle", 1200, 900, {20, 30, 620, 480}, 0.75f, {200, 150}, true},
    {"zoomedToOne", 1200, 900, {20, 30, 620, 480}, 1, {300, 225}, true},
    {"zoomedIn", 400, 300, {0, 0, 600, 450}, 3, {100, 75}, true},
};
struct Label {
    const char* name;
    const char* text;
};

constexpr Label kLabels[] = {{"Latin", "R"},        {"Word", "Links 2"}, {"Greek", "Δεξιά"},
                             {"Cyrillic", "Право"}, {"Hebrew", "ימין"},  {"Chinese", "右手"}};
class SeenIsBurned : public testing::TestWithParam<std::tuple<View, Label>> {};

// Centre of gravity and extent of ink; weights 0 ... 1.
struct Ink {
    double x = 0, y = 0, sum = 0, left = 1e9, right = -1e9, top = 1e9, bottom = -1e9;
    void add(double weight, int column, int row) {
        x += weight * (column + 0.5), y += weight * (row + 0.5), sum += weight;
        if (weight < 0.5) return;
        left = std::min<double>(left, column), right = std::max(right, column + 1.0);
        top = std::min<double>(top, row), bottom = std::max(bottom, row + 1.0);
    }
    std::pair<double, double> centroid() const { return {x / sum, y / sum}; }
    std::pair<double, double> middle() const { return {(left + right) / 2, (top + bottom) / 2}; }
};

// The white on a surface; y downward. The frame of a mark has no blue.
Ink whiteOn(const CRasterDC& dc) {
    Ink ink;
    for (int y = 0; y < dc.GetHeight(); ++y)
        for (int x = 0; x < dc.GetWidth(); ++x) ink.add((dc.GetPixel(x, y) >> 16) / 255.0, x, y);
    return ink;
}

TEST_P(SeenIsBurned, WithinOnePixel) {
    const auto& [view, label] = GetParam();
    const auto search = qvr::facesFor("Arial", 400);
    if (!search || !search->covering(qvr::decodedLine(label.text)))
        GTEST_SKIP() << "no installed face has " << label.text;
    const RECT& r = view.rectangle;
    const auto build = [&v = view](rawImage& image) {
        if (v.ratio > 0) image.SetXRatio(v.ratio), image.SetYRatio(v.ratio);
        image.SetXOffset(v.offset.x), image.SetYOffset(v.offset.y);
        return image.BuildDisplayImage(&v.rectangle, nullptr, v.ratio > 0 ? 0 : 1);
    };
    MarkedImage image;
    image.show(view.width, view.height, r);
    ASSERT_EQ(build(image), 1);
    CRasterDC measure(1, 1);
    ASSERT_EQ(image.AddMark(label.text, &r, &measure), 1);
    if (view.moved) image.SetMarkDISPLeftTop(0, {r.left + 270, r.top + 210}, &r, &measure);

    for (const int step : {30, 40, 50}) {
        step == 30 ? image.DeflateMark(0) : image.InflateMark(0, &r, &measure);
        CRasterDC seen(r.right + 10, r.bottom + 10), rendered(r.right + 10, r.bottom + 10);
        image.Draw(&r, &seen);
        const Ink shown = whiteOn(seen);
        ASSERT_GT(shown.sum, 30) << "nothing seen";

        Pixels pixels(static_cast<std::size_t>(view.width * view.height), 0);
        ASSERT_EQ(image.WriteMark(view.width, view.height, pixels.data(), 14, &measure), 1);
        Ink inImage;
        for (int y = 0; y < view.height; ++y)
            for (int x = 0; x < view.width; ++x)
                inImage.add(
                    pixels[static_cast<std::size_t>((view.height - 1 - y) * view.width + x)] / 16383.0, x, y);
        ASSERT_GT(inImage.sum, 0) << "nothing burned";

        // The bitmap lies in the middle of the rectangle; its bottom row shows the row at the offset.
        const qvr::BitmapRows bitmap = qvr::rowsOf(image.GetDIB());
        const double xRatio = image.GetXRatio(), yRatio = image.GetYRatio();
        const double left = r.left + (r.right - r.left - bitmap.width) / 2;
        const double top = r.top + (r.bottom - r.top - bitmap.height) / 2;
        // Zoomed, burned letters are hardly larger than seen ones, and their one-bit strokes may weigh some percent more
        // or less. That moves a word's centroid, not the word: there the middle of its extent is compared.
        const bool word = view.ratio > 0 && std::strlen(label.text) > 1;
        const auto where = [word](const Ink& ink) { return word ? ink.middle() : ink.centroid(); };
        const auto [seenX, seenY] = where(shown);
        const auto [burnedX, burnedY] = where(inImage);
        const double x = (seenX - left) / xRatio + view.offset.x;
        const double y = view.height - view.offset.y - (bitmap.height - (seenY - top)) / yRatio;
        EXPECT_NEAR(x, burnedX, std::max(1.0, 1 / xRatio)) << step;
        EXPECT_NEAR(y, burnedY, std::max(1.0, 1 / yRatio)) << step;

        rawImage second;
        const auto record = newRecord(view.width, view.height, pixels, 16384, 8192);
        ASSERT_EQ(second.Create(&record) + second.BuildDisplayImage(&r, nullptr, 1), 2);
        ASSERT_EQ(build(second), 1);
        second.Draw(&r, &rendered);
        // Sampling the burned pixels for the bitmap costs up to half a pixel more.
        const auto [againX, againY] = where(whiteOn(rendered));
        EXPECT_NEAR(againX, seenX, std::max(1.0, xRatio) + 0.5) << step;
        EXPECT_NEAR(againY, seenY, std::max(1.0, yRatio) + 0.5) << step;
    }
}
INSTANTIATE_TEST_SUITE_P(Marks, SeenIsBurned,
                         testing::Combine(testing::ValuesIn(kViews), testing::ValuesIn(kLabels)),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param).name) + std::get<1>(test.param).name;
                         });

}  // namespace
