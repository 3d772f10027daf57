// The built program with good files: pictures are upright and bright where they should be, and the results say so.
#include <dcmtk/dcmdata/dcdatset.h>
#include <dcmtk/dcmdata/dcdeftag.h>
#include <gtest/gtest.h>
#include <png.h>

#include <nlohmann/json.hpp>

#include "dicomMaker.h"
#include "toolRun.h"

namespace {

using Json = nlohmann::json;

struct Picture {
    int width = 0, height = 0;
    std::vector<int> greys;  // top row first
    int at(int x, int y) const { return greys.at(static_cast<std::size_t>(y * width + x)); }
};

Picture readPng(const std::string& path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_file(&image, path.c_str())) throw std::runtime_error(image.message);
    image.format = PNG_FORMAT_GRAY;
    std::vector<std::uint8_t> bytes(PNG_IMAGE_SIZE(image));
    if (!png_image_finish_read(&image, nullptr, bytes.data(), 0, nullptr))
        throw std::runtime_error(image.message);
    return {static_cast<int>(image.width), static_cast<int>(image.height), {bytes.begin(), bytes.end()}};
}

class CommandTest : public testing::Test {
protected:
    ToolResult run(const Arguments& arguments) {
        auto result = runTool(arguments);
        EXPECT_EQ(result.code, 0) << result.err;
        return result;
    }
    Json runJson(const Arguments& arguments) { return Json::parse(run(joined(arguments, {"--json"})).out); }
    std::string dicom(const std::string& name, const DicomSpec& spec = {}) {
        return writeDicom(m_folder / name, spec);
    }
    Picture rendered(const std::string& file, const Arguments& more = {}) {
        run(joined({"render", file, "-o", m_folder / "out.png", "--force"}, more));
        return readPng(m_folder / "out.png");
    }

    TemporaryFolder m_folder;
};

// The same picture stored in another way.
struct WayCase {
    const char* name;
    E_TransferSyntax transfer;
    const char* photometric;
    const char* slope;
    int bits;
    bool isSigned;
    int (*word)(int value);
    bool inverted;
};

// What a file must look like whatever way it stores its pixels: bright above, dark below, brighter to the right.
TEST_F(CommandTest, IsShownUprightWithBrightOnTop) {
    const auto same = [](int v) { return v; };
    const auto negative = [](int v) { return 4095 - v; };
    const auto explicitSyntax = EXS_LittleEndianExplicit;
    const WayCase rows[] = {
        {"plain", explicitSyntax, "MONOCHROME2", "1", 12, false, same, false},
        {"bigEndian", EXS_BigEndianExplicit, "MONOCHROME2", "1", 12, false, same, false},
        {"rle", EXS_RLELossless, "MONOCHROME2", "1", 12, false, same, false},
        {"jpegLossless", EXS_JPEGProcess14SV1, "MONOCHROME2", "1", 12, false, same, false},
        {"jpegLs", EXS_JPEGLSLossless, "MONOCHROME2", "1", 12, false, same, false},
        {"monochrome1", explicitSyntax, "MONOCHROME1", "1", 12, false, negative, true},
        {"fallingSlope", explicitSyntax, "MONOCHROME2", "-1", 12, false, negative, true},
        {"signed", explicitSyntax, "MONOCHROME2", "1", 12, true, [](int v) { return v - 2048; }, false},
        {"eightBits", explicitSyntax, "MONOCHROME2", "1", 8, false, [](int v) { return v >> 4; }, false}};
    for (const WayCase& test : rows) {
        SCOPED_TRACE(test.name);
        DicomSpec spec;
        spec.transfer = test.transfer;
        spec.photometric = test.photometric;
        spec.bitsAllocated = test.bits == 8 ? 8 : 16;
        spec.bitsStored = test.bits;
        spec.highBit = test.bits - 1;
        spec.isSigned = test.isSigned;
        for (const int value : topBright(spec.columns, spec.rows))
            spec.words.push_back(static_cast<std::uint16_t>(test.word(value)));
        spec.more = [&](DcmDataset& set) { set.putAndInsertString(DCM_RescaleSlope, test.slope); };
        const auto file = dicom("way.dcm", spec);
        const auto picture = rendered(file, {"--window", test.bits == 8 ? "128,256" : "2048,4096"});

        ASSERT_EQ(picture.width, 96);
        ASSERT_EQ(picture.height, 64);
        // The linear table of window 2048/4096 (low 0, step 4177920 / 4097 = 1019): 3000 -> 186, 3095 -> 192, 100 -> 6.
        if (test.bits != 8) {
            EXPECT_EQ(picture.at(0, 0), 186);
            EXPECT_EQ(picture.at(95, 0), 192);
            EXPECT_EQ(picture.at(0, 63), 6);
        }
        EXPECT_GT(picture.at(0, 31), picture.at(0, 32) + 100);

        const auto json = runJson({"info", file});
        EXPECT_EQ(json["inverted_on_import"], test.inverted);
        EXPECT_EQ(json["source_bits"], test.bits);
        EXPECT_EQ(json["adopted_bits"], 14);
        EXPECT_EQ(json["rows"], 64);
        EXPECT_EQ(json["columns"], 96);
    }
}

