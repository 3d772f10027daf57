// Files: short counts and late errors, names that are no files, copies that are whole or not there.
#include "qvr/platform/CFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <limits>

#include "qvr/platform/detail/files.h"
#include "qvr/platform/detail/memory.h"
#include "qvr/platform/detail/numbers.h"
#include "support/fileSizeLimit.h"
#include "support/temporaryFolder.h"

namespace {

namespace fs = std::filesystem;

TEST(File, OpensCreatesAndTruncatesAsToldTo) {
    const TemporaryFolder folder;
    const std::string path = folder.file("a", "content"), missing = folder / "b";
    const int next = ::dup(0);  // the descriptor that the next open file gets
    ::close(next);
    CFile file;
    EXPECT_EQ(file.Open(missing.c_str(), CFile::modeRead), 0);
    EXPECT_EQ(file.Open(missing.c_str(), CFile::modeReadWrite), 0);
    EXPECT_EQ(file.Open(nullptr, CFile::modeRead), 0);
    EXPECT_EQ(file.Open("", CFile::modeWrite | CFile::modeCreate), 0);
    EXPECT_EQ(file.Open(folder.path().c_str(), CFile::modeRead), 0);
    EXPECT_EQ(file.IsOpen(), 0);

    char text[20] = {};
    ASSERT_EQ(file.Open(path.c_str(), CFile::modeReadWrite), 1);
    EXPECT_EQ(::fcntl(next, F_GETFD), FD_CLOEXEC) << "no program that the host starts inherits it";
    EXPECT_EQ(::fcntl(next + 1, F_GETFD), -1) << "the folder is closed again";
    EXPECT_EQ(file.Read(text, 3), 3u);
    file.Write("XY", 2);
    EXPECT_EQ(file.Read(text, sizeof text), 2u);
    EXPECT_STREQ(text, "ntn");
    ASSERT_EQ(file.Open(missing.c_str(), CFile::modeWrite | CFile::modeCreate), 1) << "closes the other";
    EXPECT_EQ(::fcntl(next + 1, F_GETFD), -1);
    EXPECT_EQ(contentOf(path), "conXYnt");
    EXPECT_THROW(file.Read(text, 1), CFileException) << "open for writing only";
    file.Close();
    file.Close();
    EXPECT_THROW(file.Read(text, 1), CFileException);
    EXPECT_THROW(file.Write(text, 1), CFileException);
    ASSERT_EQ(file.Open(path.c_str(), CFile::modeReadWrite | CFile::modeCreate), 1);
    EXPECT_EQ(contentOf(path), "");
}

// In a process without a terminal, as a service is.
TEST(File, ATerminalDoesNotBecomeThatOfTheProcess) {
    const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (terminal < 0 || ::grantpt(terminal) != 0 || ::unlockpt(terminal) != 0) GTEST_SKIP() << "no terminals";
    const std::string path = ::ptsname(terminal);
    const pid_t child = ::fork();
    if (child == 0) {
        ::setsid();
        CFile file;
        const bool opened = file.Open(path.c_str(), CFile::modeRead) == 1;
        ::_exit(!opened ? 1 : ::open("/dev/tty", O_RDONLY) >= 0 ? 2 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    ::close(terminal);
}

TEST(File, AFullDiskIsAnError) {
    const TemporaryFolder folder;
    const std::string bytes(5000, 'x');
    CFile file;
    ASSERT_EQ(file.Open((folder / "a").c_str(), CFile::modeWrite | CFile::modeCreate), 1);
    {
        const FileSizeLimit limit(1000);
        EXPECT_THROW(file.Write(bytes.data(), bytes.size()), CFileException);
    }
    EXPECT_EQ(fs::file_size(folder / "a"), 1000u);
    ASSERT_EQ(file.Open("/dev/full", CFile::modeWrite), 1);
    try {
        file.Write("x", 1);
        FAIL() << "no error";
    } catch (const CFileException& error) {
        EXPECT_EQ(error.GetError(), ENOSPC);
    }
    EXPECT_NO_THROW(file.Close());
}

TEST(File, NamesAreFoundMadeAndDeletedByKind) {
    const TemporaryFolder folder;
    CFileFind find;
    EXPECT_EQ(find.FindFile((folder.file("R.1.raw", "x")).c_str()), 1);
    EXPECT_EQ(find.FindFile((folder / "R.?.raw").c_str()), 1);
    EXPECT_EQ(find.FindFile((folder / "*.bmp").c_str()), 0);
    folder.file("x[1]\\.raw", "x");
    EXPECT_EQ(find.FindFile((folder / "x[1]\\.*").c_str()), 1);
    EXPECT_EQ(find.FindFile((folder / "[x]*").c_str()), 0);
    EXPECT_EQ(find.FindFile((folder / "no/*.*").c_str()), 0);
    const std::string path = folder.file("a", "x"), made = folder / "made";
    EXPECT_EQ(CreateDirectoryA(made.c_str()), 1);
    EXPECT_EQ(CreateDirectoryA(made.c_str()), 0);
    EXPECT_EQ(CreateDirectoryA((folder / "no/such").c_str()), 0);
    EXPECT_EQ(CreateDirectoryA(nullptr), 0);
    EXPECT_EQ(DeleteFileA(made.c_str()), 0) << "a folder";
    EXPECT_EQ(DeleteFileA(path.c_str()), 1);
    EXPECT_EQ(DeleteFileA(path.c_str()), 0);
    EXPECT_EQ(DeleteFileA(nullptr), 0);
    EXPECT_TRUE(qvr::ensureFolder(made.c_str()));
    EXPECT_FALSE(qvr::ensureFolder(folder.file("b", "x").c_str()));
    EXPECT_FALSE(qvr::fileExists(made.c_str()));
}

class CopyTest : public testing::Test {
protected:
    int copy(const std::string& from, const std::string& to, int failIfExists = 0) {
        return CopyFileA((m_folder / from).c_str(), (m_folder / to).c_str(), failIfExists);
    }
    long entries() const { return std::distance(fs::directory_iterator(m_folder.path()), {}); }
    TemporaryFolder m_folder;
    const std::string m_content = std::string(3000000, 'y') + "end";
};

TEST_F(CopyTest, ReplacesTheWholeTarget) {
    m_folder.file("a", m_content);
    m_folder.file("b", "before");
    fs::permissions(m_folder / "b", fs::perms(0640));
    EXPECT_EQ(copy("a", "b", 1), 0);
    EXPECT_EQ(contentOf(m_folder / "b"), "before");
    EXPECT_EQ(copy("a", "b"), 1);
    EXPECT_EQ(contentOf(m_folder / "b"), m_content);
    EXPECT_EQ(fs::status(m_folder / "b").permissions(), fs::perms(0640));
    EXPECT_EQ(copy("a", "c", 1), 1);
    EXPECT_EQ(contentOf(m_folder / "c"), m_content);
    EXPECT_EQ(contentOf(m_folder / "a"), m_content);
    EXPECT_EQ(entries(), 3) << "nothing else is left";
}

TEST_F(CopyTest, ALinkStaysALink) {
    m_folder.file("a", "new");
    m_folder.file("b", "before");
    fs::create_symlink("b", m_folder / "link");
    EXPECT_EQ(copy("a", "link"), 1);
    EXPECT_TRUE(fs::is_symlink(m_folder / "link"));
    EXPECT_EQ(contentOf(m_folder / "b"), "new");
    // Through a chain, from elsewhere, to a file that is still to be made.
    fs::create_directory(m_folder / "folder");
    fs::create_symlink("../chained", m_folder / "folder/link");
    fs::create_symlink(m_folder / "c", m_folder / "chained");
    EXPECT_EQ(copy("a", "folder/link"), 1);
    EXPECT_TRUE(fs::is_symlink(m_folder / "folder/link") && fs::is_symlink(m_folder / "chained"));
    EXPECT_EQ(contentOf(m_folder / "c"), "new");
    fs::create_symlink("circle", m_folder / "circle");
    EXPECT_EQ(copy("a", "circle"), 0);
    EXPECT_TRUE(fs::is_symlink(m_folder / "circle"));
}

TEST_F(CopyTest, NothingThatIsThereAlreadyIsWrittenTo) {
    m_folder.file("a", m_content);
    const std::string name = qvr::makeNeighbour(m_folder / "b");
    fs::remove(name);
    fs::create_symlink(m_folder.file("other", "of somebody else"), name);
    EXPECT_EQ(copy("a", "b"), 1);
    EXPECT_EQ(contentOf(m_folder / "b"), m_content);
    EXPECT_EQ(contentOf(m_folder / "other"), "of somebody else");
    EXPECT_TRUE(fs::is_symlink(name) && !fs::is_symlink(m_folder / "b"));
    EXPECT_EQ(CopyFileA(name.c_str(), (m_folder / "b").c_str(), 0), 1) << "the source itself has that name";
    EXPECT_EQ(contentOf(m_folder / "b"), "of somebody else");
    EXPECT_EQ(entries(), 4);
}

TEST_F(CopyTest, ANameMayBeAsLongAsTheFileSystemTakes) {
    m_folder.file("a", m_content);
    for (const std::size_t length : {200u, 240u, 255u}) {
        const std::string name(length, 'n');
        EXPECT_EQ(copy("a", name), 1) << length;
        EXPECT_EQ(copy("a", name), 1) << length;
        EXPECT_EQ(contentOf(m_folder / name), m_content);
    }
    EXPECT_EQ(copy("a", std::string(256, 'n')), 0);
    EXPECT_EQ(entries(), 4);
}

TEST_F(CopyTest, FailuresLeaveTheTargetAsItWas) {
    m_folder.file("a", m_content);
    m_folder.file("b", "before");
    fs::create_directory(m_folder / "folder");
    fs::create_hard_link(m_folder / "a", m_folder / "same");
    const long before = entries();
    {
        const FileSizeLimit limit(2000000);
        EXPECT_EQ(copy("a", "b"), 0);
    }
    EXPECT_EQ(copy("none", "b"), 0);
    EXPECT_EQ(copy("folder", "b"), 0);
    ASSERT_EQ(::mkfifo((m_folder / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(copy("pipe", "b"), 0) << "it would be empty";
    EXPECT_EQ(copy("a", "pipe"), 0);
    EXPECT_FALSE(qvr::replaceFile((m_folder / "a").c_str(), (m_folder / "pipe").c_str()));
    EXPECT_TRUE(fs::is_fifo(m_folder / "pipe"));
    fs::remove(m_folder / "pipe");
    EXPECT_EQ(copy("b", "folder"), 0);
    EXPECT_EQ(copy("a", "same"), 0);
    EXPECT_EQ(copy("a", "a"), 0);
    EXPECT_EQ(copy("a", "no/such"), 0);
    EXPECT_EQ(CopyFileA(nullptr, (m_folder / "b").c_str(), 0), 0);
    EXPECT_EQ(CopyFileA((m_folder / "a").c_str(), nullptr, 0), 0);
    EXPECT_EQ(contentOf(m_folder / "b"), "before");
    EXPECT_EQ(contentOf(m_folder / "a"), m_content);
    EXPECT_EQ(entries(), before);
}

TEST(Numbers, ConvertAndMultiplyWithinTheirRange) {
    using qvr::pixelCount, qvr::toInt;
    constexpr double kInf = std::numeric_limits<double>::infinity();
    constexpr int kMin = std::numeric_limits<int>::min(), kMax = std::numeric_limits<int>::max();
    EXPECT_EQ((std::vector{toInt(-kInf), toInt(kInf), toInt(kInf - kInf), toInt(-1.9), toInt(1.9),
                           toInt(2147483646.9), toInt(2147483647.5), toInt(-2147483648.9)}),
              (std::vector{kMin, kMax, 0, -1, 1, kMax - 1, kMax, kMin}));
    EXPECT_EQ(qvr::toInt64(9.3e18), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(qvr::saturated(std::int64_t{kMin} - 1), kMin);
    EXPECT_EQ(pixelCount(32768, 32767), std::size_t{32768} * 32767);
    EXPECT_EQ(pixelCount(32768, 32768), std::nullopt);
    EXPECT_EQ(pixelCount(std::int64_t{1} << 40, std::int64_t{1} << 40), std::nullopt);
    EXPECT_EQ(pixelCount(kMax, 0), 0u);
    EXPECT_EQ(pixelCount(0, -1), std::nullopt);
    EXPECT_FALSE(qvr::makePixels(-1, 1));
    EXPECT_TRUE(qvr::makePixels(0, 5));
}

}  // namespace
