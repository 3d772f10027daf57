// Never overwrites without being told, and never leaves half a file.
#include "safeFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>

#include "errors.h"
#include "interrupt.h"

namespace qvr::tool {

namespace {

std::string folderOf(const std::string& path) {
    const auto slash = path.find_last_of('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// A link is followed, so that the file behind it is replaced and not the link.
std::string resolved(const std::string& target) {
    std::error_code error;
    if (!std::filesystem::is_symlink(target, error)) return target;
    const auto real = std::filesystem::weakly_canonical(target, error);
    return error ? target : real.string();
}

// Nothing, with errno, when there is no such file. "-" is standard input.
std::optional<struct stat> statusOf(const std::string& path) {
    struct stat status {};
    const int result = path == "-" ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status);
    if (result != 0) return std::nullopt;
    return status;
}

bool sameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

[[noreturn]] void exists(const std::string& target) {
    throw Failure(Exit::refused, target, "not written", "it exists already", "Use --force to replace it.");
}

// `space` is what was free before anything was written.
[[noreturn]] void notWritten(const std::string& target, int error, std::size_t size = 0, double space = 0) {
    const std::string folder = folderOf(target);
    std::string why = std::strerror(error);
    if (error == ENOSPC || error == EDQUOT) {
        why = noSpaceText(static_cast<double>(size), space);
    } else if (error == EFBIG) {
        why = fmt::format("{} is more than a file may have here", readableSize(static_cast<double>(size)));
    } else if (error == EACCES || error == EPERM || error == EROFS) {
        why = fmt::format("nothing may be written into the folder {}", folder);
    } else if (error == ENOENT) {
        why = fmt::format("there is no folder {}", folder);
    } else if (error == ENOTDIR) {
        why = fmt::format("{} is no folder", folder);
    }
    throw Failure(Exit::notWritten, target, "not written", why, "Nothing was changed.");
}

mode_t modeFor(const std::string& target) {
    if (const auto old = statusOf(target)) return old->st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

// The new file, beside its target. It is gone again unless it was renamed.
class NewFile {
public:
    NewFile(std::string target, std::span<const std::uint8_t> bytes)
        : m_target(std::move(target)),
          m_real(resolved(m_target)),
          m_path(folderOf(m_real) + "/.qvr-XXXXXX"),
          m_size(bytes.size()),
          m_space(freeSpace(folderOf(m_real))) {
        m_fd = mkostemp(m_path.data(), O_CLOEXEC);
        m_open = m_fd >= 0;
        if (!m_open) failed(errno);
        if (const int error = write(bytes)) {
            remove();
            failed(error);
        }
    }
    ~NewFile() { remove(); }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;

    void takeName(bool replace) {
        int result = replace
                         ? rename(m_path.c_str(), m_real.c_str())
                         : renameat2(AT_FDCWD, m_path.c_str(), AT_FDCWD, m_real.c_str(), RENAME_NOREPLACE);
        if (result == 0) m_open = false;
        if (result != 0 && !replace && (errno == EINVAL || errno == ENOSYS)) {
            // A file system without that rename: a second name cannot replace a file either. The first one goes with
            // this object.
            result = link(m_path.c_str(), m_real.c_str());
        }
        if (result != 0 && errno == EEXIST) exists(m_target);
        if (result != 0) failed(errno);
        syncFolder(folderOf(m_real));  // the data are safe already
    }
    /// Takes a name back that replaced no file.
    void giveNameUp() { unlink(m_real.c_str()); }

private:
    // 0, or the error.
    int write(std::span<const std::uint8_t> bytes) {
        if (fchmod(m_fd, modeFor(m_real)) != 0) return errno;
        while (!bytes.empty()) {
            const auto count = ::write(m_fd, bytes.data(), bytes.size());
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) return errno;
            bytes = bytes.subspan(static_cast<std::size_t>(count));
        }
        if (fsync(m_fd) != 0 && errno != EINVAL && errno != ENOTSUP) return errno;
        const int closed = close(m_fd);
        m_fd = -1;
        return closed == 0 ? 0 : errno;
    }
    void remove() {
        if (m_fd >= 0) close(m_fd);
        if (m_open) unlink(m_path.c_str());
        m_fd = -1;
        m_open = false;
    }
    [[noreturn]] void failed(int error) const { notWritten(m_target, error, m_size, m_space); }

    std::string m_target, m_real, m_path;
    std::size_t m_size;
    double m_space;  // free before anything was written
    int m_fd = -1;
    bool m_open = false;
};

void toStandardOutput(std::span<const std::uint8_t> bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() && std::fflush(stdout) == 0)
        return;
    throw Failure(Exit::notWritten, "standard output", "not written", std::strerror(errno));
}

}  // namespace

std::string readableSize(double bytes) {
    const char* const units[] = {"bytes", "kB", "MB", "GB"};
    int unit = 0;
    for (; bytes >= 1000 && unit < 3; ++unit) bytes /= 1000;
    return unit == 0 ? fmt::format("{:.0f} bytes", bytes) : fmt::format("{:.1f} {}", bytes, units[unit]);
}

std::string noSpaceText(double needed, double space) {
    return fmt::format("no space left (needs {}, {} free)", readableSize(needed), readableSize(space));
}

void syncFolder(const std::string& folder) {
    const int opened = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0) return;
    fsync(opened);
    close(opened);
}

