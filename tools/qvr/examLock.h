// One writer at a time in an exam folder, and none while its images are read.
#pragma once

#include <string>

namespace qvr::tool {

/// Keeps other programs from building or repairing an exam, until this object goes or the program is killed. Where the
/// folder cannot be opened, or its file system has no locks, nothing is kept.
class ExamLock {
public:
    enum class Use {
        reading,  ///< others may read too
        writing,
    };
    /// @throws Failure when another program has the folder
    ExamLock(const std::string& folder, Use use);
    ~ExamLock();
    ExamLock(const ExamLock&) = delete;
    ExamLock& operator=(const ExamLock&) = delete;

private:
    int m_fd;
};

}  // namespace qvr::tool
