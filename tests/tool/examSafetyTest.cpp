// What an exam must never do: mix patients, lose the exam that it replaces, or write over its own input.
#include <dcmtk/config/osconfig.h>
#include <dcmtk/dcmdata/dcdatset.h>
#include <dcmtk/dcmdata/dcdeftag.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <thread>

#include "examMaker.h"
#include "toolRun.h"

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

struct Person {
    const char* studyUid = "";
    const char* name = "";
    const char* id = "";
    const char* born = "";
    const char* sex = "";
};

// A 14-bit picture of one value, with that value as its window's centre.
std::string portrait(const std::string& path, int number, const Person& person, int side = 64) {
    DicomSpec spec;
    spec.columns = spec.rows = side;
    spec.bitsStored = 14;
    spec.highBit = 13;
    spec.uid = uidOf(number);
    spec.words.assign(static_cast<std::size_t>(side * side), static_cast<std::uint16_t>(1000 * number));
    spec.more = [&](DcmDataset& set) {
        const std::pair<DcmTagKey, const char*> texts[] = {
            {DCM_SpecificCharacterSet, "ISO_IR 192"}, {DCM_StudyInstanceUID, person.studyUid},
            {DCM_PatientName, person.name},           {DCM_PatientID, person.id},
            {DCM_PatientBirthDate, person.born},      {DCM_PatientSex, person.sex}};
        for (const auto& [tag, text] : texts)
            if (*text) set.putAndInsertString(tag, text);
    };
    return writeDicom(path, spec);
}

class ExamSafetyTest : public testing::Test {
protected:
    ExamSafetyTest() { fs::create_directory(in()); }
    std::string in(const std::string& name = "") const {
        return m_folder / "in" + (name.empty() ? "" : "/" + name);
    }
    std::string exam(const std::string& name = "") const {
        return m_folder / "exam" + (name.empty() ? "" : "/" + name);
    }
    ToolResult build(const Arguments& more = {}, const ToolSetting& setting = {}) const {
        return runTool(joined({"exam", "build", in(), "-o", exam(), "--progress", "never"}, more), setting);
    }
    Json record() const { return Json::parse(contentOf(exam("exam.json"))); }

    TemporaryFolder m_folder;
};

struct TwoPatients {
    const char* name;
    Person first, second;
    int code;
    std::size_t studies;
    const char* differs = "";
};

TEST_F(ExamSafetyTest, OneStudyHasOnePatient) {
    const TwoPatients rows[] = {
        {"same", {"1.2", "Doe^J", "1", "19500101"}, {"1.2", "Doe^J", "1", "19500101"}, 0, 1},
        {"otherId", {"1.2", "Doe^J", "1"}, {"1.2", "Doe^J", "2"}, 1, 1, "patient ID"},
        {"otherFamilyName", {"1.2", "Doe^J", "1"}, {"1.2", "Roe^J", "1"}, 1, 1, "patient name"},
        {"otherGivenName", {"1.2", "Doe^J", "1"}, {"1.2", "Doe^K", "1"}, 1, 1, "patient name"},
        {"otherBirth", {"1.2", "Doe", "1", "19500101"}, {"1.2", "Doe", "1", "19500102"}, 1, 1, "birth date"},
        {"birthMissing", {"1.2", "Doe", "1", "19500101"}, {"1.2", "Doe", "1"}, 1, 1, "birth date"},
        {"noUid", {"", "Doe^J", "1", "19500101"}, {"", "Doe^J", "1", "19500101"}, 0, 1},
        {"noUidOtherName", {"", "Doe^J"}, {"", "Roe^J"}, 0, 2},
        {"noUidOtherId", {"", "Doe^J", "1"}, {"", "Doe^J", "2"}, 0, 2},
        {"noUidOtherSex", {"", "Doe^J", "", "", "F"}, {"", "Doe^J", "", "", "M"}, 0, 2},
        {"noUidAndNoName", {"", "Doe^J"}, {}, 0, 2},
        {"otherMiddleName", {"1.2", "Doe^J^Adam"}, {"1.2", "Doe^J^Bernard"}, 1, 1, "patient name"},
        {"onlyPadding", {"1.2", "Doe ^J"}, {"1.2", "Doe^J^^^=="}, 0, 1},
        {"otherIdeographs", {"1.2", "=\xe5\xb1\xb1"}, {"1.2", "=\xe6\x9c\xa8"}, 1, 1, "patient name"},
        {"noUidOtherIdeographs", {"", "=\xe5\xb1\xb1"}, {"", "=\xe6\x9c\xa8"}, 0, 2},
        {"oneGroupMore", {"1.2", "Yama"}, {"1.2", "Yama=\xe5\xb1\xb1"}, 0, 1},
        {"oneGroupDiffers", {"1.2", "Yama=\xe5\xb1\xb1"}, {"1.2", "Yama=\xe6\x9c\xa8"}, 1, 1, "patient name"},
        {"noGroupInCommon", {"1.2", "Yama"}, {"1.2", "=\xe5\xb1\xb1"}, 1, 1, "patient name"}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        fs::remove_all(exam());
        const auto first = portrait(in("a.dcm"), 1, row.first);
        const auto second = portrait(in("b.dcm"), 2, row.second);

        const auto result = build();

        EXPECT_EQ(result.code, row.code) << result.err;
        EXPECT_NE(result.err.find(row.differs), std::string::npos) << result.err;
        if (row.code != 0) {
            EXPECT_NE(result.err.find(second + ": refused: it has the Study Instance UID of " + first),
                      std::string::npos)
                << result.err;
        }
        const Json studies = record()["studies"];
        EXPECT_EQ(studies.size(), row.studies);
        EXPECT_EQ(studies[0]["series"].size(), row.code == 0 && row.studies == 1 ? 2U : 1U);
    }
}

