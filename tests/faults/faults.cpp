// The replaced functions. The file calls are found by their plain, their 64-bit and their fortified names, since which
// of them a library uses depends on how it was compiled. All of them end in the system's own, found with dlsym.
#ifndef _GNU_SOURCE
#define _GNU_SOURCE
#endif
#undef _FORTIFY_SOURCE

#include "tests/faults/faults.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <malloc.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

faults::Plan plan;
std::atomic<bool> armed{false};
bool inside = false;
bool countingOnly = false;
long seenCalls = 0;
long injectedFaults = 0;
const char* hitName = "";
std::atomic<long long> outstanding{0};

// True when this call is the one to fail (or one of them).
bool isChosen() {
    ++seenCalls;
    if (countingOnly) return false;
    return plan.onward ? seenCalls >= plan.at : seenCalls == plan.at;
}

[[noreturn]] void killSelf() {
    ::kill(::getpid(), SIGKILL);
    for (;;) ::pause();
}

template <class Function>
Function real(const char* name) {
    return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

bool watching(const char* name) {
    return armed.load(std::memory_order_relaxed) && inside && plan.target == faults::Target::file &&
           (!plan.only || std::strstr(name, plan.only));
}

// Whether a call that moves no bytes fails now; errno is then set.
bool refuse(const char* name) {
    if (!watching(name)) return false;
    if (plan.way == faults::Way::shortCount || plan.way == faults::Way::killInside) return false;
    if (!isChosen()) return false;
    ++injectedFaults;
    hitName = name;
    if (plan.way == faults::Way::killBefore) killSelf();
    errno = plan.error;
    return true;
}

// read and write: how many of `count` bytes are moved. -1: the call fails with errno.
ssize_t allowed(const char* name, std::size_t count, bool writing) {
    const auto all = static_cast<ssize_t>(count);
    if (!watching(name)) return all;
    if (plan.way == faults::Way::killInside && !writing) return all;
    if (!isChosen()) return all;
    hitName = name;
    switch (plan.way) {
        case faults::Way::error:
            ++injectedFaults;
            errno = plan.error;
            return -1;
        case faults::Way::shortCount:
            if (count < 2) return all;
            ++injectedFaults;
            return static_cast<ssize_t>(count / 2);
        case faults::Way::killBefore:
            killSelf();
        case faults::Way::killInside:
            break;
    }
    return all;
}

bool killsInside(const char* name, std::size_t count, std::size_t& keep) {
    if (!watching(name) || plan.way != faults::Way::killInside || seenCalls != plan.at) return false;
    keep = plan.keep == faults::Plan::Keep::nothing ? 0
           : plan.keep == faults::Plan::Keep::half  ? count / 2
                                                    : (count > 0 ? count - 1 : 0);
    return true;
}

ssize_t readCall(const char* name, int descriptor, void* buffer, std::size_t count) {
    static const auto system = real<ssize_t (*)(int, void*, std::size_t)>("read");
    const ssize_t part = allowed(name, count, false);
    return part < 0 ? -1 : system(descriptor, buffer, static_cast<std::size_t>(part));
}

// A call that moves bytes out; `system` makes it for the first `part` of them.
template <class System>
ssize_t writeBytes(const char* name, const void* buffer, std::size_t count, System system) {
    const ssize_t part = allowed(name, count, true);
    if (part < 0) return -1;
    std::size_t keep = 0;
    if (killsInside(name, count, keep)) {
        if (keep > 0 && system(buffer, keep) < 0) std::abort();
        killSelf();
    }
    return system(buffer, static_cast<std::size_t>(part));
}

ssize_t writeCall(const char* name, int descriptor, const void* buffer, std::size_t count) {
    static const auto system = real<ssize_t (*)(int, const void*, std::size_t)>("write");
    return writeBytes(name, buffer, count,
                      [&](const void* bytes, std::size_t part) { return system(descriptor, bytes, part); });
}

int openCall(const char* name, const char* path, int flags, unsigned mode) {
    static const auto system = real<int (*)(const char*, int, ...)>("open");
    return refuse(name) ? -1 : system(path, flags, mode);
}

int openatCall(const char* name, int folder, const char* path, int flags, unsigned mode) {
    static const auto system = real<int (*)(int, const char*, int, ...)>("openat");
    return refuse(name) ? -1 : system(folder, path, flags, mode);
}

unsigned modeOf(int flags, std::va_list arguments) {
    return (flags & (O_CREAT | O_TMPFILE)) ? va_arg(arguments, unsigned) : 0U;
}

void* allocate(std::size_t bytes, std::size_t alignment) {
    if (armed.load(std::memory_order_relaxed) && inside && plan.target == faults::Target::allocation &&
        isChosen()) {
        ++injectedFaults;
        return nullptr;
    }
    void* block = nullptr;
    if (bytes == 0) bytes = 1;
    if (alignment <= alignof(std::max_align_t)) {
        block = std::malloc(bytes);
    } else if (::posix_memalign(&block, alignment, bytes) != 0) {
        block = nullptr;
    }
    if (block) outstanding += static_cast<long long>(::malloc_usable_size(block));
    return block;
}

void* allocateOrThrow(std::size_t bytes, std::size_t alignment) {
    if (void* block = allocate(bytes, alignment)) return block;
    throw std::bad_alloc();
}

void release(void* block) {
    if (!block) return;
    outstanding -= static_cast<long long>(::malloc_usable_size(block));
    std::free(block);
}

constexpr std::size_t kPlain = alignof(std::max_align_t);

}  // namespace

