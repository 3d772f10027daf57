// What the verbs write: edited pixels against plain references, DICOM attributes, and pictures against DCMTK's own.
#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcdeftag.h>
#include <dcmtk/dcmdata/dcfilefo.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <numeric>

#include "dicomAttributes.h"
#include "dicomMaker.h"
#include "dicomWriter.h"
#include "editing.h"
#include "printing.h"
#include "support/pictures.h"
#include "toolRun.h"

namespace {

using namespace qvr::tool;

constexpr int kColumns = 97, kRows = 61;
const std::vector<std::uint16_t> kSource = ramp(kColumns, kRows);  // top row first
int at(int x, int y) {
    return kSource.at(static_cast<std::size_t>(y * kColumns + x));
}

struct EditCase {
    Arguments options;
    int width, height;
    int (*wanted)(int x, int y);
};

TEST(EditTest, EqualsThePlainWay) {
    const EditCase rows[] = {
        {{"--rotate", "cw"}, 61, 97, [](int x, int y) { return at(y, 60 - x); }},
        {{"--rotate", "ccw"}, 61, 97, [](int x, int y) { return at(96 - y, x); }},
        {{"--mirror"}, 97, 61, [](int x, int y) { return at(96 - x, y); }},
        {{"--flip"}, 97, 61, [](int x, int y) { return at(x, 60 - y); }},
        {{"--crop", "3,5,40,20"}, 40, 20, [](int x, int y) { return at(3 + x, 5 + y); }},
        {{"--mask", "3,5,40,20"},
         97,
         61,
         [](int x, int y) { return x >= 3 && x < 43 && y >= 5 && y < 25 ? at(x, y) : 0; }},
        {{"--invert"}, 97, 61, [](int x, int y) { return 16383 - at(x, y); }},
        {{"--rotate", "cw", "--crop", "3,5,40,80"}, 40, 80, [](int x, int y) { return at(5 + y, 57 - x); }},
        {{"--crop", "3,5,40,20", "--rotate", "cw"}, 20, 40, [](int x, int y) { return at(3 + y, 24 - x); }}};
    const TemporaryFolder folder;
    DicomSpec spec;
    spec.columns = kColumns;
    spec.rows = kRows;
    spec.bitsStored = 14;
    spec.highBit = 13;
    spec.words = kSource;
    const auto file = writeDicom(folder / "in.dcm", spec);
    for (const EditCase& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.options));
        const auto result = runTool(joined({"edit", file, "-o", folder / "out.raw", "--force"}, row.options));
        ASSERT_EQ(result.code, 0) << result.err;
        std::vector<std::uint16_t> wanted;
        for (int y = row.height - 1; y >= 0; --y)
            for (int x = 0; x < row.width; ++x)
                wanted.push_back(static_cast<std::uint16_t>(row.wanted(x, y)));
        const auto found = pixelsOf(folder / "out.raw");
        ASSERT_EQ(found.size(), wanted.size());
        EXPECT_TRUE(samePicture(wanted, found.data(), row.width, row.height));
    }
}

TEST(Orientation, FollowsTheTurns) {
    using Kind = EditStep::Kind;
    EXPECT_EQ(turnedOrientation("L\\F", Kind::clockwise), "H\\L");
    EXPECT_EQ(turnedOrientation("L\\F", Kind::counterClockwise), "F\\R");
    EXPECT_EQ(turnedOrientation("L\\F", Kind::halfTurn), "R\\H");
    EXPECT_EQ(turnedOrientation("A\\FR", Kind::mirror), "P\\FR");
    EXPECT_EQ(turnedOrientation("A\\FR", Kind::flip), "A\\HL");
    EXPECT_EQ(turnedOrientation("L\\F", Kind::crop), "L\\F");
    EXPECT_EQ(turnedOrientation("LE\\D", Kind::mirror), "");
    EXPECT_EQ(turnedOrientation("", Kind::mirror), "");
}

