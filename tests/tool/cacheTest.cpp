// What qvr cache check finds, what --repair brings back, and what is left of a program that is killed.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "examMaker.h"
#include "toolRun.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

// One JSON object per line, by UID; strays under their names.
std::map<std::string, Json> objects(const std::string& out) {
    std::map<std::string, Json> all;
    for (std::size_t at = 0; at < out.size(); at = out.find('\n', at) + 1) {
        const Json one = Json::parse(out.substr(at, out.find('\n', at) - at));
        all[one.value("sop_instance_uid", one.value("stray", ""))] = one;
    }
    return all;
}

// An exam of three images.
class Exam {
public:
    Exam() {
        fs::create_directory(m_temporary / "in");
        writeDicoms(m_temporary / "in", 3);
        if (runTool({"exam", "build", m_temporary / "in", "-o", path()}).code != 0)
            throw std::runtime_error("no exam");
        m_whole = contentOf(image(2));
    }
    std::string path() const { return m_temporary / "exam"; }
    std::string raw(int number) const { return path() + "/Cache/R." + uidOf(number) + ".raw"; }
    std::string image(int number) const { return path() + "/Cache/I." + uidOf(number) + ".raw"; }
    std::string work(int number) const { return path() + "/Cache/W." + uidOf(number) + ".raw"; }
    const std::string& whole() const { return m_whole; }
    ToolResult check(const Arguments& more = {}, const ToolSetting& setting = {}) const {
        return runTool(joined({"cache", "check", path(), "--progress", "never"}, more), setting);
    }

private:
    TemporaryFolder m_temporary;
    std::string m_whole;
};

void write(const std::string& path, const std::string& content) {
    std::ofstream(path, std::ios::binary) << content;
}

void changeExamFile(const Exam& exam, const std::function<void(Json&)>& change) {
    Json json = Json::parse(contentOf(exam.path() + "/exam.json"));
    change(json);
    write(exam.path() + "/exam.json", json.dump());
}

Json& imageOf(Json& exam, int number) {
    return exam["studies"][0]["series"][static_cast<std::size_t>(number - 1)]["image"];
}

enum class Change { none, removed, shortened, lengthened, altered, folder };

struct Damage {
    const char* name;
    Change image, raw;                 // of image 2
    std::string imageFound, rawFound;  // its states
    bool mended;                       // by --repair
    bool listed = true;                // the image file stands in the exam file
};

std::string otherPixels(const Exam& exam) {
    std::string content = exam.whole();
    content[100] = static_cast<char>(content[100] ^ 1);
    return content;
}

void apply(Change change, const std::string& path, const Exam& exam) {
    if (change == Change::removed || change == Change::folder) fs::remove(path);
    if (change == Change::folder) fs::create_directory(path);
    if (change == Change::shortened) fs::resize_file(path, 12287);
    if (change == Change::lengthened) fs::resize_file(path, 12289);
    if (change == Change::altered) write(path, otherPixels(exam));
}

TEST(DamageTest, IsNamedAndMendedWhereThatIsSafe) {
    using enum Change;
    const Damage rows[] = {
        {"nothing", none, none, "whole", "whole", true},
        {"imageMissing", removed, none, "missing", "whole", true},
        {"imageShort", shortened, none, "short", "whole", true},
        {"imageLong", lengthened, none, "long", "whole", false},
        {"imageDiffers", altered, none, "differs", "whole", false},
        {"rawMissing", none, removed, "whole", "missing", true},
        {"rawShort", none, shortened, "whole", "short", true},
        {"rawDiffers", none, altered, "whole", "differs", false},
        {"bothMissing", removed, removed, "missing", "missing", false},
        {"imageShortRawDiffers", shortened, altered, "short", "differs", false},
        {"aFolder", folder, none, "unusable", "whole", false},
        // The program was killed after it wrote the image file and before it wrote the exam file.
        {"notYetInTheExamFile", none, none, "whole", "whole", true, false},
        // The same, while a user had changed the pixels: what is on disk is newer than the exam file.
        {"changedAndNotYetInTheExamFile", altered, none, "differs", "whole", false, false}};
    for (const Damage& test : rows) {
        SCOPED_TRACE(test.name);
        const Exam exam;
        apply(test.image, exam.image(2), exam);
        apply(test.raw, exam.raw(2), exam);
        if (!test.listed) changeExamFile(exam, [](Json& json) { imageOf(json, 2)["image_file"] = nullptr; });
        const auto contentOrFolder = [](const std::string& path) {
            return fs::is_directory(path) ? "(folder)" : contentOf(path);
        };
        const auto before = contentOrFolder(exam.image(2));

        const auto found = exam.check({"--json"});
        const bool whole = test.imageFound == "whole" && test.rawFound == "whole";
        EXPECT_EQ(found.code, whole ? 0 : 1);
        auto all = objects(found.out);
        ASSERT_EQ(all.size(), 3U) << found.out;
        EXPECT_EQ(all[uidOf(2)]["image_file"]["state"], test.imageFound);
        EXPECT_EQ(all[uidOf(2)]["raw_copy"]["state"], test.rawFound);
        for (const int other : {1, 3}) EXPECT_EQ(all[uidOf(other)]["result"], "ok");
        EXPECT_EQ(contentOrFolder(exam.image(2)), before);  // looking changes nothing

        const auto repaired = exam.check({"--repair"});
        EXPECT_EQ(repaired.code, test.mended ? 0 : 1) << repaired.out;
        EXPECT_EQ(repaired.out.find("restored") != std::string::npos, test.mended && !whole) << repaired.out;
        if (test.mended) {
            EXPECT_EQ(contentOf(exam.image(2)), exam.whole());
            EXPECT_EQ(contentOf(exam.raw(2)), exam.whole());
            EXPECT_EQ(exam.check().code, 0);
            EXPECT_EQ(runTool({"exam", "list", exam.path()}).code, 0);
        } else {
            EXPECT_EQ(contentOrFolder(exam.image(2)), before);
        }
    }
}

