// Raw files: exactly the values, nothing else; sizes are checked before a file is touched.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <limits>
#include <utility>

#include "qvr/image/QVR_COMP.h"
#include "support/temporaryFolder.h"

namespace {

constexpr int kMax = std::numeric_limits<int>::max();

std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

TEST(RawFile, HoldsTheValuesLittleEndianAndNothingElse) {
    const TemporaryFolder folder;
    const std::string path = folder.file("a.raw", "what was there before is longer");
    const std::vector<std::uint16_t> pixels{0x0102, 0xFFFF, 0, 16384, 7, 0x8000};
    ASSERT_EQ(QVR_COMP_WriteRAWFile(path.c_str(), 3, 2, pixels.data()), 1);
    EXPECT_EQ(contentOf(path), std::string("\x02\x01\xFF\xFF\0\0\0\x40\x07\0\0\x80", 12));

    std::vector<std::uint16_t> read(6);
    EXPECT_EQ(QVR_COMP_ReadRAWFile(path.c_str(), 3, 2, read.data()), 1);
    EXPECT_EQ(read, pixels);
}

struct Length {
    const char* name;
    std::size_t bytes;
    int result;
    std::vector<std::uint16_t> expected;  // of a 3 x 1 picture read into 9, 9, 9
};

TEST(LengthTest, DecidesTheReading) {
    const Length rows[] = {{"exact", 6, 1, {1, 2, 3, 9}},
                           {"tenMore", 16, 1, {1, 2, 3, 9}},
                           {"twoLess", 4, 0, {1, 2, 9, 9}},
                           {"empty", 0, 0, {9, 9, 9, 9}}};
    for (const Length& row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryFolder folder;
        const std::string path =
            folder.file("a.raw", std::string("\1\0\2\0\3\0\4\0\5\0\6\0\7\0\x8\0", 16).substr(0, row.bytes));
        std::vector<std::uint16_t> read(4, 9);
        EXPECT_EQ(QVR_COMP_ReadRAWFile(path.c_str(), 3, 1, read.data()), row.result);
        EXPECT_EQ(read, row.expected);
    }
}

TEST(RawFile, ASideOfZeroIsAnEmptyPicture) {
    const TemporaryFolder folder;
    const std::string path = folder.file("a.raw", "before");
    std::uint16_t pixel = 9;
    EXPECT_EQ(QVR_COMP_WriteRAWFile(path.c_str(), 0, kMax, &pixel), 1);
    EXPECT_EQ(contentOf(path), "");
    EXPECT_EQ(QVR_COMP_ReadRAWFile(path.c_str(), kMax, 0, &pixel), 1);
    EXPECT_EQ(pixel, 9);
    EXPECT_EQ(QVR_COMP_ReadRAWFile((folder / "none.raw").c_str(), 0, 0, &pixel), 0);
}

TEST(RawFile, BadArgumentsLeaveAnExistingFileAsItIs) {
    const TemporaryFolder folder;
    const std::string path = folder.file("a.raw", std::string(64, 'x'));
    std::vector<std::uint16_t> pixels(32, 9);
    for (const auto& [width, height] :
         {std::pair{-1, 4}, {4, -1}, {-2, -2}, {kMax, kMax}, {1 << 15, 1 << 15}, {65536, 65537}}) {
        EXPECT_EQ(QVR_COMP_WriteRAWFile(path.c_str(), width, height, pixels.data()), 0)
            << width << " x " << height;
        EXPECT_EQ(QVR_COMP_ReadRAWFile(path.c_str(), width, height, pixels.data()), 0)
            << width << " x " << height;
    }
    EXPECT_EQ(QVR_COMP_WriteRAWFile(path.c_str(), 4, 4, nullptr), 0);
    EXPECT_EQ(QVR_COMP_ReadRAWFile(path.c_str(), 4, 4, nullptr), 0);
    EXPECT_EQ(QVR_COMP_WriteRAWFile(nullptr, 4, 4, pixels.data()), 0);
    EXPECT_EQ(QVR_COMP_ReadRAWFile(nullptr, 4, 4, pixels.data()), 0);
    EXPECT_EQ(contentOf(path), std::string(64, 'x'));
    EXPECT_EQ(pixels, std::vector<std::uint16_t>(32, 9));
}

TEST(RawFile, WhatIsNoFileNeitherHangsNorLeaks) {
    const TemporaryFolder folder;
    const std::string pipe = folder / "pipe", socketPath = folder / "socket";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    socketPath.copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);

    const std::size_t before = openDescriptors();
    std::vector<std::uint16_t> pixels(200 * 200);  // more than a pipe holds
    for (const std::string& path : {pipe, socketPath, folder.path(), std::string(), folder / "no/such.raw"}) {
        EXPECT_EQ(QVR_COMP_ReadRAWFile(path.c_str(), 200, 200, pixels.data()), 0) << path;
        EXPECT_EQ(QVR_COMP_WriteRAWFile(path.c_str(), 200, 200, pixels.data()), 0) << path;
    }
    EXPECT_EQ(QVR_COMP_ReadRAWFile(folder.file("short.raw", "x").c_str(), 200, 200, pixels.data()), 0);
    EXPECT_EQ(openDescriptors(), before);
    ::close(listener);
}

}  // namespace