class DicomOutputTest : public testing::Test {
protected:
    // A 12-bit picture of a patient with an umlaut, in Latin-1.
    std::string source(const std::string& name = "in.dcm", std::function<void(DcmDataset&)> more = {}) {
        DicomSpec spec;
        spec.columns = 300;
        spec.rows = 200;
        spec.words = ramp(300, 200);
        for (auto& word : spec.words) word &= 4095;
        spec.more = [more](DcmDataset& set) {
            set.putAndInsertString(DCM_SpecificCharacterSet, "ISO_IR 100");
            set.putAndInsertString(DCM_PatientName, "M\xfcller^Eva");
            set.putAndInsertString(DCM_PatientID, "4711");
            set.putAndInsertString(DCM_StudyInstanceUID, "1.2.3.9");
            set.putAndInsertString(DCM_SeriesInstanceUID, "1.2.3.9.1");
            set.putAndInsertString(DCM_SeriesDescription, "hand");
            set.putAndInsertString(DCM_ImagerPixelSpacing, "0.15\\0.1");
            set.putAndInsertString(DCM_PatientOrientation, "L\\F");
            set.putAndInsertString(DCM_ImageType, "ORIGINAL\\PRIMARY\\RIGHT");
            set.putAndInsertString(DCM_KVP, "60");
            set.putAndInsertString(DCM_ShutterShape, "RECTANGULAR");
            if (more) more(set);
        };
        return ::writeDicom(m_folder / name, spec);
    }
    DcmDataset& edited(const std::string& file, const Arguments& options) {
        const auto out = m_folder / "out.dcm";
        const auto result = runTool(joined({"edit", file, "-o", out, "--force"}, options));
        EXPECT_EQ(result.code, 0) << result.err;
        EXPECT_TRUE(m_out.loadFile(out.c_str()).good());
        return *m_out.getDataset();
    }

    TemporaryFolder m_folder;
    DcmFileFormat m_out;
};

TEST_F(DicomOutputTest, DescribesTheNewPicture) {
    auto& set = edited(source(), {"--rotate", "cw", "--window", "2000,3000"});
    const std::pair<DcmTagKey, std::string> wanted[] = {
        {DCM_PhotometricInterpretation, "MONOCHROME2"},
        {DCM_Rows, "300"},
        {DCM_Columns, "200"},
        {DCM_BitsAllocated, "16"},
        {DCM_BitsStored, "14"},
        {DCM_HighBit, "13"},
        {DCM_SpecificCharacterSet, "ISO_IR 192"},
        {DCM_PatientName, "M\xc3\xbcller^Eva"},
        {DCM_PatientID, "4711"},
        {DCM_PatientBirthDate, ""},
        {DCM_StudyInstanceUID, "1.2.3.9"},
        {DCM_SeriesInstanceUID, "1.2.3.9.1"},
        {DCM_SeriesDescription, "hand"},
        {DCM_KVP, "60"},
        {DCM_ImagerPixelSpacing, "0.1\\0.15"},
        {DCM_PatientOrientation, "H\\L"},
        {DCM_ImageType, "DERIVED\\PRIMARY\\RIGHT"},
        {DCM_DerivationDescription, "rotated clockwise"},
        {DCM_BurnedInAnnotation, "NO"},
        {DCM_WindowCenter, "2000"},
        {DCM_WindowWidth, "3000"},
        {DCM_PresentationLUTShape, "IDENTITY"},
        {DCM_PixelIntensityRelationshipSign, "-1"},
        {DCM_SOPClassUID, "1.2.840.10008.5.1.4.1.1.1.1"},
        {DCM_ShutterShape, "(missing)"},  // of pixels that are elsewhere now
        {DCM_VOILUTSequence, "(missing)"}};
    for (const auto& [tag, text] : wanted)
        EXPECT_EQ(attributeText(set, tag), text) << DcmTag(tag).getTagName();
    EXPECT_NE(attributeText(set, DCM_SOPInstanceUID), "1.2.3.4");
    DcmItem* item = nullptr;
    ASSERT_TRUE(set.findAndGetSequenceItem(DCM_SourceImageSequence, item).good());
    EXPECT_EQ(attributeText(*item, DCM_ReferencedSOPInstanceUID), "1.2.3.4");
}

