// Files over the POSIX calls: every call that may be interrupted or cut short is repeated.
#include "qvr/platform/CFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <filesystem>
#include <memory>
#include <string>

#include "qvr/platform/detail/files.h"
#include "qvr/platform/detail/guard.h"
#include "qvr/platform/detail/memory.h"

namespace {

// Linux moves at most 0x7ffff000 bytes a call; a smaller step costs nothing and keeps counts well inside ssize_t.
constexpr std::size_t kLargestStep = std::size_t{1} << 30;
constexpr std::size_t kCopyStep = std::size_t{1} << 20;

// Synchronising is not supported by pipes and some devices; that is no error of the data. EROFS is one: a file system that
// was switched to read-only after an error has not written what it was given.
bool isSyncError(int error) {
    return error != EINVAL && error != ENOTSUP;
}

}  // namespace

CException::~CException() = default;
const char* CException::what() const noexcept {
    return "framework error";
}
CFileException::~CFileException() = default;
const char* CFileException::what() const noexcept {
    return "file error";
}

CFile::~CFile() {
    qvr::guarded([this] { CFile::Close(); });
}

int CFile::Open(const char* path, unsigned mode) {
    if (!path) return 0;
    const bool closed = qvr::guarded(false, [this] { return CFile::Close(), true; });
    if (!closed) return 0;

    const unsigned access = mode & 3U;
    int flags = access == modeRead ? O_RDONLY : access == modeWrite ? O_WRONLY : O_RDWR;
    if (mode & modeCreate) flags |= O_CREAT | O_TRUNC;
    flags |= O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    int descriptor;
    do {
        descriptor = ::open(path, flags, 0666);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0) return 0;

    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || S_ISDIR(status.st_mode)) {
        ::close(descriptor);
        return 0;
    }
    m_descriptor = descriptor;
    m_written = (mode & modeCreate) != 0;
    return 1;
}

std::size_t CFile::Read(void* buffer, std::size_t count) {
    if (m_descriptor < 0) throw CFileException(EBADF);
    std::size_t done = 0;
    while (done < count) {
        const ssize_t step =
            ::read(m_descriptor, static_cast<char*>(buffer) + done, std::min(count - done, kLargestStep));
        if (step == 0) break;
        if (step > 0) done += static_cast<std::size_t>(step);
        if (step < 0 && errno != EINTR) throw CFileException(errno);
    }
    return done;
}

namespace {

// Asks for the disk blocks of a large write at once. The file's length does not change, so a write that is killed still
// leaves a short file. Where it is not supported or there is no room, nothing is lost: the write itself tells.
// A raw file of 19 or 37 MB is on disk in three quarters to nine tenths of the time, a new one as well as one that was
// truncated.
void reserve([[maybe_unused]] int descriptor, [[maybe_unused]] std::size_t count) {
#if defined(FALLOC_FL_KEEP_SIZE)
    constexpr std::size_t kLarge = std::size_t{2} << 20;
    if (count < kLarge) return;
    const off_t position = ::lseek(descriptor, 0, SEEK_CUR);
    struct stat status {};
    const bool appends = position >= 0 && ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
                         position == status.st_size;
    if (appends) ::fallocate(descriptor, FALLOC_FL_KEEP_SIZE, position, static_cast<off_t>(count));
#endif
}

}  // namespace

void CFile::Write(const void* buffer, std::size_t count) {
    if (m_descriptor < 0) throw CFileException(EBADF);
    m_written = true;
    reserve(m_descriptor, count);
    std::size_t done = 0;
    while (done < count) {
        const ssize_t step = ::write(m_descriptor, static_cast<const char*>(buffer) + done,
                                     std::min(count - done, kLargestStep));
        if (step > 0) done += static_cast<std::size_t>(step);
        if (step == 0) throw CFileException(ENOSPC);
        if (step < 0 && errno != EINTR) throw CFileException(errno);
    }
}

