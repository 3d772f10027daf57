// One file call or allocation that fails, and what the operation over it says: what may be repeated is repeated, and nothing
// counts as written, read, burned or turned that is not.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "qvr/qvr.h"
#include "tests/faults/faults.h"
#include "tests/support/temporaryFolder.h"

namespace {

constexpr int kWidth = 60;
constexpr int kHeight = 50;
constexpr auto kError = faults::Way::error;
constexpr auto kShort = faults::Way::shortCount;
enum Operation { write, read, copy, readIn };

struct Case {
    Operation operation;
    const char* call;
    faults::Way way;
    int error;
    bool onward;
    int result;
};

class FileCallTest : public testing::Test {
protected:
    // The next such call fails, once.
    static void fail(const char* call, int error) {
        faults::Plan plan;
        plan.target = faults::Target::file;
        plan.only = call;
        plan.error = error;
        faults::arm(plan);
    }
    int run(Operation operation) {
        switch (operation) {
            case write:
                return LIB(QVR_COMP_WriteRAWFile(m_target.c_str(), kWidth, kHeight, m_pixels.data()));
            case read:
                return LIB(QVR_COMP_ReadRAWFile(m_source.c_str(), kWidth, kHeight, m_read.data()));
            case copy:
                return LIB(CopyFileA(m_source.c_str(), m_target.c_str(), 0));
            case readIn:
                break;
        }
        return LIB(m_image.ReadInRAM());
    }

