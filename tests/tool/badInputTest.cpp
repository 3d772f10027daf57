// Everything that can be wrong with a command: the exit code, one sentence, and nothing written.
#include <dcmtk/dcmdata/dcdatset.h>
#include <dcmtk/dcmdata/dcdeftag.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "dicomMaker.h"
#include "toolRun.h"

namespace {

// All inputs, made once. Arguments name them with a leading '@'.
class Inputs {
public:
    Inputs() {
        const auto wrong = [this](const std::string& name, const std::function<void(DicomSpec&)>& change) {
            DicomSpec spec;
            change(spec);
            return writeDicom(*this / name, spec);
        };
        const auto altered = [&](const std::string& name, std::function<void(DcmDataset&)> change) {
            wrong(name, [&](DicomSpec& spec) { spec.more = change; });
        };
        wrong("colour.dcm", [](DicomSpec& spec) { spec.photometric = "RGB"; });
        wrong("control\nname.dcm", [](DicomSpec& spec) { spec.photometric = "RGB"; });
        wrong("contradiction.dcm", [](DicomSpec& spec) { spec.highBit = 5; });
        wrong("baduid.dcm", [](DicomSpec& spec) { spec.uid = "1.2/../x"; });
        altered("deep.dcm", [](DcmDataset& set) { set.putAndInsertUint16(DCM_BitsAllocated, 32); });
        altered("nopixels.dcm", [](DcmDataset& set) { set.findAndDeleteElement(DCM_PixelData); });
        altered("toofew.dcm", [](DcmDataset& set) { set.putAndInsertUint16(DCM_Rows, 640); });
        altered("huge.dcm", [](DcmDataset& set) {
            set.putAndInsertUint16(DCM_Rows, 65535);
            set.putAndInsertUint16(DCM_Columns, 65535);
        });
        writeDicom(*this / "good.dcm", {});
        cut(writeDicom(*this / "cut.dcm", {}), 4000);
        cut(wrong("cutls.dcm", [](DicomSpec& spec) { spec.transfer = EXS_JPEGLSLossless; }), 900);
        auto jpeg = contentOf(wrong("jpeg.dcm", [](auto& spec) { spec.transfer = EXS_JPEGProcess14SV1; }));
        m_folder.file("j2k.dcm",
                      jpeg.replace(jpeg.find("1.2.840.10008.1.2.4.70"), 22, "1.2.840.10008.1.2.4.90"));
        // One element that promises nearly 4 GiB.
        m_folder.file("longelement.dcm",
                      std::string("\x08\0\x06\0UT\0\0\xfe\xff\xff\xfa and then nothing", 28));
        auto rle = contentOf(wrong("rle.dcm", [](DicomSpec& spec) { spec.transfer = EXS_RLELossless; }));
        // Two segments, the second of which begins before the first.
        const std::string twoSegments("\2\0\0\0\x40\0\0\0", 8);
        m_folder.file("rle.dcm", rle.replace(rle.find(twoSegments) + 8, 4, std::string(4, '\0')));
        m_folder.file("empty.dcm", std::string());
        m_folder.file("text.dcm", std::string("no image at all"));
        m_folder.file("short.raw", std::string(100, '\0'));
        m_folder.file("short.pgm", std::string("P5 100 100 65535\nabc"));
        m_folder.file("good.pgm", "P5 64 64 65535\n" + std::string(2 * 64 * 64, 'x'));
        m_folder.file("there.png", std::string("keep me"));
        m_folder.file("there.dcm", std::string("keep me"));
        m_folder.file(
            "onlyLatin.conf",
            std::string("<fontconfig><dir>/usr/share/fonts/truetype/liberation</dir></fontconfig>"));
        m_folder.file("noFont.conf", std::string("<fontconfig></fontconfig>"));
        for (const char* name : {"dicoms", "exam", "broken", "piped"})
            std::filesystem::create_directory(*this / name);
        writeDicom(*this / "dicoms/a.dcm", {});
        m_folder.file("exam/exam.json", std::string("{\"format\":\"qvr-exam\",\"version\":1,\"display\":"
                                                    "{\"width\":9,\"height\":9},\"studies\":[]}"));
        m_folder.file("broken/exam.json", std::string("{\"format\":\"qvr-exam\""));
        std::filesystem::create_directory(*this / "folder.png");
        for (const char* name : {"pipe", "piped/exam.json"}) mkfifo((*this / name).c_str(), 0600);
        const std::pair<const char*, const char*> links[] = {
            {"linked-gsps.dcm", "linked.dcm"}, {"there-gsps.dcm", "there.dcm"}, {"loop.png", "loop.png"}};
        for (const auto& [name, target] : links) std::filesystem::create_symlink(target, *this / name);
        std::filesystem::copy_file(*this / "good.dcm", *this / "source.png");
    }
    std::string operator/(const std::string& name) const { return m_folder / name; }
    std::string withPath(const std::string& text) const {
        return text.starts_with('@') ? *this / text.substr(1) : text;
    }
    // Every name with its content.
    std::map<std::string, std::string> content() const {
        std::map<std::string, std::string> all;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder.path()))
            all[entry.path().string()] = entry.is_symlink()        ? "link"
                                         : entry.is_regular_file() ? contentOf(entry.path().string())
                                                                   : "no file";
        return all;
    }

