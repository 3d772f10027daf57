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

TEST(Doctor, MissesDictionaryFolderAndRoom) {
    const TemporaryFolder folder;
    EXPECT_EQ(gradeOf(report(folder.path(), 1, {{{"DCMDICTPATH", "/nowhere"}}}), "dictionary"), "problem");
    EXPECT_EQ(gradeOf(report(folder / "none", 1), "folder"), "problem");
    EXPECT_EQ(gradeOf(report(folder.path(), 1, {{}, "/dev/null", 4000}), "folder"), "problem");
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

}  // namespace