TEST(CacheCheck, NamesFilesOfNoImageAndRemovesTemporaryOnesOnly) {
    const Exam exam;
    write(exam.raw(9), std::string(400, 'r'));
    write(exam.image(9), std::string(100, 'i'));
    write(exam.work(1), std::string(12288, 'w'));
    const std::vector<std::string> temporary = {exam.path() + "/.qvr-a1B2c3",
                                                exam.image(1) + ".qvr-new-4711"};
    for (const auto& path : temporary) write(path, "half");
    write(exam.path() + "/Cache/notes.txt", "mine");

    const auto found = exam.check();
    EXPECT_EQ(found.code, 1);
    for (const char* line :
         {"1.2.3.9  not in the exam file: raw copy 400 bytes, image file 100 bytes (short",
          "Cache/W.1.2.3.1.raw  work file that was never committed: 12288 bytes",
          ".qvr-a1B2c3  temporary file", "Cache/I.1.2.3.1.raw.qvr-new-4711  temporary file",
          "Cache/notes.txt  unknown file: 4 bytes", "3 images, 5 problems"})
        EXPECT_NE(found.out.find(line), std::string::npos) << line << '\n' << found.out;

    const auto repaired = exam.check({"--repair"});
    EXPECT_EQ(repaired.code, 1);
    EXPECT_NE(repaired.out.find("3 images, 3 problems"), std::string::npos) << repaired.out;
    for (const auto& path : temporary) EXPECT_FALSE(fs::exists(path));
    EXPECT_TRUE(fs::exists(exam.raw(9)) && fs::exists(exam.work(1)) &&
                fs::exists(exam.path() + "/Cache/notes.txt"));
}

TEST(CacheCheck, EndsAnExchangeThatWasBegun) {
    const Exam exam;
    fs::create_directories(exam.path() + "/.qvr-a1B2c3/Cache");
    const std::string begun = exam.path() + "/.qvr-exchange";
    fs::create_directory(begun);
    fs::rename(exam.path() + "/exam.json", begun + "/exam.json");
    fs::rename(exam.path() + "/Cache", begun + "/replaced");
    fs::create_directory(exam.path() + "/Cache");
    for (const Arguments& command : {Arguments{"cache", "check", exam.path()},
                                     {"exam", "list", exam.path()},
                                     {"exam", "export", exam.path(), "-o", exam.path() + "/out"}}) {
        const auto result = runTool(command);
        EXPECT_EQ(result.code, 3) << result.out;
        EXPECT_NE(result.err.find("--repair to finish that"), std::string::npos) << result.err;
    }
    const auto repaired = exam.check({"--repair"});
    EXPECT_EQ(repaired.code, 0) << repaired.err;
    EXPECT_NE(repaired.out.find("3 images, 0 problems"), std::string::npos) << repaired.out;
    EXPECT_EQ(std::distance(fs::directory_iterator(exam.path()), {}), 2);
}

