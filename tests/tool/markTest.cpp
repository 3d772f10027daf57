// Marks of the tool: read from the command line, burned where they were seen, printed, and kept beside the image.
#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcdeftag.h>
#include <dcmtk/dcmdata/dcfilefo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "dicomMaker.h"
#include "markRequest.h"
#include "toolRun.h"

namespace {

using qvr::tool::MarkRequest;

constexpr int kWidth = 501;
constexpr int kHeight = 403;
constexpr std::uint16_t kGround = 1000;
constexpr std::uint16_t kBurned = 16383;

TEST(MarkText, IsTextThenPlace) {
    const auto read = qvr::tool::parseMark("a@b@right,top");
    ASSERT_TRUE(read);
    EXPECT_EQ(read->text, "a@b");
    EXPECT_EQ(read->column, MarkRequest::Column::right);
    EXPECT_EQ(read->row, MarkRequest::Row::top);
    for (const char* text : {"L@top,left", "L@left", "L", "L@1.5,2"})
        EXPECT_FALSE(qvr::tool::parseMark(text)) << text;
}

// The part of a picture, top row first, that is bright.
struct Trace {
    int left = 1 << 30, top = 1 << 30, right = -1, bottom = -1;
    double x = 0, y = 0;  // centre of gravity
    int count = 0;
};
Trace traceOf(int width, int height, std::uint16_t bright, const std::vector<std::uint16_t>& bottomUp) {
    Trace trace;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            if (bottomUp.at(static_cast<std::size_t>((height - 1 - y) * width + x)) != bright) continue;
            trace.left = std::min(trace.left, x);
            trace.top = std::min(trace.top, y);
            trace.right = std::max(trace.right, x);
            trace.bottom = std::max(trace.bottom, y);
            trace.x += x;
            trace.y += y;
            ++trace.count;
        }
    trace.x /= std::max(1, trace.count);
    trace.y /= std::max(1, trace.count);
    return trace;
}

class BurnTest : public testing::Test {
protected:
    BurnTest() {
        DicomSpec spec;
        spec.columns = kWidth;
        spec.rows = kHeight;
        spec.words.assign(static_cast<std::size_t>(kWidth) * kHeight, kGround);
        spec.more = [](DcmDataset& set) {
            set.putAndInsertString(DCM_ImagerPixelSpacing, "0.2\\0.2");
            set.putAndInsertString(DCM_PatientName, "Nobody");
            set.putAndInsertString(DCM_StudyInstanceUID, "1.2.3");
            set.putAndInsertString(DCM_SeriesInstanceUID, "1.2.3.1");
        };
        m_source = writeDicom(m_folder / "source.dcm", spec);
    }

    ToolResult run(const Arguments& arguments) {
        const auto result = runTool(joined(arguments, {"--window", "2000,4000", "--force"}));
        EXPECT_EQ(result.code, 0) << result.err;
        return result;
    }
    Trace burned(const Arguments& more) {
        const auto out = m_folder / "out.raw";
        run(joined({"burn", m_source, "-o", out}, more));
        const auto pixels = pixelsOf(out);
        EXPECT_EQ(pixels.size(), std::size_t{kWidth} * kHeight);
        EXPECT_EQ(std::count(pixels.begin(), pixels.end(), kGround) +
                      std::count(pixels.begin(), pixels.end(), kBurned),
                  kWidth * kHeight);
        return traceOf(kWidth, kHeight, kBurned, pixels);
    }

    TemporaryFolder m_folder;
    std::string m_source;
};

struct PlaceCase {
    std::string place;
    double x, y;  // share of the picture in which the centre of the letter lies
};

// The line is 60 high and lies 15 (ten of forty display pixels) from the edges.
// "L" has its stem on the left and its bar at the bottom: a mirrored or turned letter has its centre elsewhere.
TEST_F(BurnTest, HoldsAnUprightLetter) {
    const PlaceCase rows[] = {{"left,top", 45.0 / kWidth, 45.0 / kHeight},
                              {"center,bottom", 0.5, 1 - 45.0 / kHeight},
                              {"300,100", 330.0 / kWidth, 130.0 / kHeight}};
    for (const PlaceCase& place : rows) {
        SCOPED_TRACE(place.place);
        const auto trace = burned({"--mark", "L@" + place.place, "--mark-height", "60px"});
        EXPECT_NEAR((trace.left + trace.right) / 2.0 / kWidth, place.x, 0.03);
        EXPECT_NEAR((trace.top + trace.bottom) / 2.0 / kHeight, place.y, 0.03);
        EXPECT_LT(trace.x, (trace.left + trace.right) / 2.0 - 2);
        EXPECT_GT(trace.y, (trace.top + trace.bottom) / 2.0 + 2);
    }
}