// The third image's name fits the first one's, which lacks what tells it from the second one's.
TEST_F(ExamSafetyTest, GroupsThatImagesAddToANameAreComparedToo) {
    portrait(in("a.dcm"), 1, {"1.2", "Yama"});
    portrait(in("b.dcm"), 2, {"1.2", "Yama=\xe5\xb1\xb1"});
    portrait(in("c.dcm"), 3, {"1.2", "Yama=\xe6\x9c\xa8"});
    EXPECT_EQ(build().code, 1);
    EXPECT_EQ(record()["studies"][0]["patient_name"], "Yama=\xe5\xb1\xb1");
    EXPECT_EQ(record()["studies"][0]["series"].size(), 2U);
}

TEST_F(ExamSafetyTest, ShowsTheFirstGroupThatANameHas) {
    const std::pair<const char*, const char*> rows[] = {
        {"Doe^J^Adam=\xe5\xb1\xb1", "Doe|J"},
        {"=\xe5\xb1\xb1^\xe5\xa4\xaa=ya^ta", "\xe5\xb1\xb1|\xe5\xa4\xaa"},
        {"^^==ya^ta^", "ya|ta"},
        {"^J", "|J"}};
    for (const auto& [name, shown] : rows) {
        fs::remove_all(exam());
        portrait(in("a.dcm"), 1, {"1.2", name});
        ASSERT_EQ(build().code, 0);
        const Json study = record()["studies"][0];
        EXPECT_EQ(study["patient_family_name"].get<std::string>() + '|' +
                      study["patient_given_name"].get<std::string>(),
                  shown);
    }
}

// Two patients' files change places all the time.
TEST_F(ExamSafetyTest, PatientAndPixelsComeFromOneReading) {
    const auto file = portrait(in("a.dcm"), 1, {"1.2.1", "Anna"}, 400);
    const auto other = portrait(m_folder / "b.dcm", 2, {"1.2.2", "Bert"}, 400);
    std::atomic<bool> done = false;
    std::thread exchange([&] {
        while (!done) renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
    });
    int built = 0;
    for (int round = 0; round < 20; ++round) {
        fs::remove_all(exam());
        if (build().code != 0) continue;
        ++built;
        const Json study = record()["studies"][0];
        const Json image = study["series"][0]["image"];
        const int number = study["patient_family_name"] == "Anna" ? 1 : 2;
        EXPECT_EQ(image["sop_instance_uid"], uidOf(number));
        EXPECT_EQ(pixelsOf(exam("Cache/R." + uidOf(number) + ".raw")).at(0), 1000 * number);
    }
    done = true;
    exchange.join();
    EXPECT_GT(built, 10);
}

// Everything below a folder, by name.
std::map<std::string, std::string> contentsOf(const std::string& folder) {
    std::map<std::string, std::string> all;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        all[entry.path().string()] = entry.is_directory() ? "folder" : contentOf(entry.path().string());
    return all;
}