TEST_F(DicomOutputTest, KeepsWhatTheSourceSaysAboutItself) {
    const auto file = source("old.dcm", [](DcmDataset& set) {
        set.putAndInsertString(DCM_BurnedInAnnotation, "YES");
        set.putAndInsertString(DCM_SOPInstanceUID, "1.2/../x");
        set.putAndInsertString(DCM_SpecificCharacterSet, "");
    });
    auto& set = edited(file, {"--invert", "--window", "2000,3000"});
    EXPECT_EQ(attributeText(set, DCM_BurnedInAnnotation), "YES");
    EXPECT_EQ(attributeText(set, DCM_PixelIntensityRelationshipSign), "1");
    EXPECT_EQ(attributeText(set, DCM_WindowCenter), "14383");
    EXPECT_EQ(attributeText(set, DCM_PatientName), "M\xc3\xbcller^Eva");
    EXPECT_FALSE(set.tagExists(DCM_SourceImageSequence));  // nothing valid to refer to
}

struct HistoryCase {
    const char* name;
    std::vector<std::pair<DcmTagKey, std::string>> source, exported;
    bool lossyFile = false;  // compressed so, with attributes that deny it
    bool marked = false;     // in the exam
};

// What no pixel shows survives the way through an exam.
TEST_F(DicomOutputTest, AnExamKeepsWhatItsSourcesSayAboutThemselves) {
    const auto cr = "1.2.840.10008.5.1.4.1.1.1";
    const auto burned = DCM_BurnedInAnnotation, lossy = DCM_LossyImageCompression;
    const auto ratio = DCM_LossyImageCompressionRatio, method = DCM_LossyImageCompressionMethod;
    const HistoryCase rows[] = {
        {"silent", {}, {{burned, "NO"}, {lossy, "00"}, {ratio, "(missing)"}, {method, "(missing)"}}},
        {"burned", {{burned, "YES"}}, {{burned, "YES"}}},
        {"marked", {{burned, "NO"}}, {{burned, "YES"}}, false, true},
        {"lossy",
         {{lossy, "01"}, {ratio, "9.5\\3"}, {method, "ISO_10918_1\\ISO_14495_1"}},
         {{lossy, "01"}, {ratio, "9.5\\3"}, {method, "ISO_10918_1\\ISO_14495_1"}}},
        {"zeroInside", {{ratio, {"9.5\0\\3", 6}}}, {{ratio, "9.5\\3"}}},
        {"lossyFile", {}, {{lossy, "01"}}, true},
        {"silentCr", {{DCM_Modality, "CR"}, {DCM_SOPClassUID, cr}}, {{lossy, "(missing)"}}},
        {"losslessCr", {{DCM_Modality, "CR"}, {DCM_SOPClassUID, cr}, {lossy, "00"}}, {{lossy, "00"}}},
        {"unknownValues", {{burned, "maybe"}, {lossy, "2"}}, {{burned, "NO"}, {lossy, "00"}}},
        {"wholeName",
         {{DCM_PatientName, "M\xfcller^Eva^Maria^Dr= ^ "}},
         {{DCM_PatientName, "M\xc3\xbcller^Eva^Maria^Dr"}}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryFolder folder;
        DicomSpec spec;
        spec.transfer = row.lossyFile ? EXS_JPEGProcess2_4 : EXS_LittleEndianExplicit;
        spec.more = [&](DcmDataset& set) {
            set.putAndInsertString(DCM_SpecificCharacterSet, "ISO_IR 100");
            for (const auto& [tag, text] : row.source)
                set.putAndInsertOFStringArray(tag, OFString(text.c_str(), text.size()));
        };
        const auto file = ::writeDicom(folder / "in.dcm", spec);
        if (row.lossyFile) {
            DcmFileFormat format;
            ASSERT_TRUE(format.loadFile(file.c_str()).good());
            ASSERT_TRUE(format.getDataset()->putAndInsertString(lossy, "00").good());
            ASSERT_TRUE(format.getDataset()->putAndInsertString(DCM_SOPInstanceUID, "1.2.3.4").good());
            ASSERT_TRUE(format.saveFile(file.c_str()).good());
        }
        ASSERT_EQ(runTool({"exam", "build", folder.path(), "-o", folder / "exam"}).code, 0);
        if (row.marked) {
            auto exam = nlohmann::json::parse(contentOf(folder / "exam/exam.json"));
            exam["studies"][0]["series"][0]["image"]["marks"].push_back(
                {{"text", "L"}, {"font_height", 30}, {"left", 99}, {"top", 300}});
            folder.file("exam/exam.json", exam.dump());
        }

        const auto result =
            runTool({"exam", "export", folder / "exam", "-o", folder / "out", "--format", "dcm"});

        ASSERT_EQ(result.code, 0) << result.err;
        ASSERT_TRUE(m_out.loadFile((folder / "out/1.2.3.4.dcm").c_str()).good());
        for (const auto& [tag, text] : row.exported)
            EXPECT_EQ(attributeText(*m_out.getDataset(), tag), text) << DcmTag(tag).getTagName();
    }
}

struct ViewCase {
    std::string window;
    std::string curve;
    int most;  // greys
};

// All values of 14 bits, shown by dcm2pnm and by the tool.
TEST_F(DicomOutputTest, ShowsWhatIsRendered) {
    const ViewCase rows[] = {{"300,260", "linear", 2},        {"4825,8546", "linear", 2},
                             {"8192,30001", "linear", 2},     {"3000,2000", "power:2,5", 1},
                             {"8000,8000", "sigmoid:8,5", 1}, {"8000,8000", "exp:3,5", 1}};
    if (std::system("command -v dcm2pnm >/dev/null") != 0) GTEST_SKIP() << "dcm2pnm is not installed";
    DicomSpec spec;
    spec.columns = spec.rows = 128;
    spec.bitsStored = 14;
    spec.highBit = 13;
    spec.words.resize(16384);
    std::iota(spec.words.begin(), spec.words.end(), std::uint16_t{0});
    const auto file = ::writeDicom(m_folder / "all.dcm", spec);
    for (const ViewCase& view : rows) {
        SCOPED_TRACE(view.window + ' ' + view.curve);
        edited(file, {"--rotate", "180", "--window", view.window, "--curve", view.curve});
        const auto written = m_folder / "out.dcm";
        const std::string which = view.curve == "linear" ? " +Wi 1 " : " +Wl 1 ";
        ASSERT_EQ(std::system(("dcm2pnm +op" + which + written + " " + (m_folder / "theirs.pgm")).c_str()),
                  0);
        const auto result = runTool({"render", written, "-o", m_folder / "ours.pgm", "--force", "--window",
                                     "file", "--curve", view.curve});
        ASSERT_EQ(result.code, 0) << result.err;
        const auto theirs = contentOf(m_folder / "theirs.pgm");
        const auto ours = contentOf(m_folder / "ours.pgm");
        ASSERT_GE(std::min(theirs.size(), ours.size()), 16384u);
        int most = 0;
        for (std::size_t i = 1; i <= 16384; ++i)
            most = std::max(most, std::abs(static_cast<unsigned char>(theirs[theirs.size() - i]) -
                                           static_cast<unsigned char>(ours[ours.size() - i])));
        EXPECT_LE(most, view.most);
    }
}

TEST(Print, IsTheTableOfTheRegion) {
    AdoptedImage image{97, 61, ramp(97, 61), 0, 0};
    PrintJob job;
    job.region = {10, 20, 33, 17};
    job.window.center = 3000;
    job.window.width = 2000;
    const auto table = displayTable(3000, 2000, {});
    const auto picture = print(image, 0, job, nullptr, "");
    ASSERT_EQ(picture.width, 33);
    ASSERT_EQ(picture.height, 17);
    std::vector<std::uint8_t> wanted;
    for (int y = 20; y < 37; ++y)
        for (int x = 10; x < 43; ++x)
            wanted.push_back(table[image.pixels[static_cast<std::size_t>((60 - y) * 97 + x)]]);
    EXPECT_TRUE(samePicture(wanted, picture.pixels.data(), 33, 17));

    // On a film of 100 x 51: 99 x 51 in the middle, every pixel three times three.
    job.film = CSize{100, 51};
    const auto film = print(image, 0, job, nullptr, "");
    ASSERT_EQ(film.pixels.size(), 5100u);
    for (int y = 0; y < 51; ++y)
        for (int x = 0; x < 99; ++x)
            ASSERT_EQ(film.pixels[static_cast<std::size_t>(y * 100 + x)],
                      wanted[static_cast<std::size_t>(y / 3 * 33 + x / 3)])
                << x << ',' << y;
    EXPECT_EQ(film.pixels[99], 0);
}

TEST(Film, HasASizeAndADensity) {
    EXPECT_EQ(parseFilm("8x10in@300dpi"), (CSize{2400, 3000}));
    EXPECT_EQ(parseFilm("35x43cm@100dpi"), (CSize{1378, 1693}));
    EXPECT_EQ(parseFilm("254x127mm@10dpi"), (CSize{100, 50}));
    EXPECT_EQ(parseFilm("8.5x11in@2dpi"), (CSize{17, 22}));
    for (const char* text : {"", "8x10in", "8x10@300dpi", "8in@300dpi", "8x10in@300", "0x10in@300dpi",
                             "-8x10in@300dpi", "8x10in@0dpi", "999x10in@300dpi", "axbin@3dpi", "8x10in@dpi"})
        EXPECT_FALSE(parseFilm(text)) << text;
}

TEST_F(DicomOutputTest, ThumbnailAndPreviewHaveTheSizesOfASeries) {
    const auto file = source();
    const auto size = [&](const Arguments& more) {
        const auto result =
            runTool(joined({"thumb", file, "-o", m_folder / "out.png", "--force", "--json"}, more));
        EXPECT_EQ(result.code, 0) << result.err;
        return nlohmann::json::parse(result.out)["output_size"].get<std::vector<int>>();
    };
    // 300 x 200 in 1000 x 800 is 1000 x 666.
    EXPECT_EQ(size({}), (std::vector<int>{200, 133}));
    EXPECT_EQ(size({"--preview"}), (std::vector<int>{600, 399}));  // the scale is rounded down
}

TEST(Lut, StandsNextToDicomsFunction) {
    const auto result = runTool({"lut", "--window", "2000,1000", "-o", "-"});
    ASSERT_EQ(result.code, 0) << result.err;
    // Display and DICOM at the ends of the ramp and in its middle.
    for (const char* row : {"\n1499,0,0,0.00,0\n", "\n1500,0,0,0.00,0\n", "\n2000,127,127,127.63,-1\n",
                            "\n2500,254,254,255.00,-1\n", "\n2501,255,255,255.00,0\n", "\n16383,255,"})
        EXPECT_NE(result.out.find(row), std::string::npos) << row;
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 16385);
    const auto sigmoid = runTool({"lut", "--window", "2000,1000", "--curve", "sigmoid", "-o", "-"});
    EXPECT_NE(sigmoid.out.find("\n2000,127,127,127.50,-1\n"), std::string::npos);
}

}  // namespace