TEST_F(BurnTest, HeightIsThatInTheImage) {
    // Capital letters of the stand-in for Arial are about 0.64 of the line; the exact share does not matter here.
    const auto small = burned({"--mark", "L@left,top", "--mark-height", "50px"});
    const auto large = burned({"--mark", "L@left,top", "--mark-height", "150px"});
    const auto metric = burned({"--mark", "L@left,top", "--mark-height", "10mm"});  // at 0.2 mm: 50 pixels
    EXPECT_NEAR(large.bottom - large.top, 3 * (small.bottom - small.top), 4);
    EXPECT_NEAR(small.bottom - small.top, 0.64 * 50, 4);
    EXPECT_EQ(metric.count, small.count);
}

TEST_F(BurnTest, PrintCarriesItsMarksAndTheSourceDoesNot) {
    const auto before = contentOf(m_source);
    const auto out = m_folder / "print.raw";
    for (const std::string bits : {"12", "14"}) {
        run({"print", m_source, "-o", out, "--bits", bits, "--region", "100,50,300,200", "--mark",
             "L@left,top", "--mark-height", "60px"});
        const auto printed = pixelsOf(out);
        ASSERT_EQ(printed.size(), 300u * 200u);
        const auto trace = traceOf(300, 200, 255, printed);
        EXPECT_NEAR((trace.left + trace.right) / 2.0, 45, 4) << bits;
        EXPECT_NEAR((trace.top + trace.bottom) / 2.0, 45, 4) << bits;
    }
    EXPECT_EQ(contentOf(m_source), before);
}

TEST_F(BurnTest, BothWritesTwoFilesThatReferToTheSource) {
    const auto out = m_folder / "both.dcm";
    const auto result = run({"burn", m_source, "-o", out, "--marks", "both", "--mark", "\u03a9 L@100,60",
                             "--json", "--mark-height", "40px"});
    const auto json = nlohmann::json::parse(result.out);
    EXPECT_EQ(json["marks"], 1);
    EXPECT_EQ(json["mark_height"], 40);
    DcmFileFormat image, state;
    ASSERT_TRUE(image.loadFile(out.c_str()).good());
    ASSERT_TRUE(state.loadFile((m_folder / "both-gsps.dcm").c_str()).good());
    EXPECT_EQ(attributeText(*image.getDataset(), DCM_BurnedInAnnotation), "YES");
    EXPECT_EQ(attributeText(*image.getDataset(), DCM_SOPInstanceUID), json["new_uid"]);
    EXPECT_EQ(attributeText(*state.getDataset(), DCM_StudyInstanceUID), "1.2.3");
    EXPECT_EQ(attributeText(*state.getDataset(), DCM_Modality), "PR");

    DcmItem* item = nullptr;
    ASSERT_TRUE(state.getDataset()->findAndGetSequenceItem(DCM_ReferencedSeriesSequence, item).good());
    EXPECT_EQ(attributeText(*item, DCM_SeriesInstanceUID), "1.2.3.1");
    ASSERT_TRUE(item->findAndGetSequenceItem(DCM_ReferencedImageSequence, item).good());
    EXPECT_EQ(attributeText(*item, DCM_ReferencedSOPInstanceUID), "1.2.3.4");
    ASSERT_TRUE(state.getDataset()->findAndGetSequenceItem(DCM_GraphicAnnotationSequence, item).good());
    ASSERT_TRUE(item->findAndGetSequenceItem(DCM_TextObjectSequence, item).good());
    EXPECT_EQ(attributeText(*item, DCM_UnformattedTextValue), "\u03a9 L");
    const auto box = json["mark_boxes"][0]["box"];
    EXPECT_EQ(attributeText(*item, DCM_BoundingBoxTopLeftHandCorner), "101\\61");
    EXPECT_EQ(attributeText(*item, DCM_BoundingBoxBottomRightHandCorner),
              std::to_string(100 + box[2].get<int>()) + "\\" + std::to_string(60 + box[3].get<int>()));

    // A name that another file takes in the meantime, here a link to a file that is not there: neither file is written.
    const auto taken = m_folder / "taken-gsps.dcm";
    std::filesystem::create_symlink("nothing", taken);
    const auto refused = runTool({"burn", m_source, "-o", m_folder / "taken.dcm", "--marks", "both", "--mark",
                                  "L@100,60", "--window", "2000,4000"});
    EXPECT_EQ(refused.code, 6) << refused.err;
    EXPECT_FALSE(std::filesystem::exists(m_folder / "taken.dcm"));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(m_folder.path()), {}), 4);

    if (std::system("command -v dcmpschk >/dev/null") != 0) GTEST_SKIP() << "dcmpschk is not installed";
    const auto log = m_folder / "check.txt";
    EXPECT_EQ(std::system(("dcmpschk " + (m_folder / "both-gsps.dcm") + " >" + log + " 2>&1").c_str()), 0);
    EXPECT_NE(contentOf(log).find("Test passed"), std::string::npos) << contentOf(log);
}

}  // namespace