private:
    TemporaryFolder m_folder;
};

const Inputs& inputs() {
    static const Inputs all;
    return all;
}

// One sentence: it begins with the program's name, and further lines are its indented advice.
int sentences(const std::string& text) {
    int count = 0;
    for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
        if (text.compare(at, 5, "qvr: ") == 0)
            ++count;
        else if (text.compare(at, 5, "     ") != 0)
            return -1;
        if (text.find('\n', at) == std::string::npos) return -1;
    }
    return count;
}

struct BadCase {
    const char* name;
    Arguments arguments;
    int code;
    std::string says;
    ToolSetting setting = {};
};

void expectRefused(const std::vector<BadCase>& rows) {
    for (const BadCase& row : rows) {
        SCOPED_TRACE(row.name);
        Arguments arguments;
        for (const auto& argument : row.arguments) arguments.push_back(inputs().withPath(argument));
        const auto before = inputs().content();

        const ToolResult result = runTool(arguments, row.setting);

        EXPECT_EQ(result.code, row.code);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(sentences(result.err), 1) << result.err;
        EXPECT_NE(result.err.find(row.says), std::string::npos) << result.err;
        EXPECT_EQ(inputs().content(), before);
    }
}

Arguments to(const std::string& verb, const std::string& target, const Arguments& more = {},
             const std::string& file = "@good.dcm") {
    return joined({verb, file, "-o", target}, more);
}
Arguments render(const std::string& file, const Arguments& more = {}) {
    return to("render", "@out.png", more, file);
}
Arguments ask(const std::string& file) {
    return {"info", file};
}
ToolSetting full(rlim_t bytes) {
    return {{}, "/dev/null", bytes};
}
ToolSetting fonts(const std::string& configuration) {
    return {{{"FONTCONFIG_FILE", inputs() / configuration}}};
}
const ToolSetting kNotForEver = {{}, "/dev/null", RLIM_INFINITY, 5000000};
const Arguments kBuild = {"exam", "build", "@dicoms", "-o", "@out"};
const Arguments kL = {"--mark", "L@left,top"};
const Arguments kBoth = joined(kL, {"--marks", "both"});
const Arguments kFour = joined(joined(kL, kL), joined(kL, kL));

TEST(BadInput, Usage) {
    expectRefused(
        {{"noVerb", {}, 2, "See qvr --help."},
         {"unknownOption", {"info", "--mark", "L", "@good.dcm"}, 2, "--mark"},
         {"size", render("@good.dcm", {"--size", "0x9"}), 2, "--size"},
         {"centerOutside", render("@good.dcm", {"--zoom", "1", "--center", "96,5"}), 2, "96 x 64"},
         {"jsonIntoThePicture", {"render", "@good.dcm", "-o", "-", "--json"}, 2, "holds the picture"},
         {"roiOutside", {"window", "@good.dcm", "--roi", "90,0,51,51"}, 2, "96 x 64"},
         {"noFileWindow", render("@good.dcm", {"--window", "file"}), 2, "names none"},
         {"vanishes", render("@good.dcm", {"--size", "1x100"}), 2, "less than one pixel"},
         {"check", {"cache", "check", "@exam", "--force"}, 2, "cache check replaces no file"}});
}

