// The built program with everything that can be wrong.
#include "badInput.h"

#include <algorithm>

namespace {

TEST_P(BadInputTest, GivesOneSentenceAndWritesNothing) {
    const auto& test = GetParam();
    std::vector<std::string> arguments;
    for (const auto& argument : test.arguments) arguments.push_back(inputs().withPath(argument));
    const auto before = inputs().content();

    const ToolResult result = runTool(arguments, test.setting);

    EXPECT_EQ(result.code, test.code);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(sentences(result.err), 1) << result.err;
    EXPECT_NE(result.err.find(test.says), std::string::npos) << result.err;
    EXPECT_EQ(inputs().content(), before);
}

std::vector<std::string> ask(const std::string& file) {
    return {"info", file};
}
INSTANTIATE_TEST_SUITE_P(
    Usage, BadInputTest,
    testing::Values(
        BadCase{"noVerb", {}, 2, "See qvr --help."},
        BadCase{"unknownVerb", {"thumbs", "@good.dcm"}, 2, "thumbs"},
        BadCase{"noFile", {"info"}, 2, "See qvr info --help."},
        BadCase{"noOutput", {"render", "@good.dcm"}, 2, "--output"},
        BadCase{"unknownOption", {"info", "--mark", "L", "@good.dcm"}, 2, "--mark"},
        BadCase{"quietAndVerbose", {"-q", "-v", "info", "@good.dcm"}, 2, "--verbose"},
        BadCase{"progressMode", {"info", "--progress", "often", "@good.dcm"}, 2, "often"},
        BadCase{"window", render("@good.dcm", {"--window", "abc"}), 2, "--window"},
        BadCase{"preset", render("@good.dcm", {"--window", "preset:foot"}), 2, "bone"},
        BadCase{"viewPreset", {"info", "--view-preset", "HAND", "@good.dcm"}, 2, "BODYPART"},
        BadCase{"size", render("@good.dcm", {"--size", "0x9"}), 2, "--size"},
        BadCase{"zoom", render("@good.dcm", {"--zoom", "1:0"}), 2, "--zoom"},
        BadCase{"center", render("@good.dcm", {"--center", "5,5"}), 2, "--center"},
        BadCase{"centerOutside", render("@good.dcm", {"--zoom", "1", "--center", "96,5"}), 2, "96 x 64"},
        BadCase{"curve", render("@good.dcm", {"--curve", "cubic"}), 2, "--curve"},
        BadCase{"letterbox", render("@good.dcm", {"--letterbox", "maybe"}), 2, "--letterbox"},
        BadCase{"extension", {"render", "@good.dcm", "-o", "@out.jpg"}, 2, ".png, .bmp, .pgm or .raw"},
        BadCase{"jsonIntoThePicture", {"render", "@good.dcm", "-o", "-", "--json"}, 2, "holds the picture"},
        BadCase{
            "jsonIntoTheHistogram", {"window", "@good.dcm", "--histogram", "-", "--json"}, 2, "two results"},
        BadCase{"roiText", {"window", "@good.dcm", "--roi", "1,2,3"}, 2, "--roi"},
        BadCase{"roiOutside", {"window", "@good.dcm", "--roi", "90,0,51,51"}, 2, "96 x 64"},
        BadCase{"roiSmall", {"window", "@good.dcm", "--roi", "0,0,50,60"}, 2, "51 x 51"},
        BadCase{"noFileWindow", render("@good.dcm", {"--window", "file"}), 2, "names none"},
        BadCase{"rawSpec", {"info", "--raw", "10by20", "@short.raw"}, 2, "--raw"},
        BadCase{"vanishes", render("@good.dcm", {"--size", "1x100"}), 2, "less than one pixel"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Input, BadInputTest,
    testing::Values(
        BadCase{"missing", ask("@none.dcm"), 3, "no such file"},
        BadCase{"aFolder", ask("@folder"), 3, "folder"}, BadCase{"empty", ask("@empty.dcm"), 3, "empty"},
        BadCase{"noImage", ask("@text.dcm"), 3, "--raw"}, BadCase{"cut", render("@cut.dcm"), 3, "cut short"},
        BadCase{"cutInTheHeader", ask("@cutheader.dcm"), 3, "not read"},
        BadCase{"cutCompressed", ask("@cutls.dcm"), 3, "not read"},
        BadCase{"brokenCompressed", ask("@brokenls.dcm"), 3, "cannot be decoded"},
        BadCase{"pixelsMissing", ask("@nopixels.dcm"), 3, "no pixel data"},
        BadCase{"rowsMissing", ask("@norows.dcm"), 3, "no Rows"},
        BadCase{"tooFewPixels", ask("@toofew.dcm"), 3, "12288 of 122880 bytes"},
        BadCase{"contradiction", ask("@contradiction.dcm"), 3, "contradicts"},
        BadCase{"rawSize", {"info", "--raw", "10x6", "@short.raw"}, 3, "need 120 bytes, it has 100"},
        BadCase{"pgmCut", ask("@short.pgm"), 3, "3 of 20000 bytes"},
        BadCase{"pgmBroken", ask("@broken.pgm"), 3, "width"},
        BadCase{"noDictionary", ask("@good.dcm"), 3, "dictionary", {{{"DCMDICTPATH", "/nowhere"}}}},
        BadCase{"emptyStandardInput", ask("-"), 3, "empty"},
        BadCase{"colour", ask("@colour.dcm"), 4, "colour image (RGB)"},
        BadCase{"controlByteInTheName", ask("@control\nname.dcm"), 4, "control?name.dcm"},
        BadCase{"colourPpm", ask("@colour.ppm"), 4, "colour"},
        BadCase{"depth", ask("@deep.dcm"), 4, "32 bits"},
        BadCase{"huge", ask("@huge.dcm"), 4, "65535 x 65535"},
        BadCase{"hugePgm", ask("@huge.pgm"), 4, "largest image"},
        BadCase{
            "jpeg2000", render("@j2k.dcm"), 4,
            "not read: compressed as JPEG 2000 (1.2.840.10008.1.2.4.90), which this build cannot decode.\n"
            "     Convert it to an uncompressed transfer syntax first."}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Output, BadInputTest,
    testing::Values(
        BadCase{"exists", {"render", "@good.dcm", "-o", "@there.png"}, 6, "exists already"},
        BadCase{"histogramExists", {"window", "@good.dcm", "--histogram", "@there.png"}, 6, "exists already"},
        BadCase{"isTheInput", {"render", "@source.png", "-o", "@source.png", "--force"}, 6, "input itself"},
        BadCase{"device", {"render", "@good.dcm", "-o", "/dev/../dev/null", "--force"}, 2, "extension"},
        BadCase{"deviceHistogram",
                {"window", "@good.dcm", "--histogram", "/dev/null", "--force"},
                6,
                "no ordinary"},
        BadCase{"folderForAFile", {"render", "@good.dcm", "-o", "@folder.png", "--force"}, 5, "folder"},
        BadCase{"noFolder", {"render", "@good.dcm", "-o", "@none/out.png"}, 5, "no folder"},
        BadCase{"fileForAFolder", {"render", "@good.dcm", "-o", "@text.dcm/out.png"}, 5, "no folder"},
        BadCase{"diskFull",
                {"render", "@good.dcm", "-o", "@out.pgm"},
                5,
                "Nothing was changed.",
                {{}, "/dev/null", 1000}},
        BadCase{"badUid", render("@baduid.dcm"), 6,
                "refused: SOP Instance UID \"1.2/../x\" contains \"/\", so it cannot name a file.\n"
                "     Use --new-uid."}),
    nameOf);

BadCase exam(const char* name, std::vector<std::string> arguments, int code, const char* says,
             const ToolSetting& setting = {}) {
    return {name, std::move(arguments), code, says, setting};
}

INSTANTIATE_TEST_SUITE_P(
    Exams, BadInputTest,
    testing::Values(
        exam("noAction", {"exam"}, 2, "a verb is required"),
        exam("noOutput", {"exam", "build", "@dicoms"}, 2, "--output is required. See qvr exam build"),
        exam("otherFormat", {"exam", "export", "@exam", "-o", "@out", "--format", "tiff"}, 2, "tiff"),
        exam("examCurve", {"exam", "build", "@dicoms", "-o", "@out", "--curve", "x"}, 2, "--curve"),
        exam("noSource", {"exam", "build", "@none", "-o", "@out"}, 3, "no such folder"),
        exam("sourceIsAFile", {"exam", "build", "@good.dcm", "-o", "@out"}, 3, "no folder"),
        exam("noDicom", {"exam", "build", "@exam", "-o", "@out"}, 3, "no DICOM file is in it"),
        exam("examIsTheSource", {"exam", "build", "@dicoms", "-o", "@dicoms", "--force"}, 6, "input files"),
        exam("examExists", {"exam", "build", "@dicoms", "-o", "@exam"}, 6, "--force"),
        exam("examIsAFile", {"exam", "build", "@dicoms", "-o", "@good.dcm", "--force"}, 5, "no folder"),
        exam("examWithoutParent", {"exam", "build", "@dicoms", "-o", "@none/exam"}, 5, "no folder"),
        exam("listNone", {"exam", "list", "@none"}, 3, "no such folder"),
        exam("listFile", {"exam", "list", "@good.dcm"}, 3, "no folder"),
        exam("listNoExam", {"exam", "list", "@dicoms"}, 3, "no exam.json"),
        exam("listBroken", {"exam", "list", "@broken"}, 3, "no JSON text"),
        exam("exportBroken", {"exam", "export", "@broken", "-o", "@out"}, 3, "no JSON text"),
        exam("checkBroken", {"cache", "check", "@broken", "--repair"}, 3, "no JSON text"),
        exam("checkNoExam", {"cache", "check", "@nocache"}, 3, "no exam.json"),
        exam("examDiskFull", {"exam", "build", "@dicoms", "-o", "@out"}, 5, "R.1.2.3.4.raw: not written",
             {{}, "/dev/null", 8000}),
        exam("examFileDiskFull", {"exam", "build", "@dicoms", "-o", "@out"}, 5, "exam.json: not written",
             {{}, "/dev/null", 500}),
        exam("exportIntoAFile", {"exam", "export", "@exam", "-o", "@good.dcm"}, 5, "good.dcm")),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    NothingToForce, BadInputTest,
    testing::Values(exam("info", {"info", "@good.dcm", "--force"}, 2, "info replaces no file"),
                    exam("forceFirst", {"--force", "info", "@good.dcm"}, 2, "info replaces no file"),
                    exam("windowWithoutFile", {"window", "@good.dcm", "--force"}, 2, "without --histogram"),
                    exam("renderToStandardOutput", {"render", "@good.dcm", "-o", "-", "--force"}, 2,
                         "--output"),
                    exam("list", {"exam", "list", "@exam", "--force"}, 2, "exam list replaces no file"),
                    exam("check", {"cache", "check", "@exam", "--force"}, 2, "cache check replaces no file"),
                    exam("doctor", {"doctor", "--force"}, 2, "doctor replaces no file")),
    nameOf);

TEST(DiskFull, LeavesTheOldFileAsItWas) {
    const TemporaryFolder folder;
    const auto target = folder.file("old.pgm", std::string("old"));
    const auto result =
        runTool({"render", inputs() / "good.dcm", "-o", target, "--force"}, {{}, "/dev/null", 1000});
    EXPECT_EQ(result.code, 5);
    EXPECT_EQ(contentOf(target), "old");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.path()), {}), 1);
}

TEST(SeveralFiles, AreSummedUp) {
    const auto good = inputs() / "good.dcm";
    const auto bad = inputs() / "colour.dcm";
    const auto result = runTool({"info", "--json", "--progress", "never", good, bad, good});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 3);
    EXPECT_NE(result.err.find("1 of 3 files failed: " + bad), std::string::npos) << result.err;
    EXPECT_EQ(runTool({"info", bad, bad}).code, 4);
}

}  // namespace