    TemporaryFolder m_folder;
    const std::vector<std::uint16_t> m_pixels = std::vector<std::uint16_t>(kWidth * kHeight, 0x1234);
    std::vector<std::uint16_t> m_read = std::vector<std::uint16_t>(kWidth * kHeight);
    const std::string m_source = m_folder.file("source.raw", m_pixels);
    const std::string m_target = m_folder / "target.raw";
    rawImage m_image;
};

class FileCallCase : public FileCallTest, public testing::WithParamInterface<Case> {};

TEST_P(FileCallCase, DecidesTheResult) {
    const Case& row = GetParam();
    QVR_ST_RAW_IMAGE record{.Height = kHeight, .Width = kWidth, .BitsStored = 14, .Mode = 1};
    record.FilePath = m_source.c_str();
    m_image.Open(&record);
    faults::Plan plan;
    plan.target = faults::Target::file;
    plan.only = row.call;
    plan.way = row.way;
    plan.error = row.error;
    plan.onward = row.onward;
    faults::arm(plan);
    const int result = run(row.operation);
    faults::disarm();

    EXPECT_GT(faults::injected(), 0) << "the call is not made";
    EXPECT_EQ(result, row.result);
    EXPECT_EQ(m_image.IsReadInRAM(), row.operation == readIn && row.result);
    EXPECT_EQ(pixelsOf(m_source), m_pixels);
    // A copy that fails leaves nothing behind; a raw file that fails stays as far as it came.
    const auto files = std::distance(std::filesystem::directory_iterator(m_folder.path()), {});
    EXPECT_TRUE(row.result || row.operation == write || files == 1) << files;
    if (!row.result) return;
    if (row.operation == read) {
        EXPECT_EQ(m_read, m_pixels);
    }
    if (row.operation == write || row.operation == copy) {
        EXPECT_EQ(pixelsOf(m_target), m_pixels);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Of, FileCallCase,
    testing::Values(
        Case{write, "open", kError, EINTR, false, 1}, Case{write, "open", kError, EACCES, false, 0},
        Case{write, "write", kError, EINTR, false, 1}, Case{write, "write", kError, EIO, false, 0},
        Case{write, "write", kShort, 0, true, 1}, Case{write, "fdatasync", kError, EINTR, false, 1},
        Case{write, "fdatasync", kError, EINVAL, false, 1}, Case{write, "fdatasync", kError, EIO, false, 0},
        Case{write, "fdatasync", kError, ENOTSUP, false, 1},
        Case{write, "fdatasync", kError, EROFS, false, 0}, Case{write, "close", kError, EINTR, false, 1},
        Case{write, "close", kError, EIO, false, 0}, Case{read, "read", kError, EINTR, false, 1},
        Case{read, "read", kError, EIO, false, 0}, Case{read, "read", kShort, 0, true, 1},
        Case{readIn, "read", kError, EIO, false, 0}, Case{copy, "fdatasync", kError, EIO, false, 0},
        Case{copy, "rename", kError, EIO, false, 0},
        // the name of the copy: a file system that does not know how to is no failure
        Case{copy, "fsync", kError, EINVAL, false, 1}, Case{copy, "fsync", kError, EINTR, false, 1}));

// What was moved is where it was and where it goes, until its new name is safe.
TEST_F(FileCallTest, ANameThatIsNotSafeLosesNothing) {
    QVR_ST_RAW_IMAGE record{
        .Height = kHeight, .Width = kWidth, .BitsStored = 14, .PixelData = m_pixels.data()};
    ASSERT_EQ(m_image.Create(&record), 1);
    ASSERT_EQ(m_image.CreateBAKFile("1.2", m_folder.path().c_str()), 1);
    const std::string rawCopy = m_image.GetBAKFilePath();
    for (const int error : {EIO, EROFS, ENOSPC}) {
        fail("fsync", error);
        EXPECT_EQ(LIB(m_image.WriteFileForPROC(m_target.c_str())), 0);
        faults::disarm();
        EXPECT_EQ(faults::injected(), 1);
        EXPECT_EQ(pixelsOf(rawCopy), m_pixels);
        EXPECT_EQ(m_image.GetBAKFilePath(), rawCopy);
    }
    EXPECT_EQ(LIB(m_image.WriteFileForPROC(m_target.c_str())), 1);
    EXPECT_EQ(pixelsOf(m_target), m_pixels);
}

TEST_F(FileCallTest, WhatIsNotSafeOnDiskStaysInMemory) {
    QVR_ST_RAW_IMAGE record{
        .Height = kHeight, .Width = kWidth, .BitsStored = 14, .PixelData = m_pixels.data()};
    for (const char* const call : {"fdatasync", "close"}) {
        ASSERT_EQ(m_image.Create(&record), 1);
        fail(call, EIO);
        EXPECT_EQ(LIB(m_image.CreateBAKFile("1.2", m_folder.path().c_str())), 0);
        faults::disarm();
        EXPECT_EQ(faults::injected(), 1);
        EXPECT_EQ(m_image.ValidateFile(), 0);
        ASSERT_EQ(m_image.CreateBAKFile("1.2", m_folder.path().c_str()), 1);
        fail(call, EIO);
        EXPECT_EQ(LIB(m_image.WriteToHDD()), 0);
        faults::disarm();
        EXPECT_EQ(faults::injected(), 1);
        EXPECT_EQ(m_image.IsReadInRAM(), 1);
    }
}

// A stick without permissions takes no change of them.
TEST_F(FileCallTest, PermissionsThatCannotBeSetAreDoneWithout) {
    for (const auto& [error, result] : {std::pair{EPERM, 1}, {ENOTSUP, 1}, {EIO, 0}}) {
        fail("chmod", error);
        EXPECT_EQ(LIB(CopyFileA(m_source.c_str(), m_target.c_str(), 0)), result);
        faults::disarm();
        EXPECT_EQ(faults::injected(), 1);
        EXPECT_EQ(std::filesystem::remove(m_target), result != 0);
    }
}

TEST_F(FileCallTest, OpeningAnotherFileTellsThatTheFirstIsNotSafe) {
    CFile file;
    ASSERT_EQ(file.Open(m_target.c_str(), CFile::modeWrite | CFile::modeCreate), 1);
    fail("fdatasync", EIO);
    EXPECT_EQ(LIB(file.Open(m_source.c_str(), CFile::modeRead)), 0);
    faults::disarm();
    EXPECT_EQ(file.IsOpen(), 0);
    EXPECT_EQ(file.Open(m_source.c_str(), CFile::modeRead), 1);
}

// A file that cannot be looked at may be the one that must stay.
TEST_F(FileCallTest, AWorkFileThatCannotBeToldFromTheImageFileStays) {
    QVR_ST_RAW_IMAGE record{.Height = kHeight, .Width = kWidth, .BitsStored = 14, .Mode = 1};
    record.FilePath = m_source.c_str();
    std::filesystem::create_hard_link(m_source, m_target);
    record.WorkFilePath = m_target.c_str();
    ASSERT_EQ(m_image.Open(&record) + m_image.ReadInRAM() + m_image.WriteToHDD(), 3);
    for (const int error : {EIO, EACCES, EOVERFLOW}) {
        fail("stat", error);
        LIB(m_image.Close());
        faults::disarm();
        EXPECT_EQ(faults::injected(), 1);
        EXPECT_EQ(pixelsOf(m_target), m_pixels);
    }
}

// Room that is asked for in advance does not change the length, so a killed write leaves a short file.
TEST(FileCall, AKilledLargeWriteLeavesAShortFile) {
    const TemporaryFolder folder;
    const std::string path = folder / "killed.raw";
    const std::vector<std::uint16_t> pixels(1500 * 1500, 7);
    const pid_t child = ::fork();
    if (child == 0) {
        faults::Plan plan;
        plan.target = faults::Target::file;
        plan.only = "write";
        plan.way = faults::Way::killBefore;
        faults::arm(plan);
        LIB(QVR_COMP_WriteRAWFile(path.c_str(), 1500, 1500, pixels.data()));
        ::_exit(0);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    EXPECT_EQ(std::filesystem::file_size(path), 0U);
}

// Calls `operation` with its first, its second, … allocation failing, until none is left to fail; `check` gets its result.
template <class Prepare, class Call, class Check>
void failEachAllocation(Prepare&& prepare, Call&& operation, Check&& check) {
    faults::Plan plan;
    for (plan.at = 1;; ++plan.at) {
        prepare();
        faults::arm(plan);
        const int result = LIB(operation());
        faults::disarm();
        check(result);
        if (faults::injected() == 0) return;
    }
}

TEST(Allocation, ALabelIsNeverEmptyNorElsewhereAndABurnedOneIsBurned) {
    constexpr RECT kView{0, 0, 600, 200};
    const std::string text(40, 'i');  // longer than a string keeps in itself
    const std::vector<std::uint16_t> plain(600 * 200, 7);
    CRasterDC surface(600, 200);
    rawImage image;
    const QVR_ST_RAW_IMAGE record{
        .Height = 200, .Width = 600, .BitsStored = 14, .PixelData = plain.data(), .Mode = 0};
    ASSERT_EQ(image.Create(&record) + image.BuildDisplayImage(&kView, &surface, 1), 2);
    failEachAllocation([&] { image.DeleteAllMark(); },
                       [&] { return image.AddMark(text.c_str(), &kView, &surface); },
                       [&](int added) {
                           CMark mark;
                           EXPECT_EQ(image.GetMarkCount(), added);
                           EXPECT_TRUE(!image.GetMark(0, mark) || mark.GetMarkText() == text);
                       });
    ASSERT_EQ(image.GetMarkCount(), 1);
    CMark before;
    image.MoveMark(0, 50, 20, &kView, &surface);
    ASSERT_TRUE(image.GetMark(0, before));
    failEachAllocation([&] { image.DeflateMark(0); },
                       [&] { return image.InflateMark(0, &kView, &surface), 1; },
                       [&](int) {
                           CMark mark;
                           EXPECT_TRUE(image.GetMark(0, mark));
                           EXPECT_EQ(mark.GetDISPLeftTop(), before.GetDISPLeftTop());
                       });
    auto burned = plain, pixels = plain;
    ASSERT_EQ(image.WriteMark(600, 200, burned.data(), 14, &surface), 1);
    ASSERT_NE(burned, plain);
    failEachAllocation([&] { pixels = plain; },
                       [&] { return image.WriteMark(600, 200, pixels.data(), 14, &surface); },
                       [&](int done) { EXPECT_TRUE(!done || pixels == burned); });
}

TEST(Allocation, ATurnHappensAsAWholeOrNotAtAll) {
    std::vector<std::uint16_t> pixels(60 * 50, 1), before;
    int width = 0, height = 0;
    failEachAllocation([&] { pixels[7] = 9, before = pixels, width = height = 0; },
                       [&] { return QVR_DISP_Rotate(60, 50, pixels.data(), width, height, 0); },
                       [&](int turned) {
                           EXPECT_EQ(width, turned ? 50 : 0);
                           EXPECT_EQ(pixels != before, turned != 0);
                       });
}

TEST(Allocation, AProtocolIsTheOldOneOrTheNewOne) {
    const std::string name(60, 'a');
    QVR_ST_PROTOCOL before, after;
    before.AnatomyName = "before";
    after.AnatomyName = name.c_str();
    const TemporaryFolder folder;
    after.ThumbFilePath = folder.file("thumb.bmp", std::string("no bitmap")).c_str();
    dcmCRSeries series;
    failEachAllocation([&] { series.CreateProtocol(&before); }, [&] { return series.CreateProtocol(&after); },
                       [&](int made) {
                           EXPECT_STREQ(series.GetProtocol()->GetAnatomyName(),
                                        made ? name.c_str() : "before");
                       });
}

TEST(Allocation, ACodeIsTheOldOneOrTheNewOne) {
    const std::string text(60, 'a');
    const char* const words = text.c_str();
    dcmWorklist worklist;
    failEachAllocation([&] { worklist.SetReqProcCode("old", "old", "old", "old"); },
                       [&] { return worklist.SetReqProcCode(words, words, words, words), 1; },
                       [&](int) {
                           const dcmCode code = worklist.GetReqProcCode();
                           const std::string value = code.GetCodeValue();
                           EXPECT_EQ(value, code.GetCodeMeaning());
                           EXPECT_EQ(value, code.GetCodingSchemeDesignator());
                           EXPECT_EQ(value, code.GetCodingSchemeVersion());
                       });
}

TEST(Allocation, AFontIsTheOneNamedOrDrawsNothing) {
    const std::string name(60, 'a');
    std::unique_ptr<CFont> font;
    failEachAllocation([&] { font.reset(); },
                       [&] {
                           font.reset(new (std::nothrow) CFont(20, 400, name.c_str(), 1));
                           return 1;
                       },
                       [&](int) { EXPECT_TRUE(!font || font->GetHeight() == 0 || name == font->GetFace()); });
}

TEST(Allocation, AnEntityTakesARecordAsAWholeAndThrowsNothing) {
    const std::string text(60, 'a');
    const std::vector<std::uint16_t> pixels(60 * 50, 7);
    CRasterDC surface(60, 50);
    constexpr RECT kView{0, 0, 60, 50};
    const TemporaryFolder folder;
    QVR_ST_IMAGE record;
    record.Width = 60, record.Height = 50, record.BitsStored = 14, record.PixelData = pixels.data();
    record.PatientOrientation = record.ImageLaterality = text.c_str();
    record.SOPInstanceUID = text.c_str();
    record.FilePath = record.BAKFilePath = record.WorkFilePath = (folder / text).c_str();
    std::unique_ptr<dcmDXImage> image;
    const auto check = [&](int) {
        EXPECT_EQ(text == image->GetPatientOrientation(), text == image->GetSOPInstanceUID());
    };
    const auto anew = [&] { image = std::make_unique<dcmDXImage>(); };
    failEachAllocation(
        anew, [&] { return image->Create(&record); }, check);
    failEachAllocation(
        anew, [&] { return image->Open(&record); }, check);
    std::unique_ptr<dcmDXSeries> series;
    failEachAllocation([&] { series = std::make_unique<dcmDXSeries>(); },
                       [&] { return series->CreateImage(&record, folder.path().c_str(), &kView, &surface); },
                       [&](int made) { EXPECT_TRUE(!made || series->IsImageInRAM()); });
    // A place in the list of what is resident comes before the image: one that is whole is counted.
    std::unique_ptr<dcmExam> exam;
    const QVR_ST_STUDY studyRecord;
    const QVR_ST_SERIES seriesRecord;
    failEachAllocation(
        [&] {
            exam = std::make_unique<dcmExam>();
            ASSERT_TRUE(exam->CreateStudy(&studyRecord, dcmStudy::DX) &&
                        exam->CreateSeries(0, &seriesRecord));
        },
        [&] { return exam->CreateImage(0, 0, &record, folder.path().c_str(), &kView, &surface) ? 1 : 0; },
        [&](int made) { EXPECT_EQ(exam->GetStudy(0)->GetSeries(0)->GetThumb() != nullptr, made != 0); });
}

TEST(Allocation, AnImageIsCopiedWholeOrNotAtAll) {
    const std::vector<std::uint16_t> pixels(60 * 50, 7);
    QVR_ST_QVR_IMAGE small{}, large{};
    small.Width = small.Height = 3;
    large.Width = 60, large.Height = 50;
    small.PixelData = large.PixelData = pixels.data();
    CQVRImage source, target;
    ASSERT_EQ(source.Create(&large), 1);
    failEachAllocation([&] { target.Create(&small); },
                       [&] { return target = source, target.GetWidth() == 60 ? 1 : 0; },
                       [&](int) { EXPECT_NE(target.GetPixelData(), nullptr); });
}

}  // namespace
