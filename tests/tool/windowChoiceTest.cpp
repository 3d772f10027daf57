// Which window is chosen, where regions lie, what counts as a dark border.
#include "windowChoice.h"

#include <gtest/gtest.h>

#include <random>

#include "collimation.h"
#include "histogramSteps.h"
#include "qvr/toolkit/QVR_DISP.h"

namespace qvr::tool {
namespace {

// An adopted picture of `width` x `height` made from a function of column and y (downward).
template <class ValueAt>
AdoptedImage picture(int width, int height, ValueAt valueAt) {
    SourceImage source;
    source.columns = width;
    source.rows = height;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) source.words.push_back(static_cast<std::uint16_t>(valueAt(x, y)));
    return adopt(source, Adoption(source.format));
}

TEST(WindowRequest, KnowsItsForms) {
    EXPECT_EQ(parseWindow("auto:roi=0,0,60,60")->kind, WindowRequest::Kind::roi);
    EXPECT_EQ(parseWindow("preset:bone")->kind, WindowRequest::Kind::preset);
    EXPECT_EQ(parseWindow("300,-20")->width, -20);
    EXPECT_EQ(parseWindow("file:2")->number, 2);
    for (const char* text : {"", "300", "1,2,3", "1.5,2", "Auto", "auto:", "file:0", "file:x",
                             "preset:", "preset:foot", "auto:roi=1,2"})
        EXPECT_FALSE(parseWindow(text)) << text;
}

Console quiet() {
    static const Common common{.quiet = true};  // a console only refers to it
    return Console(common);
}

// That the window is the library's own for the whole picture.
void expectAutomatic(const Window& window, const AdoptedImage& image) {
    int low = 0, high = 0;
    ASSERT_TRUE(QVR_DISP_AutoWL(low, high, image.width, image.height, image.pixels.data(), 14, 0.05f, 0.95f));
    ASSERT_GT(high - low, 50);
    EXPECT_EQ(window.source, "auto");
    EXPECT_EQ(window.low, low);
    EXPECT_EQ(window.high, high);
    EXPECT_EQ(window.center, (low + high) / 2);
    EXPECT_EQ(window.width, high - low + 1);
}

struct Chosen {
    const char* name;
    const char* request;
    std::vector<StoredWindow> stored;
    std::vector<const char*> views;
    const char* source;
    int center, width;
};

// A picture with values 1000..2999, so that the automatic window is known to the library alone.
TEST(ChoiceTest, TakesTheFirstThatHolds) {
    const Chosen rows[] = {
        {"nothingGivesAuto", "", {}, {}, "auto", 0, 0},
        {"theFilesOwn", "", {{1500, 600}}, {}, "file", 1500, 600},
        {"theFilesOwnTouchesTheValues", "", {{500, 1001}}, {}, "file", 500, 1001},
        {"theFilesOwnOutside", "", {{500, 900}}, {}, "auto", 0, 0},
        {"theFilesOwnIsNone", "", {{300, 0}}, {}, "auto", 0, 0},
        {"viewBeforeFile", "", {{1500, 600}}, {"CHEST/PA=full"}, "preset:full", 8192, 16384},
        {"anotherView", "", {{1500, 600}}, {"CHEST/LL=full", "HAND=bone"}, "file", 1500, 600},
        {"givenBeforeAll", "700,80", {{1500, 600}}, {"CHEST=full"}, "given", 700, 80},
        {"autoBeforeFile", "auto", {{1500, 600}}, {}, "auto", 0, 0},
        {"secondOfTheFile", "file:2", {{1500, 600}, {2000, 50}}, {}, "file:2", 2000, 50},
        {"noBorderIsTheWhole", "auto:collimation", {}, {}, "auto", 0, 0}};
    for (const Chosen& test : rows) {
        SCOPED_TRACE(test.name);
        SourceImage source;
        source.file = "x";
        source.columns = 200;
        source.rows = 100;
        source.bodyPart = "CHEST";
        source.view = "PA";
        source.windows = test.stored;
        for (int i = 0; i < 20000; ++i) source.words.push_back(static_cast<std::uint16_t>(1000 + i % 2000));
        const Adoption adoption(source.format);
        const AdoptedImage image = adopt(source, adoption);
        std::vector<ViewPreset> views;
        for (const char* text : test.views) views.push_back(*parseViewPreset(text));
        Console console = quiet();
        const auto request = *test.request ? *parseWindow(test.request) : WindowRequest{};

        const Window window = chooseWindow({source, adoption, image}, request, views, console);

        if (std::string_view(test.source) == "auto") {
            expectAutomatic(window, image);
            continue;
        }
        EXPECT_EQ(window.source, test.source);
        EXPECT_EQ(window.center, test.center);
        EXPECT_EQ(window.width, test.width);
    }
}

// Values that were stretched before they were stored: beside a dark part many values between two that occur do not.
// The automatic window ends at the first value that few pixels have, 1300, and seven pixels of ten would be white.
AdoptedImage withGaps() {
    return picture(200, 200, [](int x, int y) {
        const int i = (200 * y + x) * 7919 % 40000;  // strewn, so that no edge is dark
        if (i < 12000) return 1000 + i % 200;
        if (i < 12055) return i < 12045 ? 1250 : 1300;
        return 2000 + 10 * (i % 800);
    });
}

TEST(UnaskedWindowTest, ShowsMostOfThePicture) {
    const AdoptedImage image = withGaps();
    SourceImage source;
    source.file = "x";
    const Adoption adoption(source.format);
    Console console = quiet();
    const Window asked = chooseWindow({source, adoption, image}, *parseWindow("auto"), {}, console);
    expectAutomatic(asked, image);

    const Window unasked = chooseWindow({source, adoption, image}, {}, {}, console);
    EXPECT_EQ(unasked.source, "auto:percentile");
    auto sorted = image.pixels;
    std::sort(sorted.begin(), sorted.end());
    EXPECT_EQ(unasked.low, sorted[399]);  // one pixel in a hundred below, one above
    EXPECT_EQ(unasked.high, sorted[39599]);
}

// The steps are a second walk over the histogram: pictures of all kinds, each with its own holes and peaks.
TEST(HistogramSteps, LeadToTheLibrarysBounds) {
    std::mt19937 random(7);
    int lower = 0, upper = 0, apart = 0, stopped = 0;
    for (int round = 0; round < 300; ++round) {
        const int peaks = 1 + static_cast<int>(random() % 4);
        std::vector<std::pair<int, int>> centers;
        for (int i = 0; i < peaks; ++i) centers.emplace_back(random() % 16384, 1 + random() % 1500);
        const int step = round % 3 == 0 ? 4 : 1;
        const auto image = picture(150, 120, [&](int, int) {
            const auto& [center, spread] = centers[random() % centers.size()];
            const int value =
                center + static_cast<int>(random() % static_cast<unsigned>(spread)) - spread / 2;
            return std::clamp(value / step * step, 0, 20000);
        });
        const auto steps = histogramSteps(countValues(image, {0, 0, 150, 120}), 150 * 120);
        int low = 0, high = 0;
        ASSERT_TRUE(QVR_DISP_AutoWL(low, high, 150, 120, image.pixels.data(), 14, 0.05f, 0.95f));
        ASSERT_EQ(steps.low, low) << "round " << round;
        ASSERT_EQ(steps.high, high) << "round " << round;
        (steps.lowerHalf ? lower : upper) += 1;
        apart += steps.farApart;
        stopped += steps.stopped;
    }
    // Every branch was met.
    EXPECT_GT(std::min({lower, upper, apart, stopped}), 10);
}

struct BorderCase {
    const char* name;
    Region inside;
    int marker;  // side of a bright square in the border, at (2, 2)
    int noise;   // of the border's values
    std::optional<Region> found;
};

TEST(CollimationTest, FindsTheAreaInsideTheDarkBorder) {
    const BorderCase rows[] = {{"none", {0, 0, 300, 200}, 0, 0, Region{0, 0, 300, 200}},
                               {"allSides", {40, 20, 200, 150}, 0, 0, Region{40, 20, 200, 150}},
                               {"withMarker", {40, 20, 200, 150}, 10, 50, Region{40, 20, 200, 150}},
                               {"smallest", {100, 50, 51, 51}, 0, 0, Region{100, 50, 51, 51}},
                               {"tooSmall", {100, 50, 50, 60}, 0, 0, std::nullopt}};
    for (const BorderCase& test : rows) {
        SCOPED_TRACE(test.name);
        const auto image = picture(300, 200, [&](int x, int y) {
            const auto& in = test.inside;
            if (x >= in.left && x < in.left + in.width && y >= in.top && y < in.top + in.height)
                return 3000 + 13 * x + 7 * y;
            if (x >= 2 && x < 2 + test.marker && y >= 2 && y < 2 + test.marker) return 9000;
            return 20 + (test.noise ? (x * 7919 + y * 104729) % test.noise : 0);
        });
        EXPECT_EQ(findCollimation(image), test.found);
    }
}

}  // namespace
}  // namespace qvr::tool