TEST(CacheCheck, LeavesAShortFileWhereTheRepairFails) {
    const Exam exam;
    fs::resize_file(exam.image(2), 100);
    const auto repaired = exam.check({"--repair"}, {{}, "/dev/null", 5000});
    EXPECT_EQ(repaired.code, 5);
    EXPECT_NE(repaired.err.find("I.1.2.3.2.raw: not restored: the copy"), std::string::npos) << repaired.err;
    EXPECT_EQ(fs::file_size(exam.image(2)), 100U);
    EXPECT_EQ(std::distance(fs::directory_iterator(exam.path() + "/Cache"), {}), 6);
}

// An image that was cut since it was acquired: its raw copy has another size.
TEST(CacheCheck, RestoresTheSizeOfTheRawCopyToo) {
    const Exam exam;
    changeExamFile(exam, [](Json& json) {
        auto& image = imageOf(json, 2);
        image["columns"] = 10;
        image["rows"] = 10;
        image["image_file"] = {{"columns", 10}, {"rows", 10}, {"bytes", 200}, {"crc32", "00000000"}};
    });
    const std::string before = contentOf(exam.path() + "/exam.json");
    fs::remove(exam.image(2));
    const auto repaired = exam.check({"--repair"});
    EXPECT_EQ(repaired.code, 0) << repaired.out;
    EXPECT_NE(repaired.out.find("changes are lost"), std::string::npos) << repaired.out;
    // The same when the program ended before it wrote the exam file.
    const std::string after = contentOf(exam.path() + "/exam.json");
    write(exam.path() + "/exam.json", before);
    EXPECT_EQ(exam.check().code, 1);
    EXPECT_EQ(exam.check({"--repair"}).code, 0);
    EXPECT_EQ(contentOf(exam.path() + "/exam.json"), after);
    EXPECT_EQ(contentOf(exam.image(2)), exam.whole());
    Json json = Json::parse(contentOf(exam.path() + "/exam.json"));
    EXPECT_EQ(imageOf(json, 2)["columns"], 96);
}

// Kills the program at many moments of a build. Afterwards every file is named for what it is, and every whole raw copy
// gives its image back.
TEST(KilledBuild, LosesNoRawCopyAndNamesEveryFile) {
    const TemporaryFolder folder;
    const std::string reference = folder / "reference";
    fs::create_directory(folder / "in");
    writeDicoms(folder / "in", 7, 600, 400);
    const auto build = [&](const std::string& exam, long killAfter) {
        runTool({"exam", "build", folder / "in", "-o", exam}, {{}, "/dev/null", RLIM_INFINITY, killAfter});
    };
    int interrupted = 0, restored = 0;
    constexpr int moments = 14, rounds = 8;  // a busy machine may finish too early: the time is taken anew
    std::chrono::duration<double, std::micro> whole{};
    const auto enough = [&] { return interrupted > 2 && restored > 2; };
    for (int kill = 0; kill < moments || (kill < rounds * moments && !enough()); ++kill) {
        const int moment = kill % moments;
        if (moment == 0) {
            fs::remove_all(reference);
            const auto begin = std::chrono::steady_clock::now();
            build(reference, 0);
            whole = std::chrono::steady_clock::now() - begin;
            continue;
        }
        const std::string exam = folder / ("exam" + std::to_string(moment));
        build(exam, static_cast<long>(whole.count() * moment / moments));
        if (!fs::exists(exam + "/exam.json")) {
            EXPECT_FALSE(fs::exists(exam + "/Cache")) << "pixels without an exam file";
            fs::remove_all(exam);
            continue;
        }
        const auto found = runTool({"cache", "check", exam, "--json", "--progress", "never"});
        const auto repaired = runTool({"cache", "check", exam, "--json", "--repair", "--progress", "never"});
        bool anyLost = false;
        for (auto& [uid, one] : objects(found.out)) {
            if (one.contains("stray")) {
                EXPECT_EQ(one["kind"], "temporary file of a write that was killed") << one;
                continue;
            }
            if (one["raw_copy"]["state"] != "whole") {
                anyLost = true;
                continue;
            }
            const std::string file = "/Cache/I." + uid + ".raw";
            EXPECT_EQ(contentOf(exam + file), contentOf(reference + file)) << uid;
            restored += one["image_file"]["state"] != "whole" ? 1 : 0;
        }
        EXPECT_EQ(repaired.code, anyLost ? 1 : 0) << repaired.out;
        interrupted += found.code != 0 ? 1 : 0;
        fs::remove_all(exam);
    }
    EXPECT_GT(interrupted, 2) << "killed too early or too late";
    EXPECT_GT(restored, 2);
}

}  // namespace