TEST_F(CommandTest, EveryFormatHoldsTheSamePicture) {
    const auto file = dicom("a.dcm");
    const auto render = [&](const std::string& name) {
        run({"render", file, "-o", m_folder / name, "--size", "101x70", "--window", "2048,4096"});
        return m_folder / name;
    };
    const Picture png = readPng(render("a.png"));
    EXPECT_EQ(png.width, 101);
    EXPECT_EQ(png.height, 70);
    const std::string greys(png.greys.begin(), png.greys.end());
    EXPECT_EQ(contentOf(render("a.PGM")), "P5\n101 70\n255\n" + greys);
    const std::string bmp = contentOf(render("a.bmp"));
    for (std::size_t y = 0; y < 70; ++y)  // 104 bytes a row, bottom row first
        EXPECT_EQ(bmp.substr(bmp.size() - 104 * (y + 1), 101), greys.substr(101 * y, 101)) << "row " << y;
    const auto piped = run({"render", file, "-o", "-", "--size", "101x70", "--window", "2048,4096"});
    EXPECT_EQ(piped.out, contentOf(m_folder / "a.png"));
}

TEST_F(CommandTest, LetterboxAddsOnlyBlack) {
    const auto file = dicom("a.dcm");
    const Picture with = rendered(file, {"--size", "192x200", "--window", "2048,4096"});
    const Picture without =
        rendered(file, {"--size", "192x200", "--window", "2048,4096", "--letterbox", "off"});
    EXPECT_EQ(with.height, 200);
    EXPECT_EQ(without.width, 192);
    ASSERT_EQ(without.height, 128);
    for (int y = 0; y < 200; ++y)
        ASSERT_EQ(with.at(7, y), y < 36 || y >= 164 ? 0 : without.at(7, y - 36)) << "row " << y;
}

TEST_F(CommandTest, ZoomShowsTheWantedPixelInTheMiddle) {
    const auto file = dicom("a.dcm");
    // 2:1 on a surface of 40 x 20: columns 39..58 and rows 26..35, each pixel twice.
    const Picture picture =
        rendered(file, {"--size", "40x20", "--zoom", "2:1", "--center", "49,30", "--window", "2048,4096"});
    const Picture whole = rendered(file, {"--window", "2048,4096"});
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 40; ++x)
            ASSERT_EQ(picture.at(x, y), whole.at(39 + x / 2, 26 + y / 2)) << x << ' ' << y;
    // Near a corner the view stays inside the picture.
    const Picture corner =
        rendered(file, {"--size", "40x20", "--zoom", "1:1", "--center", "95,0", "--window", "2048,4096"});
    EXPECT_EQ(corner.at(39, 0), whole.at(95, 0));
    EXPECT_EQ(corner.at(0, 19), whole.at(56, 19));
    EXPECT_EQ(rendered(file, {"--zoom", "0.5"}).width, 48);
}

