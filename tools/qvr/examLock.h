// One writer at a time in an exam folder.
#pragma once

#include <string>

namespace qvr::tool {

/// Keeps other programs from building or repairing an exam while this object lives, or this one is killed. Where the
/// folder cannot be opened, or its file system has no locks, nothing is kept.
class ExamLock {
public:
    /// @throws Failure when another program has the folder
    explicit ExamLock(const std::string& folder);
    ~ExamLock();
    ExamLock(const ExamLock&) = delete;
    ExamLock& operator=(const ExamLock&) = delete;

private:
    int m_fd;
};

}  // namespace qvr::tool
