// Ctrl-C while the program waits for its input.
#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>

#include "support/temporaryFolder.h"
#include "toolRun.h"

namespace {

TEST(Interrupt, EndsWith130AndLeavesNoFile) {
    const TemporaryFolder folder;
    const std::string target = folder / "out.png";
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        dup2(ends[0], 0);
        close(ends[0]);
        close(ends[1]);
        dup2(open("/dev/null", O_WRONLY), 2);
        execl(QVR_PROGRAM, "qvr", "render", "-", "-o", target.c_str(), static_cast<char*>(nullptr));
        _exit(127);
    }
    close(ends[0]);
    // More than a pipe holds: once it is written, the program is reading and its handler is in place.
    const std::string bytes(1 << 20, 'x');
    EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    kill(child, SIGINT);
    int status = 0;
    waitpid(child, &status, 0);
    close(ends[1]);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 130);
    EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

}  // namespace
