// Export: what the target holds afterwards, what is gone, and what every failure leaves: old content and no stray file.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <filesystem>
#include <set>

#include "qvr/image/rawImage.h"
#include "qvr/marks/detail/burnIn.h"
#include "qvr/platform/CRasterDC.h"
#include "support/fileSizeLimit.h"
#include "support/pictures.h"
#include "support/recordingDC.h"
#include "support/temporaryFolder.h"

namespace {

namespace fs = std::filesystem;
constexpr int kWidth = 203, kHeight = 101;
constexpr RECT kRect{0, 0, kWidth, kHeight};
using Pixels = std::vector<std::uint16_t>;

class ExportTest : public testing::Test {
protected:
    // A new image with a raw copy of its pixels, and then other pixels of the same size.
    void acquire() {
        auto record = newRecord(kWidth, kHeight, m_acquired);
        ASSERT_EQ(m_image.Create(&record), 1);
        ASSERT_EQ(m_image.CreateBAKFile("1.2.3", m_folder.path().c_str()), 1);
        ASSERT_EQ(m_image.ValidateFile(), 1);
        ASSERT_EQ(m_image.Update(kWidth, kHeight, m_pixels.data(), 14, 13, 400, 300), 1);
        ASSERT_EQ(m_image.BuildDisplayImage(&kRect, nullptr, 1), 1);
        m_raw = m_image.GetBAKFilePath();
        m_own = m_image.GetFilePath();
    }
    void open(bool resident) {
        auto record = newRecord(kWidth, kHeight, m_pixels);
        record.Mode = 1;
        record.PixelData = nullptr;
        record.FilePath = (m_own = m_folder.file("image.raw", m_acquired)).c_str();
        record.BAKFilePath = (m_raw = m_folder.file("copy.raw", m_acquired)).c_str();
        record.WorkFilePath = (m_folder / "work.raw").c_str();
        ASSERT_EQ(m_image.Open(&record), 1);
        ASSERT_EQ(m_image.ReadInRAM(), 1);
        ASSERT_EQ(m_image.Update(kWidth, kHeight, m_pixels.data(), 14, 13, 400, 300), 1);
        ASSERT_TRUE(resident || m_image.WriteToHDD() == 1);
    }
    void addMarks() {
        ASSERT_EQ(m_image.AddMark("L", &kRect, &m_surface) + m_image.AddMark("R", &kRect, &m_surface), 2);
    }
    // The pixels with both marks burned in, one by one.
    Pixels marked() {
        Pixels pixels = m_pixels;
        for (int i = 0; i < m_image.GetMarkCount(); ++i) {
            CMark mark;
            m_image.GetMark(i, mark);
            EXPECT_EQ(
                qvr::BurnInMark(kWidth, kHeight, pixels.data(), 14, &mark, m_image.GetYRatio(), &m_surface),
                1);
        }
        return pixels;
    }
    // Every file of the folder, by name, so that a stray one is seen.
    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& entry : fs::recursive_directory_iterator(m_folder.path()))
            if (!entry.is_directory())
                names.insert(entry.path().lexically_relative(m_folder.path()).string());
        return names;
    }
    testing::AssertionResult ownPixelsStay() {
        return samePicture(m_pixels, m_image.GetPixelData(), kWidth, kHeight);
    }
    using Names = std::set<std::string>;

    TemporaryFolder m_folder;
    CRasterDC m_surface{kWidth, kHeight};
    const Pixels m_acquired = ramp(kWidth, kHeight), m_pixels = ramp(kWidth, kHeight, 4321);
    rawImage m_image;
    std::string m_raw, m_own;
};

const std::string kRaw = "Cache/R.1.2.3.raw", kOwn = "Cache/I.1.2.3.raw";

// --- a new image --------------------------------------------------------------------------------------------------

TEST_F(ExportTest, MarksAreBurnedIntoTheFileOnly) {
    for (const bool resident : {true, false}) {
        acquire();
        m_image.DeleteAllMark();
        addMarks();
        ASSERT_TRUE(resident || m_image.WriteToHDD() == 1);
        const Pixels expected = marked();
        ASSERT_GT(std::count(expected.begin(), expected.end(), 16383), 200);
        const std::string target = m_folder / "out.raw";
        EXPECT_EQ(m_image.WriteFileForPRES(target.c_str(), &m_surface), 1);
        EXPECT_EQ(pixelsOf(target), expected);
        EXPECT_EQ(m_image.GetFilePath(), target);
        EXPECT_EQ(files(), (Names{kRaw, "out.raw"}));  // the image file is gone, where there was one
        EXPECT_EQ(m_image.GetMarkCount(), 2);
        EXPECT_TRUE(!resident || ownPixelsStay());
        // A second export, to the image's own file, which has the marks burned in when it was not resident.
        EXPECT_EQ(m_image.WriteFileForPRES(target.c_str(), &m_surface), 1);
        EXPECT_EQ(pixelsOf(target), expected);
        EXPECT_EQ(files(), (Names{kRaw, "out.raw"}));
    }
}