TEST(BadInput, Files) {
    expectRefused(
        {{"missing", ask("@none.dcm"), 3, "no such file"},
         {"empty", ask("@empty.dcm"), 3, "empty"},
         {"noImage", ask("@text.dcm"), 3, "--raw"},
         {"cut", render("@cut.dcm"), 3, "cut short"},
         {"cutCompressed", ask("@cutls.dcm"), 3, "not read"},
         {"longElement",
          ask("@longelement.dcm"),
          3,
          "cut short",
          {.environment = {{"ASAN_OPTIONS", "max_allocation_size_mb=1024:allocator_may_return_null=1"}}}},
         {"segments", ask("@rle.dcm"), 3, "cannot be decoded"},
         {"pixelsMissing", ask("@nopixels.dcm"), 3, "no pixel data"},
         {"tooFewPixels", ask("@toofew.dcm"), 3, "12288 of 122880 bytes"},
         {"contradiction", ask("@contradiction.dcm"), 3, "contradicts"},
         {"pipe", ask("@pipe"), 3, "no ordinary file", kNotForEver},
         {"rawSize", {"info", "--raw", "10x6", "@short.raw"}, 3, "need 120 bytes, it has 100"},
         {"pgmCut", ask("@short.pgm"), 3, "3 of 20000 bytes"},
         {"noDictionary", ask("@good.dcm"), 3, "dictionary", {{{"DCMDICTPATH", "/nowhere"}}}},
         {"emptyStandardInput", ask("-"), 3, "empty"},
         {"colour", ask("@colour.dcm"), 4, "colour image (RGB)"},
         {"controlByteInTheName", ask("@control\nname.dcm"), 4, "control?name.dcm"},
         {"depth", ask("@deep.dcm"), 4, "32 bits"},
         {"huge", ask("@huge.dcm"), 4, "65535 x 65535"},
         {"jpeg2000", render("@j2k.dcm"), 4, "JPEG 2000 (1.2.840.10008.1.2.4.90), which this build cannot"},
         {"exists", to("render", "@there.png"), 6, "exists already"},
         {"isTheInput", {"render", "@source.png", "-o", "@source.png", "--force"}, 6, "input itself"},
         {"isStandardInput",
          {"edit", "-", "--mirror", "-o", "@good.pgm", "--force"},
          6,
          "input itself",
          {{}, inputs() / "good.pgm"}},
         {"linkLoop", to("render", "@loop.png", {"--force"}), 5, "symbolic links"},
         {"device", {"render", "@good.dcm", "-o", "/dev/../dev/null", "--force"}, 2, "extension"},
         {"folderForAFile", {"render", "@good.dcm", "-o", "@folder.png", "--force"}, 5, "folder"},
         {"fileForAFolder", {"render", "@good.dcm", "-o", "@text.dcm/out.png"}, 5, "no folder"},
         {"diskFull", to("render", "@out.pgm"), 5, "Nothing was changed.", full(1000)},
         {"diskFullOverAnOldFile", to("render", "@there.png", {"--force", "--size", "999x999"}), 5,
          "Nothing was changed.", full(1000)},
         {"badUid", render("@baduid.dcm"), 6, "\"1.2/../x\" contains \"/\""}});
}

TEST(BadInput, Exams) {
    expectRefused(
        {{"noOutput", {"exam", "build", "@dicoms"}, 2, "--output is required. See qvr exam build"},
         {"noSource", {"exam", "build", "@none", "-o", "@out"}, 3, "no such folder"},
         {"noDicom", {"exam", "build", "@exam", "-o", "@out"}, 3, "no DICOM file is in it"},
         {"examIsTheSource", {"exam", "build", "@dicoms", "-o", "@dicoms", "--force"}, 6, "input files"},
         {"examExists", {"exam", "build", "@dicoms", "-o", "@exam"}, 6, "--force"},
         {"listNoExam", {"exam", "list", "@dicoms"}, 3, "no exam.json"},
         {"listPipe",
          {"exam", "list", "@piped"},
          3,
          "exam.json: not read: it is no ordinary file",
          kNotForEver},
         {"listLinkLoop", {"exam", "list", "@loop.png"}, 3, "symbolic links"},
         {"checkBroken", {"cache", "check", "@broken", "--repair"}, 3, "no JSON text"},
         {"examDiskFull", kBuild, 5, "R.1.2.3.4.raw: not written", full(8000)},
         {"examFileDiskFull", kBuild, 5, "exam.json: not written", full(500)},
         {"exportIntoALinkLoop", {"exam", "export", "@exam", "-o", "@loop.png"}, 5, "symbolic links"},
         {"exportLongName", {"exam", "export", "@exam", "-o", "@" + std::string(300, 'n')}, 5, "too long"},
         {"exportIntoAFile", {"exam", "export", "@exam", "-o", "@good.dcm"}, 5, "good.dcm"}});
}

