// The folder itself is locked, so that no further file is needed and none stays behind.
#include "examLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>

#include "errors.h"

namespace qvr::tool {

ExamLock::ExamLock(const std::string& folder, Use use)
    : m_fd(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (m_fd < 0 || flock(m_fd, (use == Use::writing ? LOCK_EX : LOCK_SH) | LOCK_NB) == 0 ||
        errno != EWOULDBLOCK)
        return;
    close(m_fd);
    throw Failure(Exit::refused, folder, "refused", "it is in use by another qvr",
                  "Wait until that has ended.");
}

ExamLock::~ExamLock() {
    if (m_fd >= 0) close(m_fd);
}

}  // namespace qvr::tool