TEST_F(ExportTest, TheRawCopyMovesToItsTarget) {
    acquire();
    const std::string first = m_folder.file("first.raw", std::string("older")),
                      second = m_folder / "second.raw";
    EXPECT_EQ(m_image.WriteFileForPROC(first.c_str()), 1);
    EXPECT_EQ(pixelsOf(first), m_acquired);
    EXPECT_EQ(m_image.GetBAKFilePath(), first);
    EXPECT_EQ(m_image.WriteFileForPROC(second.c_str()), 1);
    EXPECT_EQ(pixelsOf(second), m_acquired);
    EXPECT_EQ(m_image.GetBAKFilePath(), second);
    EXPECT_EQ(files(), Names{"second.raw"});
    EXPECT_EQ(m_image.ValidateFile(), 1);
    fs::remove(second);
    EXPECT_EQ(m_image.WriteFileForPROC(first.c_str()), 0);
    EXPECT_EQ(m_image.GetBAKFilePath(), second);
    EXPECT_EQ(files(), Names{});
}

// How a target is spelled that means a file which is there already.
class SpellingTest : public ExportTest, public testing::WithParamInterface<const char*> {
protected:
    std::string spelled(const std::string& file) const {
        const std::string how = GetParam(), link = m_folder / "link.raw";
        if (how == "same") return file;
        if (how == "otherSpelling")
            return m_folder / ("Cache/../Cache/./" + fs::path(file).filename().string());
        how == "symbolicLink" ? fs::create_symlink(file, link) : fs::create_hard_link(file, link);
        return link;
    }
};
INSTANTIATE_TEST_SUITE_P(Targets, SpellingTest,
                         testing::Values("same", "otherSpelling", "symbolicLink", "hardLink"),
                         [](const auto& row) { return std::string(row.param); });

TEST_P(SpellingTest, TheRawCopyIsNoTarget) {
    acquire();
    const std::string target = spelled(m_raw);
    const Names before = files();
    EXPECT_EQ(m_image.WriteFileForPROC(target.c_str()), 0);
    EXPECT_EQ(m_image.WriteFileForPRES(target.c_str(), &m_surface), 0);
    EXPECT_EQ(pixelsOf(m_raw), m_acquired);
    EXPECT_EQ(files(), before);
    EXPECT_EQ(m_image.GetBAKFilePath(), m_raw);
    EXPECT_EQ(m_image.GetFilePath(), m_own);
}

TEST_P(SpellingTest, TheImageFileMayBeReplaced) {
    acquire();
    addMarks();
    ASSERT_EQ(m_image.WriteToHDD(), 1);
    const auto secret = fs::perms::owner_read | fs::perms::owner_write;
    fs::permissions(m_own, secret);
    const std::string target = spelled(m_own);
    EXPECT_EQ(m_image.WriteFileForPROC(target.c_str()), 0);  // the current pixels would be lost
    EXPECT_EQ(pixelsOf(m_own), m_pixels);
    const Pixels expected = marked();
    EXPECT_EQ(m_image.WriteFileForPRES(target.c_str(), &m_surface), 1);
    EXPECT_EQ(pixelsOf(target), expected);
    EXPECT_EQ(fs::status(target).permissions(), secret);
    EXPECT_EQ(m_image.GetFilePath(), target);
    const std::string name = GetParam();
    EXPECT_EQ(fs::is_symlink(target), name == "symbolicLink");  // a link stays one
    Names left{kRaw, fs::path(target).lexically_normal().lexically_relative(m_folder.path()).string()};
    if (name == "symbolicLink") left.insert(kOwn);
    EXPECT_EQ(files(), left);
    EXPECT_EQ(m_image.ReadInRAM(), 1);
    EXPECT_TRUE(samePicture(expected, m_image.GetPixelData(), kWidth, kHeight));
}