TEST_F(ExamSafetyTest, ExportReplacesNoFileOfTheExam) {
    DicomSpec spec;
    writeDicom(in("a.dcm"), spec);
    spec.uid = "R." + spec.uid;  // exported as raw, its name is that of the first one's raw copy
    writeDicom(in("b.dcm"), spec);
    ASSERT_EQ(build().code, 0);
    fs::create_directory(m_folder / "out");
    fs::create_symlink("../exam/Cache/I.1.2.3.4.raw", m_folder / "out/1.2.3.4.png");
    fs::create_directory_symlink("exam/Cache", m_folder / "other");
    const auto before = contentsOf(exam());
    for (const Arguments& where : {Arguments{m_folder / "out"},
                                   {exam("Cache"), "--format", "raw"},
                                   {m_folder / "other", "--format", "dcm"}}) {
        const auto result = runTool(joined({"exam", "export", exam(), "--force", "-o"}, where));
        EXPECT_EQ(result.code, 6) << where[0];
        EXPECT_NE(result.err.find("the exam's own files"), std::string::npos) << result.err;
        EXPECT_EQ(contentsOf(exam()), before);
    }
    EXPECT_EQ(runTool({"exam", "export", exam(), "-o", exam()}).code, 0);
}

// An exam of Anna, and Bert and Cleo waiting in its place.
class ReplacedExamTest : public ExamSafetyTest {
protected:
    ReplacedExamTest() {
        portrait(in("a.dcm"), 1, {"1.2.1", "Anna"}, kSide);
        if (build().code != 0) throw std::runtime_error("no exam");
        m_before = contentsOf(exam());
        portrait(in("b.dcm"), 2, {"1.2.2", "Bert"}, kSide);
        portrait(in("a.dcm"), 1, {"1.2.3", "Cleo"}, kSide);
    }

    static constexpr int kSide = 300;
    std::map<std::string, std::string> m_before;
};

TEST_F(ReplacedExamTest, IsKeptUntilTheNewOneIsWhole) {
    for (const rlim_t room : {rlim_t{500}, rlim_t{4000}, rlim_t{100000}}) {
        const auto failed = build({"--force"}, {{}, "/dev/null", room});
        EXPECT_EQ(failed.code, 5) << failed.err;
        EXPECT_EQ(contentsOf(exam()), m_before) << room;
    }
    EXPECT_NE(build({"--force"}, {{}, "/dev/null", 100000}).err.find("The exam that was there is kept"),
              std::string::npos);
    EXPECT_EQ(build({"--force"}).code, 0);
    EXPECT_EQ(record()["studies"].size(), 2U);
    EXPECT_EQ(runTool({"cache", "check", exam()}).code, 0);
    EXPECT_EQ(contentsOf(exam()).size(), 6U);
}

TEST_F(ReplacedExamTest, IsKeptWhenItHasAnImageWhoseFileFailed) {
    const auto cleo = contentOf(in("a.dcm"));
    cut(in("a.dcm"), 500);
    const auto refused = build({"--force"});
    EXPECT_EQ(refused.code, 6);
    EXPECT_NE(refused.err.find("The exam that was there is kept"), std::string::npos) << refused.err;
    EXPECT_EQ(contentsOf(exam()), m_before);
    std::ofstream(in("a.dcm"), std::ios::binary) << cleo;
    cut(portrait(in("c.dcm"), 3, {"1.2.4", "Dora"}), 500);
    EXPECT_EQ(build({"--force"}).code, 1);
    EXPECT_EQ(record()["studies"].size(), 2U);
}

TEST_F(ExamSafetyTest, WithoutAnImageNothingStays) {
    portrait(in("a.dcm"), 1, {"1.2.1", "Anna"}, 300);
    for (const bool wasThere : {false, true}) {
        if (wasThere) fs::create_directory(exam());
        EXPECT_EQ(build({}, {{}, "/dev/null", 4000}).code, 5);
        EXPECT_EQ(fs::exists(exam()), wasThere);
        EXPECT_EQ(fs::exists(exam("exam.json")), false);
    }
    EXPECT_EQ(build().code, 0);
}

// Pictures too narrow for a thumbnail, which the library takes no image in without.
TEST_F(ExamSafetyTest, NarrowImagesDoNotStopTheOthers) {
    for (const auto& [columns, rows, code] :
         {std::tuple{220, 1, 1}, {2000, 9, 1}, {1, 300, 1}, {201, 1, 0}, {2000, 10, 0}}) {
        SCOPED_TRACE(columns);
        fs::remove_all(exam());
        DicomSpec narrow;
        narrow.columns = columns;
        narrow.rows = rows;
        narrow.words.assign(static_cast<std::size_t>(columns * rows), 1000);
        writeDicom(in("a.dcm"), narrow);
        portrait(in("b.dcm"), 2, {"1.2.2", "Bert"});
        const auto result = build();
        EXPECT_EQ(result.code, code) << result.err;
        EXPECT_EQ(result.err.find("less than 5 pixels wide or high") != std::string::npos, code == 1);
        EXPECT_EQ(runTool({"cache", "check", exam()}).out.find("2 images") != std::string::npos, code == 0);
    }
}

