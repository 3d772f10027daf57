// Runs the built program and keeps what it prints.
#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/temporaryFolder.h"

using Arguments = std::vector<std::string>;

inline Arguments joined(Arguments first, const Arguments& more) {
    first.insert(first.end(), more.begin(), more.end());
    return first;
}

struct ToolResult {
    int code = -1;
    std::string out;
    std::string err;
};

struct ToolSetting {
    std::map<std::string, std::string> environment;
    std::string input = "/dev/null";  // standard input
    rlim_t fileSize = RLIM_INFINITY;  // every write beyond fails
    long killAfter = 0;               // microseconds; 0: never
};

/// The program's own files are kept apart from `arguments`' folder, so that a test can compare that one's content.
inline ToolResult runTool(const Arguments& arguments, const ToolSetting& setting = {}) {
    const TemporaryFolder folder;
    const std::string out = folder / "out";
    const std::string err = folder / "err";
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("no process");
    if (child == 0) {
        const auto redirect = [](int from, const std::string& path, int flags) {
            dup2(open(path.c_str(), flags, 0600), from);
        };
        redirect(0, setting.input, O_RDONLY);
        redirect(1, out, O_WRONLY | O_CREAT);
        redirect(2, err, O_WRONLY | O_CREAT);
        for (const auto& [name, value] : setting.environment) setenv(name.c_str(), value.c_str(), 1);
        // Files of coverage counters would be cut as well: such a run writes its own elsewhere.
        if (setting.fileSize != RLIM_INFINITY || setting.killAfter > 0) {
            setenv("GCOV_PREFIX", folder.path().c_str(), 1);
            setenv("GCOV_ERROR_FILE", "/dev/null", 1);
        }
        const rlimit limit{setting.fileSize, RLIM_INFINITY};
        setrlimit(RLIMIT_FSIZE, &limit);
        const itimerval deadline{{}, {setting.killAfter / 1000000, setting.killAfter % 1000000}};
        setitimer(ITIMER_REAL, &deadline, nullptr);
        std::vector<char*> argv = {const_cast<char*>("qvr")};
        for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        execv(QVR_PROGRAM, argv.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status), contentOf(out),
            contentOf(err)};
}
