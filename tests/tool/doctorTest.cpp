// qvr doctor tells what is missing: here it is taken away.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "toolRun.h"

namespace {

using Json = nlohmann::json;

std::string gradeOf(const Json& report, const std::string& topic) {
    for (const auto& finding : report["findings"])
        if (finding["topic"] == topic) return finding["grade"];
    return "(not examined)";
}

Json report(const std::string& folder, int code, const ToolSetting& setting = {}) {
    const auto result = runTool({"doctor", folder, "--json"}, setting);
    EXPECT_EQ(result.code, code) << result.out << result.err;
    return Json::parse(result.out);
}

TEST(Doctor, FindsWhatIsThereAndLeavesNothingBehind) {
    const TemporaryFolder folder;
    const auto json = report(folder.path(), 0);
    for (const char* topic : {"Arial", "marks", "script Latin", "dictionary", "RLE Lossless", "folder"})
        EXPECT_EQ(gradeOf(json, topic), "ok") << topic;
    EXPECT_EQ(gradeOf(json, "JPEG 2000 (Lossless only)"), "warning");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(Doctor, MissesFonts) {
    const TemporaryFolder folder;
    const auto config =
        folder.file("fonts.conf", std::string("<?xml version=\"1.0\"?><fontconfig></fontconfig>"));
    const auto json = report(folder.path(), 1, {{{"FONTCONFIG_FILE", config}}});
    for (const char* topic : {"Arial", "marks"}) EXPECT_EQ(gradeOf(json, topic), "problem") << topic;
    EXPECT_EQ(gradeOf(json, "script Latin"), "warning");
}

// Only one face is there, and it is none of Arial's widths; it has no Hebrew letters unless its file says so.
TEST(Doctor, NamesTheFaceThatStandsForArial) {
    const std::string face = "/usr/share/fonts/truetype/liberation/LiberationMono-Regular.ttf";
    if (!std::filesystem::exists(face)) GTEST_SKIP() << "Liberation Mono is not installed";
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "fonts");
    std::filesystem::copy_file(face, folder / "fonts/face.ttf");
    const auto config = folder.file("fonts.conf", "<?xml version=\"1.0\"?><fontconfig><dir>" +
                                                      (folder / "fonts") + "</dir></fontconfig>");
    const auto json = report(folder.path(), 0, {{{"FONTCONFIG_FILE", config}}});
    EXPECT_EQ(gradeOf(json, "Arial"), "warning");
    EXPECT_NE(json["findings"][0]["found"].get<std::string>().find("Liberation Mono"), std::string::npos);
    EXPECT_EQ(gradeOf(json, "script Chinese"), "warning");
    EXPECT_EQ(gradeOf(json, "script Greek"), "ok");
}

TEST(Doctor, MissesDictionaryFolderAndRoom) {
    const TemporaryFolder folder;
    EXPECT_EQ(gradeOf(report(folder.path(), 1, {{{"DCMDICTPATH", "/nowhere"}}}), "dictionary"), "problem");
    EXPECT_EQ(gradeOf(report(folder / "none", 1), "folder"), "problem");
    EXPECT_EQ(gradeOf(report(folder.path(), 1, {{}, "/dev/null", 4000}), "folder"), "problem");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

}  // namespace