TEST_F(CommandTest, StandardInputRawAndPgmShowTheSamePicture) {
    const auto words = topBright(96, 64);
    std::vector<std::uint16_t> bottomUp;
    std::string pgm = "P5\n# a comment\n96 64\n4095\n";
    for (int y = 63; y >= 0; --y)
        bottomUp.insert(bottomUp.end(), words.begin() + 96 * y, words.begin() + 96 * (y + 1));
    for (const auto word : words) pgm += {static_cast<char>(word >> 8), static_cast<char>(word & 0xff)};
    const auto raw = m_folder.file("a.raw", bottomUp);
    const auto expected = rendered(dicom("a.dcm"), {"--window", "auto"});
    EXPECT_EQ(rendered(m_folder.file("a.pgm", pgm), {"--window", "auto"}).greys, expected.greys);
    EXPECT_EQ(rendered(raw, {"--raw", "96x64:12", "--window", "auto"}).greys, expected.greys);
    const auto piped = runTool({"render", "-", "-o", "-", "--window", "auto"}, {{}, m_folder / "a.dcm"});
    EXPECT_EQ(piped.out, contentOf(m_folder / "out.png"));
}

TEST_F(CommandTest, WindowExplainsEveryAreaAndWritesTheHistogram) {
    DicomSpec spec;
    spec.columns = 200;
    spec.rows = 150;
    spec.words.assign(200 * 150, 10);  // dark, but for 120 x 100 pixels at (40, 20)
    for (int y = 20; y < 120; ++y)
        for (int x = 40; x < 160; ++x)
            spec.words[static_cast<std::size_t>(200 * y + x)] = static_cast<std::uint16_t>(1000 + 7 * x + y);
    const auto file = dicom("border.dcm", spec);
    const auto csv = m_folder / "h.csv";
    const auto json = runJson({"window", file, "--explain", "--roi", "60,40,80,60", "--histogram", csv});
    EXPECT_EQ(json["collimation"]["region"], (Json{40, 20, 120, 100}));
    EXPECT_EQ(json["region"]["steps"]["counted"], 4800);
    EXPECT_EQ(json["whole"]["steps"]["pixels"], 30000);
    EXPECT_EQ(json["window"], json["region"]["window"]);
    const auto text = contentOf(csv);
    EXPECT_EQ(text.substr(0, 20), "value,pixels\n1460,1\n");  // 1000 + 7 * 60 + 40

    const auto asked = runTool({"render", file, "-o", m_folder / "b.png", "--window", "auto"});
    EXPECT_NE(asked.err.find("60 % of the image is a dark border"), std::string::npos) << asked.err;
    const auto found = runJson({"render", file, "-o", m_folder / "c.png", "--window", "auto:collimation"});
    EXPECT_EQ(found["window"], json["collimation"]["window"]);
}

TEST_F(CommandTest, WarnsOnceAndGoesOn) {
    const Arguments arguments = {"render", dicom("a.dcm"), "-o", "-", "--window", "300,0"};
    const auto none = runTool(arguments);
    EXPECT_EQ(none.code, 0);
    EXPECT_EQ(std::count(none.err.begin(), none.err.end(), '\n'), 1) << none.err;
    EXPECT_NE(none.err.find("a.dcm: window 300/0 counts as none"), std::string::npos) << none.err;
    EXPECT_EQ(runTool(joined({"-q"}, arguments)).err, "");
}

TEST_F(CommandTest, LinkIsFollowedAndTheFilesModeKept) {
    const auto real = m_folder.file("real.png", std::string("old"));
    std::filesystem::permissions(real, std::filesystem::perms(0600));
    std::filesystem::create_symlink(real, m_folder / "link.png");
    run({"render", dicom("a.dcm"), "-o", m_folder / "link.png", "--force"});
    EXPECT_TRUE(std::filesystem::is_symlink(m_folder / "link.png"));
    EXPECT_EQ(readPng(real).width, 96);
    EXPECT_EQ(std::filesystem::status(real).permissions(), std::filesystem::perms(0600));
}

TEST(Help, NamesTheVersionAndTheOptions) {
    EXPECT_EQ(runTool({"--version"}).out, "qvr " QVR_VERSION "\n");
    EXPECT_NE(runTool({"render", "--help"}).out.find("--letterbox"), std::string::npos);
}

TEST(StandardOutput, IsReportedWhenItTakesNoMore) {
    for (const char* asked : {"--help", "--version"}) {
        EXPECT_EQ(runTool({asked}).code, 0);
        EXPECT_EQ(runTool({asked}, {{}, "/dev/null", 2}).code, 5) << asked;
    }
}

}  // namespace