void CFile::Close() {
    if (m_descriptor < 0) return;
    int error = 0;
    if (m_written) {
        int result;
        do {
            result = ::fdatasync(m_descriptor);
        } while (result != 0 && errno == EINTR);
        if (result != 0 && isSyncError(errno)) error = errno;
    }
    // On Linux the descriptor is gone even when close() reports an error, EINTR included.
    if (::close(m_descriptor) != 0 && errno != EINTR && error == 0) error = errno;
    m_descriptor = -1;
    m_written = false;
    if (error != 0) throw CFileException(error);
}

namespace {

// A pattern for fnmatch(): only * and ? stand for others. "*.*" means every entry, also one without a dot, as a
// framework's find does.
std::string withoutOtherWildcards(const std::string& name) {
    if (name == "*.*") return "*";
    std::string pattern;
    for (const char character : name) {
        if (character == '[' || character == '\\') pattern += '\\';
        pattern += character;
    }
    return pattern;
}

}  // namespace

int CFileFind::FindFile(const char* pattern) {
    return qvr::guarded(0, [&] {
        if (!pattern) return 0;
        const std::string path(pattern);
        const std::size_t slash = path.rfind('/');
        const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
        struct stat status {};
        if (name.find_first_of("*?") == std::string::npos) return ::stat(pattern, &status) == 0 ? 1 : 0;

        const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
        const std::string wanted = withoutOtherWildcards(name);
        const std::unique_ptr<DIR, int (*)(DIR*)> entries(::opendir(folder.c_str()), ::closedir);
        if (!entries) return 0;
        while (const dirent* entry = ::readdir(entries.get()))
            if (::fnmatch(wanted.c_str(), entry->d_name, 0) == 0) return 1;
        return 0;
    });
}

int CreateDirectoryA(const char* path) {
    return path && ::mkdir(path, 0777) == 0 ? 1 : 0;
}

int DeleteFileA(const char* path) {
    return path && ::unlink(path) == 0 ? 1 : 0;
}

namespace {

// Copies `source` into the new file `temporary` and makes it safe on disk. Throws or returns false on failure.
bool copyInto(const char* source, const char* temporary, mode_t permissions) {
    const qvr::Bytes buffer = qvr::makeBytes(kCopyStep);
    CFile in;
    CFile out;
    if (!buffer || !in.Open(source, CFile::modeRead)) return false;
    if (!out.Open(temporary, CFile::modeWrite | CFile::modeCreate)) return false;
    while (const std::size_t count = in.Read(buffer.get(), kCopyStep)) out.Write(buffer.get(), count);
    out.Close();
    // A stick or a share without permissions refuses any change of them, and has the copy all the same.
    return ::chmod(temporary, permissions) == 0 || errno == EPERM || errno == ENOTSUP;
}

}  // namespace

int CopyFileA(const char* source, const char* target, int failIfExists) {
    return qvr::guarded(0, [&] {
        if (!source || !target) return 0;
        struct stat from {};
        if (::stat(source, &from) != 0 || !S_ISREG(from.st_mode)) return 0;
        struct stat to {};
        const bool exists = ::stat(target, &to) == 0;
        if (exists && (failIfExists || !S_ISREG(to.st_mode))) return 0;
        if (exists && from.st_dev == to.st_dev && from.st_ino == to.st_ino) return 0;

        const std::string temporary = qvr::makeNeighbour(target);
        const mode_t permissions = (exists ? to.st_mode : from.st_mode) & 07777;
        const bool copied =
            qvr::guarded(false, [&] { return copyInto(source, temporary.c_str(), permissions); });
        if (copied && qvr::replaceFile(temporary.c_str(), target)) return 1;
        ::unlink(temporary.c_str());
        return 0;
    });
}