double freeSpace(const std::string& folder) {
    struct statvfs space {};
    if (statvfs(folder.c_str(), &space) != 0) return 0;
    return static_cast<double>(space.f_bavail) * static_cast<double>(space.f_frsize);
}

bool isTemporaryName(const std::string& name) {
    const std::string_view own = ".qvr-", library = ".qvr-new-";
    if (name.starts_with(own) && name.size() == own.size() + 6) return true;
    const auto at = name.rfind(library);
    if (at == std::string::npos || at == 0 || at + library.size() == name.size()) return false;
    return name.find_first_not_of("0123456789", at + library.size()) == std::string::npos;
}

void checkTarget(const std::string& target, const std::string& input, bool force) {
    if (target == "-") return;
    const std::string real = resolved(target);
    if (const auto status = statusOf(real)) {
        if (S_ISDIR(status->st_mode))
            throw Failure(Exit::notWritten, target, "not written", "it is a folder", "Name a file in it.");
        if (!S_ISREG(status->st_mode))
            throw Failure(Exit::refused, target, "not written", "it is no ordinary file",
                          "Use - for standard output.");
        const auto source = statusOf(input);
        if (source && sameFile(*source, *status))
            throw Failure(Exit::refused, target, "not written", "it is the input itself",
                          "Name another file.");
        if (!force) exists(target);
        return;
    }
    if (errno != ENOENT) notWritten(target, errno);
    const auto folder = statusOf(folderOf(real));
    if (!folder) notWritten(target, errno);
    if (!S_ISDIR(folder->st_mode)) notWritten(target, ENOTDIR);
    if (access(folderOf(real).c_str(), W_OK) != 0) notWritten(target, errno);
}

void checkApart(const std::string& target, const std::string& other) {
    std::error_code error, otherError;
    const auto path = std::filesystem::weakly_canonical(target, error);
    const auto otherPath = std::filesystem::weakly_canonical(other, otherError);
    const auto status = statusOf(target), otherStatus = statusOf(other);
    if ((error || otherError || path != otherPath) &&
        (!status || !otherStatus || !sameFile(*status, *otherStatus)))
        return;
    throw Failure(Exit::refused, other, "not written", fmt::format("it is the same file as {}", target),
                  "Name another one.");
}

void writeSafely(const std::string& target, std::span<const std::uint8_t> bytes, bool force, bool finishing) {
    if (!finishing) stopIfInterrupted();
    if (target == "-") return toStandardOutput(bytes);
    NewFile file(target, bytes);
    if (!finishing) stopIfInterrupted();
    file.takeName(force);
}

void writeBothSafely(const std::string& first, std::span<const std::uint8_t> firstBytes,
                     const std::string& second, std::span<const std::uint8_t> secondBytes, bool force) {
    stopIfInterrupted();
    NewFile firstFile(first, firstBytes);
    NewFile secondFile(second, secondBytes);
    stopIfInterrupted();
    const bool replaced = statusOf(first).has_value();
    firstFile.takeName(force);
    try {
        secondFile.takeName(force);
    } catch (const Failure&) {
        if (replaced)
            throw Failure(Exit::notWritten, second, "not written",
                          "it cannot take the place of what is there", fmt::format("{} is written.", first));
        firstFile.giveNameUp();
        throw;
    }
}

}  // namespace qvr::tool
