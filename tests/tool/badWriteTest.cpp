// The verbs that write an image, with everything that can be wrong.
#include "badInput.h"

namespace {

std::vector<std::string> to(const std::string& verb, const std::string& target,
                            std::vector<std::string> more = {}, const std::string& file = "@good.dcm") {
    std::vector<std::string> arguments = {verb, file, "-o", target};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}
const std::vector<std::string> kL = {"--mark", "L@left,top"};
const std::vector<std::string> kFour = {"--mark", "1@left,top",    "--mark", "2@right,top",
                                        "--mark", "3@left,bottom", "--mark", "4@right,bottom"};
std::vector<std::string> withL(std::vector<std::string> more) {
    more.insert(more.end(), kL.begin(), kL.end());
    return more;
}

INSTANTIATE_TEST_SUITE_P(
    Thumb, BadInputTest,
    testing::Values(BadCase{"dicomName", to("thumb", "@out.dcm"), 2, ".png, .bmp, .pgm or .raw"},
                    BadCase{"exists", to("thumb", "@there.png"), 6, "exists already"},
                    BadCase{"missing", to("thumb", "@out.png", {}, "@none.dcm"), 3, "no such file"},
                    BadCase{"colour", to("thumb", "@out.png", {}, "@colour.dcm"), 4, "colour"},
                    BadCase{"jsonIntoThePicture", to("thumb", "-", {"--json"}), 2, "holds the picture"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Edit, BadInputTest,
    testing::Values(
        BadCase{"nothingToDo", to("edit", "@out.dcm"), 2, "nothing to do"},
        BadCase{"rotate", to("edit", "@out.dcm", {"--rotate", "left"}), 2, "cw, ccw or 180"},
        BadCase{"cropText", to("edit", "@out.dcm", {"--crop", "1,2,3"}), 2, "--crop"},
        BadCase{"cropOutside", to("edit", "@out.dcm", {"--crop", "90,0,10,10"}), 2, "96 x 64"},
        BadCase{"cropOutsideAfterATurn", to("edit", "@out.dcm", {"--rotate", "cw", "--crop", "0,0,96,64"}), 2,
                "64 x 96"},
        BadCase{"maskOutside", to("edit", "@out.dcm", {"--mask", "0,60,20,20"}), 2, "leaves the picture"},
        BadCase{"maskSmall", to("edit", "@out.dcm", {"--mask", "0,0,10,20"}), 2, "11 x 11"},
        BadCase{"maskFill", to("edit", "@out.dcm", {"--mirror", "--mask-fill", "grey"}), 2, "black or white"},
        BadCase{"extension", to("edit", "@out.jpg", {"--mirror"}), 2, "extension"},
        BadCase{"negativeWindow", to("edit", "@out.dcm", {"--mirror", "--window", "100,-5"}), 2, "width -5"},
        BadCase{"exists", to("edit", "@there.dcm", {"--mirror"}), 6, "exists already"},
        BadCase{"isTheInput", to("edit", "@good.dcm", {"--mirror", "--force"}), 6, "input itself"},
        BadCase{"noFolder", to("edit", "@none/out.dcm", {"--mirror"}), 5, "no folder"},
        BadCase{"cut", to("edit", "@out.dcm", {"--mirror"}, "@cut.dcm"), 3, "cut short"},
        BadCase{"diskFull",
                to("edit", "@out.dcm", {"--mirror"}),
                5,
                "Nothing was changed.",
                {{}, "/dev/null", 1000}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Burn, BadInputTest,
    testing::Values(
        BadCase{"noMark", to("burn", "@out.dcm"), 2, "--mark"},
        BadCase{"place", to("burn", "@out.dcm", {"--mark", "L@middle,top"}), 2, "--mark"},
        BadCase{"noText", to("burn", "@out.dcm", {"--mark", " @left,top"}), 2, "TEXT@PLACE"},
        BadCase{"notUtf8", to("burn", "@out.dcm", {"--mark", "\xff@left,top"}), 2, "not UTF-8"},
        BadCase{"height", to("burn", "@out.dcm", withL({"--mark-height", "8"})), 2, "8mm or 120px"},
        BadCase{"tooHigh", to("burn", "@out.dcm", withL({"--mark-height", "65px"})), 2, "image's 64"},
        BadCase{"millimetresOfWhat", to("burn", "@out.dcm", withL({"--mark-height", "8mm"})), 2, "in px"},
        BadCase{"kind", to("burn", "@out.dcm", withL({"--marks", "all"})), 2, "burn, gsps or both"},
        BadCase{"stateIsDicom", to("burn", "@out.png", withL({"--marks", "gsps"})), 2, ".dcm"},
        BadCase{"stateOfAPgm", to("burn", "@out.dcm", withL({"--marks", "both"}), "@good.pgm"), 2,
                "no DICOM file"},
        BadCase{"stateWithACurve", to("burn", "@out.dcm", withL({"--marks", "gsps", "--curve", "log"})), 2,
                "linear"},
        BadCase{"four", to("burn", "@out.dcm", kFour), 6,
                "4 marks given, an image holds 3. Nothing was burned."},
        BadCase{"doesNotFit", to("burn", "@out.dcm", {"--mark", "a text that is too long@left,top"}), 6,
                "does not fit"},
        BadCase{"leavesTheImage", to("burn", "@out.dcm", {"--mark", "L@90,2"}), 6, "does not fit"},
        BadCase{"outsideTheImage", to("burn", "@out.dcm", {"--mark", "L@-500,2"}), 6, "does not fit"},
        BadCase{"noFontHasIt", to("burn", "@out.dcm", {"--mark", "a\xf4\x8f\xbf\xbd@left,top"}), 6,
                "no installed font has U+10FFFD"},
        BadCase{"noChineseFont",
                to("burn", "@out.dcm", {"--mark", "\xe5\xb7\xa6@left,top"}),
                6,
                "mark \"\xe5\xb7\xa6\": no installed font has U+5DE6.",
                {{{"FONTCONFIG_FILE", inputs() / "onlyLatin.conf"}}}},
        BadCase{"noFontAtAll",
                to("burn", "@out.dcm", kL),
                6,
                "no usable font",
                {{{"FONTCONFIG_FILE", inputs() / "noFont.conf"}}}},
        BadCase{"stateOfABadUid", to("burn", "@out.dcm", withL({"--marks", "gsps"}), "@baduid.dcm"), 6,
                "SOP Instance UID \"1.2/../x\""},
        BadCase{"exists", to("burn", "@there.dcm", kL), 6, "exists already"},
        BadCase{"noFolder", to("burn", "@none/out.dcm", kL), 5, "no folder"},
        BadCase{"diskFull", to("burn", "@out.dcm", kL), 5, "not", {{}, "/dev/null", 1000}},
        BadCase{"missing", to("burn", "@out.dcm", kL, "@none.dcm"), 3, "no such file"},
        BadCase{"colour", to("burn", "@out.dcm", kL, "@colour.dcm"), 4, "colour"}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    PrintLutAndMarks, BadInputTest,
    testing::Values(
        BadCase{"printBits", to("print", "@out.png", {"--bits", "16"}), 2, "12 or 14"},
        BadCase{"printFilm", to("print", "@out.png", {"--film", "8x10@300dpi"}), 2, "8x10in@300dpi"},
        BadCase{"printHugeFilm", to("print", "@out.png", {"--film", "800x10in@300dpi"}), 2, "32767"},
        BadCase{"printRegion", to("print", "@out.png", {"--region", "a"}), 2, "--region"},
        BadCase{"printRegionOutside", to("print", "@out.png", {"--region", "0,0,97,10"}), 2, "96 x 64"},
        BadCase{"printFour", to("print", "@out.png", kFour), 6, "an image holds 3. Nothing was printed."},
        BadCase{"printMarkOutsideTheRegion",
                to("print", "@out.png", {"--region", "0,0,40,40", "--mark", "L@60,20"}), 6, "does not fit"},
        BadCase{"printExists", to("print", "@there.png"), 6, "exists already"},
        BadCase{"printDiskFull", to("print", "@out.pgm"), 5, "Nothing was changed.", {{}, "/dev/null", 1000}},
        BadCase{"printMissing", to("print", "@out.png", {}, "@none.dcm"), 3, "no such file"},
        BadCase{"lutWithoutWindow", {"lut", "-o", "@out.csv"}, 2, "--window"},
        BadCase{"lutAutomatic", {"lut", "--window", "auto", "-o", "@out.csv"}, 2, "C,W"},
        BadCase{"lutNoWindow", {"lut", "--window", "300,0", "-o", "@out.csv"}, 2, "no window"},
        BadCase{"lutCurve", {"lut", "--window", "300,9", "--curve", "x", "-o", "@out.csv"}, 2, "--curve"},
        BadCase{"lutExists", {"lut", "--window", "300,9", "-o", "@there.png"}, 6, "exists already"},
        BadCase{"lutNoFolder", {"lut", "--window", "300,9", "-o", "@none/out.csv"}, 5, "no folder"},
        BadCase{"renderFour", render("@good.dcm", kFour), 6, "an image holds 3. Nothing was rendered."},
        BadCase{"renderOutsideTheView",
                render("@good.dcm", {"--zoom", "4", "--size", "200x200", "--mark", "L@90,5"}), 6,
                "does not fit"}),
    nameOf);

}  // namespace