namespace qvr {

namespace {

// Whether stat() failed since there is no such file, rather than since it could not look.
bool isMissing(int error) {
    return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG;
}

// The file that a name leads to, which need not be there: a symbolic link stays a link, and what gets replaced is its file.
std::string linkedFile(const std::string& name) {
    namespace fs = std::filesystem;
    constexpr int kMostLinks = 40;  // the system's own limit
    fs::path path(name);
    std::error_code error;
    for (int links = 0; links < kMostLinks && fs::is_symlink(path, error); ++links)
        path = path.parent_path() / fs::read_symlink(path, error);
    return path.string();
}

// Makes a folder's names safe on disk. A folder that cannot be opened or synchronised at all is no failure.
bool synchroniseFolder(const char* folder) {
    const int descriptor = ::open(folder, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return true;
    int result;
    do {
        result = ::fsync(descriptor);
    } while (result != 0 && errno == EINTR);
    const bool safe = result == 0 || !isSyncError(errno);
    ::close(descriptor);
    return safe;
}

}  // namespace

std::optional<std::uint64_t> fileLength(const char* path) noexcept {
    struct stat status {};
    if (!path || ::stat(path, &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return static_cast<std::uint64_t>(status.st_size);
}

bool fileExists(const char* path) noexcept {
    return fileLength(path).has_value();
}

bool isSameFile(const char* a, const char* b) noexcept {
    struct stat first {};
    struct stat second {};
    if (!a || !b) return false;
    if (::stat(a, &first) != 0 || ::stat(b, &second) != 0) return !isMissing(errno);
    return first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

bool ensureFolder(const char* path) noexcept {
    if (!path) return false;
    if (::mkdir(path, 0777) == 0) return true;
    struct stat status {};
    return ::stat(path, &status) == 0 && S_ISDIR(status.st_mode);
}

std::string joinPath(const std::string& folder, const std::string& name) {
    return !folder.empty() && folder.back() == '/' ? folder + name : folder + '/' + name;
}

bool isPlainName(const char* name) noexcept {
    if (!name || !*name) return false;
    for (const char* byte = name; *byte; ++byte)
        if (*byte == '/' || *byte == '\\' || static_cast<unsigned char>(*byte) < 0x20 || *byte == 0x7f)
            return false;
    return true;
}

std::string makeNeighbour(const std::string& target) {
    const std::string real = linkedFile(target);
    const std::size_t name = real.rfind('/') + 1;  // 0 without a folder
    for (std::string suffix = ".qvr-new-" + std::to_string(::getpid());; suffix += '+') {
        // The end makes way for the suffix in a name that is as long as a name can be.
        const std::string kept = real.substr(0, std::min(real.size(), name + NAME_MAX - suffix.size()));
        std::string neighbour = kept + suffix;  // returned without a copy, which could fail
        int descriptor;
        do {
            descriptor = ::open(neighbour.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        } while (descriptor < 0 && errno == EINTR);
        if (descriptor >= 0) {
            ::close(descriptor);
            return neighbour;
        }
        if (errno != EEXIST) throw CFileException(errno);
    }
}

bool replaceFile(const char* temporary, const char* target) noexcept {
    return guarded(false, [&] {
        const std::string real = linkedFile(target);
        // Before the step that cannot be taken back: what may fail for lack of memory.
        const std::size_t slash = real.rfind('/');
        const std::string folder = slash == std::string::npos ? "." : real.substr(0, slash + 1);
        struct stat status {};
        if (::stat(real.c_str(), &status) == 0) {
            if (!S_ISREG(status.st_mode)) return false;  // a folder, pipe or device is never replaced
            // Who may read it stays as it was: a private file does not become a public one.
            struct stat own {};
            const bool alike =
                ::stat(temporary, &own) == 0 && (own.st_mode & 07777) == (status.st_mode & 07777);
            if (!alike && ::chmod(temporary, status.st_mode & 07777) != 0) return false;
        } else if (!isMissing(errno)) {
            return false;
        }
        // The new name is safe only when its folder is.
        return ::rename(temporary, real.c_str()) == 0 && synchroniseFolder(folder.c_str());
    });
}

}  // namespace qvr