// Kills the program at many moments of a build: the exam file and its pixels are those of one exam.
TEST_F(ReplacedExamTest, IsOneOfTheTwoWhenTheProgramIsKilled) {
    int old = 0, young = 0;
    for (double moment = 4000; moment < 2e7 && (old < 5 || young < 2); moment *= 1.15) {
        build({"--force"}, {{}, "/dev/null", RLIM_INFINITY, static_cast<long>(moment)});
        if (fs::exists(exam(".qvr-exchange"))) runTool({"cache", "check", exam(), "--repair"});
        const auto list = runTool({"cache", "check", exam(), "--json", "--progress", "never"}).out;
        const bool first = record()["studies"][0]["patient_family_name"] == "Anna";
        const std::size_t images = first ? 1 : 2;
        std::size_t whole = 0;
        for (auto at = list.find("\"result\":\"ok\""); at != std::string::npos;
             at = list.find("\"result\":\"ok\"", at + 1))
            ++whole;
        EXPECT_EQ(whole, images) << list;
        ++(first ? old : young);
    }
    EXPECT_GE(old, 1);
    EXPECT_GE(young, 1);
}

TEST_F(ReplacedExamTest, IsNotReplacedThroughLinksNorByItsOwnFiles) {
    const auto inputs = [this] { return contentsOf(in()); };
    const auto before = inputs();
    const std::string names[] = {"exam.json", "Cache", "Cache/R.1.2.3.1.raw", "Cache/I.1.2.3.1.raw"};
    for (const auto& name : names) {
        SCOPED_TRACE(name);
        fs::remove_all(exam());
        fs::create_directories(exam(name == "Cache" ? "" : "Cache"));
        fs::create_symlink(name == "Cache" ? in() : in("a.dcm"), exam(name));
        const auto result = build({"--force"});
        EXPECT_EQ(result.code, 6) << result.err;
        EXPECT_TRUE(fs::is_symlink(exam(name)));
        EXPECT_EQ(inputs(), before);
    }
    fs::remove_all(exam());
    fs::create_directories(exam("Cache"));
    const auto own = portrait(exam("Cache/R.1.2.3.1.raw"), 1, {});
    const auto content = contentOf(own);
    const auto result = runTool({"exam", "build", exam("Cache"), "-o", exam(), "--force"});
    EXPECT_EQ(result.code, 6) << result.err;
    EXPECT_EQ(contentOf(own), content);
}

TEST_F(ReplacedExamTest, HasOneWriterAtATime) {
    const int folder = open(exam().c_str(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(flock(folder, LOCK_EX), 0);
    fs::resize_file(exam("Cache/I.1.2.3.1.raw"), 10);
    const auto before = contentsOf(exam());
    for (const Arguments& command : {Arguments{"exam", "build", in(), "-o", exam(), "--force"},
                                     {"exam", "build", in(), "-o", exam()},
                                     {"exam", "export", exam(), "-o", m_folder / "out"},
                                     {"cache", "check", exam(), "--repair"}}) {
        const auto result = runTool(command);
        EXPECT_EQ(result.code, 6);
        EXPECT_NE(result.err.find("it is in use"), std::string::npos) << result.err;
        EXPECT_EQ(contentsOf(exam()), before);
    }
    EXPECT_EQ(runTool({"cache", "check", exam()}).code, 1);
    EXPECT_FALSE(fs::exists(m_folder / "out"));
    flock(folder, LOCK_SH);  // as an export does
    EXPECT_EQ(build({"--force"}).code, 6);
    close(folder);
    EXPECT_EQ(runTool({"cache", "check", exam(), "--repair"}).code, 0);
    EXPECT_EQ(runTool({"exam", "export", exam(), "-o", m_folder / "out"}).code, 0);
}

TEST_F(ExamSafetyTest, OfTwoBuildsIntoOneNewFolderOneIsRefused) {
    fs::create_directory(m_folder / "other");
    portrait(in("a.dcm"), 1, {"1.2.1", "Anna"});
    portrait(m_folder / "other/b.dcm", 2, {"1.2.2", "Bert"});
    for (int round = 0; round < 8; ++round) {
        fs::remove_all(exam());
        ToolResult other;
        std::thread second([&] { other = runTool({"exam", "build", m_folder / "other", "-o", exam()}); });
        const auto first = build();
        second.join();
        EXPECT_EQ(std::min(first.code, other.code), 0);
        EXPECT_EQ(std::max(first.code, other.code), 6) << first.err << other.err;
        EXPECT_EQ(record()["studies"][0]["patient_family_name"], first.code == 0 ? "Anna" : "Bert");
        EXPECT_EQ(runTool({"cache", "check", exam()}).code, 0);
    }
}

}  // namespace