namespace faults {

Inside::Inside() {
    inside = true;
}
Inside::~Inside() {
    inside = false;
}

void arm(const Plan& wanted) {
    plan = wanted;
    countingOnly = false;
    seenCalls = 0;
    injectedFaults = 0;
    hitName = "";
    armed = true;
}

void armCounting(Target target) {
    Plan counting;
    counting.target = target;
    arm(counting);
    countingOnly = true;
}

void disarm() {
    armed = false;
}
long seen() {
    return seenCalls;
}
long injected() {
    return injectedFaults;
}
std::string lastHit() {
    return hitName;
}
std::size_t allocatedBytes() {
    return static_cast<std::size_t>(outstanding.load());
}

int openDescriptors() {
    int count = 0;
    DIR* const folder = ::opendir("/proc/self/fd");
    if (!folder) return -1;
    while (::readdir(folder)) ++count;
    ::closedir(folder);
    return count;
}

}  // namespace faults

void* operator new(std::size_t bytes) {
    return allocateOrThrow(bytes, kPlain);
}
void* operator new[](std::size_t bytes) {
    return allocateOrThrow(bytes, kPlain);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return allocate(bytes, kPlain);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return allocate(bytes, kPlain);
}
void* operator new(std::size_t bytes, std::align_val_t a) {
    return allocateOrThrow(bytes, static_cast<std::size_t>(a));
}
void* operator new[](std::size_t bytes, std::align_val_t a) {
    return allocateOrThrow(bytes, static_cast<std::size_t>(a));
}
void* operator new(std::size_t bytes, std::align_val_t a, const std::nothrow_t&) noexcept {
    return allocate(bytes, static_cast<std::size_t>(a));
}
void* operator new[](std::size_t bytes, std::align_val_t a, const std::nothrow_t&) noexcept {
    return allocate(bytes, static_cast<std::size_t>(a));
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    release(block);
}
void operator delete(void* block, const std::nothrow_t&) noexcept {
    release(block);
}
void operator delete[](void* block, const std::nothrow_t&) noexcept {
    release(block);
}
void operator delete(void* block, std::align_val_t) noexcept {
    release(block);
}
void operator delete[](void* block, std::align_val_t) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t, std::align_val_t) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept {
    release(block);
}
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    release(block);
}
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept {
    release(block);
}