TEST_F(ExportTest, AnImageFileThatIsTheRawCopyIsNotDeleted) {
    fs::create_directory(m_folder / "Cache");
    fs::create_symlink("I.1.2.3.raw", m_folder / kRaw);
    acquire();
    EXPECT_EQ(m_image.WriteFileForPRES((m_folder / "out.raw").c_str(), &m_surface), 1);
    EXPECT_EQ(pixelsOf(m_raw), m_acquired);
    EXPECT_EQ(pixelsOf(m_folder / "out.raw"), m_pixels);
}

// A record may name one file twice: it is neither deleted as the raw copy nor written over as the image file.
TEST_F(ExportTest, ARawCopyThatIsTheImageFileStays) {
    fs::create_directory(m_folder / "Cache");
    fs::create_symlink("R.1.2.3.raw", m_folder / kOwn);
    acquire();
    EXPECT_EQ(m_image.WriteFileForPROC((m_folder / "out.raw").c_str()), 0);
    EXPECT_EQ(m_image.RemoveBAKFile(), 0);
    EXPECT_EQ(pixelsOf(m_raw), m_acquired);
    fs::remove(m_folder / kOwn);

    open(false);
    fs::remove(m_folder / "work.raw");
    fs::create_hard_link(m_raw, m_folder / "work.raw");
    m_folder.file("image.raw", m_pixels);
    EXPECT_EQ(m_image.WriteFileForPRES(nullptr, nullptr), 0);
    EXPECT_EQ(pixelsOf(m_own), m_pixels);
}

TEST_F(ExportTest, BadTargetsChangeNothing) {
    acquire();
    addMarks();
    const std::string folder = m_folder / "folder", pipe = m_folder / "pipe";
    fs::create_directory(folder);
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::string missing = m_folder / "no/such/out.raw", below = m_raw + "/out.raw";
    const Names before = files();
    for (const char* target : {static_cast<const char*>(nullptr), "", folder.c_str(), pipe.c_str(),
                               missing.c_str(), below.c_str()}) {
        EXPECT_EQ(m_image.WriteFileForPRES(target, &m_surface), 0) << (target ? target : "null");
        EXPECT_EQ(m_image.WriteFileForPROC(target), 0) << (target ? target : "null");
    }
    EXPECT_EQ(files(), before);
    EXPECT_TRUE(fs::is_fifo(pipe));
    EXPECT_EQ(pixelsOf(m_raw), m_acquired);
    EXPECT_EQ(m_image.GetFilePath(), m_own);
    EXPECT_TRUE(ownPixelsStay());
}

TEST_F(ExportTest, AFullDiskLeavesTheOldContent) {
    acquire();
    addMarks();
    const std::string target = m_folder.file("out.raw", std::string("older"));
    const Names before = files();
    for (const std::size_t bytes : {0u, 1000u, kWidth * kHeight * 2u - 1}) {
        const FileSizeLimit limit(bytes);
        EXPECT_EQ(m_image.WriteFileForPRES(target.c_str(), &m_surface), 0);
        EXPECT_EQ(m_image.WriteFileForPROC(target.c_str()), 0);
    }
    EXPECT_EQ(contentOf(target), "older");
    EXPECT_EQ(files(), before);
    EXPECT_EQ(m_image.GetFilePath(), m_own);
    EXPECT_EQ(m_image.GetBAKFilePath(), m_raw);
    EXPECT_EQ(m_image.WriteFileForPRES(target.c_str(), &m_surface), 1);
}

TEST_F(ExportTest, AMarkThatCannotBeBurnedWritesNothing) {
    acquire();
    addMarks();
    const std::string target = m_folder.file("out.raw", std::string("older"));
    const Names before = files();
    const auto refused = [&](CDC* surface) {
        EXPECT_EQ(m_image.WriteFileForPRES(target.c_str(), surface), 0);
        EXPECT_EQ(contentOf(target), "older");
        EXPECT_EQ(files(), before);
    };
    refused(nullptr);
    for (const float ratio : {0.0f, NAN, -1.0f}) m_image.SetYRatio(ratio), refused(&m_surface);
    m_image.SetYRatio(1);
    RecordingDC throwing;
    throwing.onCall = [] { throw std::runtime_error("surface"); };
    refused(&throwing);
    ASSERT_EQ(m_image.Update(kWidth, kHeight, m_pixels.data(), 13, 12, 400, 300), 1);
    refused(&m_surface);
    m_image.DeleteAllMark();  // without marks every depth goes
    EXPECT_EQ(m_image.WriteFileForPRES(target.c_str(), nullptr), 1);
    EXPECT_EQ(pixelsOf(target), m_pixels);
}