TEST(BadInput, Writing) {
    expectRefused(
        {{"editNothingToDo", to("edit", "@out.dcm"), 2, "nothing to do"},
         {"editCropOutsideAfterATurn", to("edit", "@out.dcm", {"--rotate", "cw", "--crop", "0,0,96,64"}), 2,
          "64 x 96"},
         {"editMaskOutside", to("edit", "@out.dcm", {"--mask", "0,60,20,20"}), 2, "leaves the picture"},
         {"editNegativeWindow", to("edit", "@out.dcm", {"--mirror", "--window", "100,-5"}), 2, "width -5"},
         {"editDiskFull", to("edit", "@out.dcm", {"--mirror"}), 5, "Nothing was changed.", full(1000)},
         {"burnNoMark", to("burn", "@out.dcm"), 2, "--mark"},
         {"burnNotUtf8", to("burn", "@out.dcm", {"--mark", "\xff@left,top"}), 2, "not UTF-8"},
         {"burnTooHigh", to("burn", "@out.dcm", joined(kL, {"--mark-height", "65px"})), 2, "image's 64"},
         {"burnMillimetresOfWhat", to("burn", "@out.dcm", joined(kL, {"--mark-height", "8mm"})), 2, "in px"},
         {"burnStateIsDicom", to("burn", "@out.png", joined(kL, {"--marks", "gsps"})), 2, ".dcm"},
         {"burnStateOfAPgm", to("burn", "@out.dcm", joined(kL, {"--marks", "both"}), "@good.pgm"), 2,
          "no DICOM file"},
         {"burnStateWithACurve", to("burn", "@out.dcm", joined(kL, {"--marks", "gsps", "--curve", "log"})), 2,
          "linear"},
         {"burnFour", to("burn", "@out.dcm", kFour), 6, "4 marks given"},
         {"burnDoesNotFit", to("burn", "@out.dcm", {"--mark", "a text that is too long@left,top"}), 6,
          "does not fit"},
         {"burnNoFontHasIt", to("burn", "@out.dcm", {"--mark", "a\xf4\x8f\xbf\xbd@left,top"}), 6,
          "no installed font has U+10FFFD"},
         {"burnNoChineseFont", to("burn", "@out.dcm", {"--mark", "\xe5\xb7\xa6@left,top"}), 6,
          "mark \"\xe5\xb7\xa6\": no installed font has U+5DE6.", fonts("onlyLatin.conf")},
         {"burnNoFontAtAll", to("burn", "@out.dcm", kL), 6, "no usable font", fonts("noFont.conf")},
         {"burnBothIntoOneFile", to("burn", "@there.dcm", joined(kBoth, {"--force"})), 6, "same file"},
         {"burnBothLongName", to("burn", "@" + std::string(250, 'n') + ".dcm", kBoth), 5, "too long"},
         {"printHugeFilm", to("print", "@out.png", {"--film", "800x10in@300dpi"}), 2, "32767"},
         {"printRegionOutside", to("print", "@out.png", {"--region", "0,0,97,10"}), 2, "96 x 64"},
         {"printMarkOutsideTheRegion",
          to("print", "@out.png", {"--region", "0,0,40,40", "--mark", "L@60,20"}), 6, "does not fit"},
         {"lutWithoutWindow", {"lut", "-o", "@out.csv"}, 2, "--window"},
         {"renderOutsideTheView",
          render("@good.dcm", {"--zoom", "4", "--size", "200x200", "--mark", "L@90,5"}), 6, "does not fit"}});
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