#define QVR_OPEN(NAME)                                  \
    int NAME(const char* path, int flags, ...) {        \
        std::va_list arguments;                         \
        va_start(arguments, flags);                     \
        const unsigned mode = modeOf(flags, arguments); \
        va_end(arguments);                              \
        return openCall(#NAME, path, flags, mode);      \
    }
#define QVR_OPENAT(NAME)                                     \
    int NAME(int folder, const char* path, int flags, ...) { \
        std::va_list arguments;                              \
        va_start(arguments, flags);                          \
        const unsigned mode = modeOf(flags, arguments);      \
        va_end(arguments);                                   \
        return openatCall(#NAME, folder, path, flags, mode); \
    }
// A call without bytes, forwarded to the system's function of the same name.
#define QVR_CALL_OF(TYPE, FAILURE, NAME, PARAMETERS, ARGUMENTS)     \
    TYPE NAME PARAMETERS {                                          \
        static const auto system = real<TYPE(*) PARAMETERS>(#NAME); \
        return refuse(#NAME) ? FAILURE : system ARGUMENTS;          \
    }
#define QVR_CALL(NAME, PARAMETERS, ARGUMENTS) QVR_CALL_OF(int, -1, NAME, PARAMETERS, ARGUMENTS)

// The declarations of the system's headers carry attributes (nonnull, nothrow) that these do not repeat.
#pragma GCC diagnostic ignored "-Wattributes"
extern "C" {
QVR_OPEN(open)
QVR_OPEN(open64)
QVR_OPENAT(openat)
QVR_OPENAT(openat64)
int __open_2(const char* path, int flags) {
    return openCall("__open_2", path, flags, 0);
}
int __open64_2(const char* path, int flags) {
    return openCall("__open64_2", path, flags, 0);
}
int __openat_2(int folder, const char* path, int flags) {
    return openatCall("__openat_2", folder, path, flags, 0);
}
int __openat64_2(int folder, const char* path, int flags) {
    return openatCall("__openat64_2", folder, path, flags, 0);
}
ssize_t read(int descriptor, void* buffer, std::size_t count) {
    return readCall("read", descriptor, buffer, count);
}
ssize_t __read_chk(int descriptor, void* buffer, std::size_t count, std::size_t) {
    return readCall("__read_chk", descriptor, buffer, count);
}
ssize_t write(int descriptor, const void* buffer, std::size_t count) {
    return writeCall("write", descriptor, buffer, count);
}
ssize_t pread(int descriptor, void* buffer, std::size_t count, off_t offset) {
    static const auto system = real<ssize_t (*)(int, void*, std::size_t, off_t)>("pread");
    const ssize_t part = allowed("pread", count, false);
    return part < 0 ? -1 : system(descriptor, buffer, static_cast<std::size_t>(part), offset);
}
ssize_t pread64(int descriptor, void* buffer, std::size_t count, off64_t offset) {
    return pread(descriptor, buffer, count, offset);
}
ssize_t __pread_chk(int descriptor, void* buffer, std::size_t count, off_t offset, std::size_t) {
    return pread(descriptor, buffer, count, offset);
}
ssize_t __pread64_chk(int descriptor, void* buffer, std::size_t count, off64_t offset, std::size_t) {
    return pread(descriptor, buffer, count, offset);
}
ssize_t pwrite(int descriptor, const void* buffer, std::size_t count, off_t offset) {
    static const auto system = real<ssize_t (*)(int, const void*, std::size_t, off_t)>("pwrite");
    return writeBytes("pwrite", buffer, count, [&](const void* bytes, std::size_t part) {
        return system(descriptor, bytes, part, offset);
    });
}
ssize_t pwrite64(int descriptor, const void* buffer, std::size_t count, off64_t offset) {
    return pwrite(descriptor, buffer, count, offset);
}
int close(int descriptor) {
    static const auto system = real<int (*)(int)>("close");
    // The descriptor is gone even when closing reports an error, as on Linux.
    const bool refused = refuse("close");
    const int error = errno;
    const int result = system(descriptor);
    if (!refused) return result;
    errno = error;
    return -1;
}
QVR_CALL(fdatasync, (int descriptor), (descriptor))
QVR_CALL(fsync, (int descriptor), (descriptor))
QVR_CALL(unlink, (const char* path), (path))
QVR_CALL(rename, (const char* from, const char* to), (from, to))
QVR_CALL(mkdir, (const char* path, mode_t mode), (path, mode))
QVR_CALL(chmod, (const char* path, mode_t mode), (path, mode))
QVR_CALL(stat, (const char* path, struct stat* status), (path, status))
QVR_CALL(stat64, (const char* path, struct stat64* status), (path, status))
QVR_CALL(lstat, (const char* path, struct stat* status), (path, status))
QVR_CALL(lstat64, (const char* path, struct stat64* status), (path, status))
QVR_CALL(fstat, (int descriptor, struct stat* status), (descriptor, status))
QVR_CALL(fstat64, (int descriptor, struct stat64* status), (descriptor, status))
QVR_CALL(fallocate, (int descriptor, int mode, off_t offset, off_t length),
         (descriptor, mode, offset, length))
QVR_CALL_OF(off_t, -1, lseek, (int descriptor, off_t offset, int from), (descriptor, offset, from))
QVR_CALL_OF(off64_t, -1, lseek64, (int descriptor, off64_t offset, int from), (descriptor, offset, from))
QVR_CALL_OF(ssize_t, -1, readlink, (const char* path, char* text, std::size_t room), (path, text, room))
QVR_CALL_OF(DIR*, nullptr, opendir, (const char* path), (path))
QVR_CALL(fallocate64, (int descriptor, int mode, off64_t offset, off64_t length),
         (descriptor, mode, offset, length))
}