TEST_F(ExportTest, ASurfaceMayChangeTheImageMeanwhile) {
    acquire();
    addMarks();
    const Pixels expected = marked();
    RecordingDC changing;
    changing.onCall = [&] {
        const Pixels larger = ramp(2 * kWidth, 3 * kHeight);
        const float ratio = m_image.GetYRatio();
        m_image.Update(2 * kWidth, 3 * kHeight, larger.data(), 14, 13, 400, 300);
        m_image.SetYRatio(ratio);
    };
    const std::string target = m_folder / "out.raw";
    EXPECT_EQ(m_image.WriteFileForPRES(target.c_str(), &changing), 1);
    EXPECT_EQ(pixelsOf(target), expected);
}

// What the callback opens or exports is not what the export took its pixels from.
TEST_F(ExportTest, AnImageThatIsReplacedMeanwhileIsNotExported) {
    RecordingDC surface;
    const std::string stored = m_folder.file("stored.raw", m_pixels), inner = m_folder / "inner.raw";
    auto record = newRecord(kWidth, kHeight, m_pixels);
    record.Mode = 1;
    record.FilePath = stored.c_str();
    const std::function<void()> callbacks[] = {
        [&] { m_image.Open(&record); },
        [&] { EXPECT_EQ(m_image.WriteFileForPRES(inner.c_str(), &m_surface), 1); }};
    for (const auto& callback : callbacks) {
        acquire();
        m_image.DeleteAllMark();
        addMarks();
        bool called = false;
        surface.onCall = [&] {
            if (!std::exchange(called, true)) callback();
        };
        EXPECT_EQ(m_image.WriteFileForPRES((m_folder / "outer.raw").c_str(), &surface), 0);
        EXPECT_FALSE(fs::exists(m_folder / "outer.raw"));
        EXPECT_TRUE(fs::exists(m_image.GetFilePath()));
    }
    EXPECT_EQ(m_image.GetFilePath(), inner);
}

TEST_F(ExportTest, UnreadablePixelsWriteNothing) {
    acquire();
    ASSERT_EQ(m_image.WriteToHDD(), 1);
    fs::resize_file(m_own, kWidth * kHeight * 2 - 1);
    const Names before = files();
    EXPECT_EQ(m_image.WriteFileForPRES((m_folder / "out.raw").c_str(), &m_surface), 0);
    EXPECT_EQ(files(), before);
    EXPECT_EQ(m_image.GetFilePath(), m_own);
}

// --- an opened image ----------------------------------------------------------------------------------------------

TEST_F(ExportTest, AnOpenedImageCommitsItsPixelsWithoutMarksOrLeavesItsFile) {
    for (const bool resident : {true, false}) {
        fs::remove(m_folder / "work.raw");
        open(resident);
        m_image.DeleteAllMark();
        if (resident) {
            ASSERT_EQ(m_image.BuildDisplayImage(&kRect, nullptr, 1), 1);
            addMarks();
        }
        const Names before = files();
        {
            const FileSizeLimit limit(1000);
            EXPECT_EQ(m_image.WriteFileForPRES(nullptr, nullptr), 0);
        }
        EXPECT_EQ(m_image.WriteFileForPROC((m_folder / "out.raw").c_str()), 0);
        EXPECT_EQ(pixelsOf(m_own), m_acquired);
        EXPECT_EQ(files(), before);
        EXPECT_EQ(m_image.WriteFileForPRES(nullptr, nullptr), 1);
        EXPECT_EQ(pixelsOf(m_own), m_pixels);
        EXPECT_EQ(pixelsOf(m_raw), m_acquired);
        EXPECT_EQ(m_image.GetFilePath(), m_own);
        EXPECT_EQ(files(), before);  // the work file stays where there is one
    }
    fs::resize_file(m_folder / "work.raw", kWidth * kHeight * 2 - 1);
    EXPECT_EQ(m_image.WriteFileForPRES(nullptr, nullptr), 0) << "what a killed write left";
    fs::remove(m_folder / "work.raw");
    EXPECT_EQ(m_image.WriteFileForPRES(nullptr, nullptr), 0) << "nothing to commit";
    EXPECT_EQ(pixelsOf(m_own), m_pixels);
}

}  // namespace
