// Plain streams. Compiled for several processors as the library's kernels are, so that the comparison is fair.
#include "bench/limits.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "qvr/platform/detail/clones.h"

namespace bench {

namespace {

[[noreturn]] void fail(const char* what, const char* path) {
    std::perror((std::string("qvr_bench: cannot ") + what + ' ' + path).c_str());
    std::exit(1);
}

QVR_CLONES std::uint64_t sumOfWords(const std::uint64_t* words, std::size_t count) {
    std::uint64_t a = 0, b = 0, c = 0, d = 0;
    std::size_t i = 0;
    for (; i + 64 <= count; i += 64)
        for (std::size_t k = 0; k < 16; ++k) {
            a += words[i + k];
            b += words[i + 16 + k];
            c += words[i + 32 + k];
            d += words[i + 48 + k];
        }
    for (; i < count; ++i) a += words[i];
    return a + b + c + d;
}

}  // namespace

std::uint64_t readStream(const std::uint16_t* values, std::size_t count) {
    return sumOfWords(reinterpret_cast<const std::uint64_t*>(values), count / 4);
}

std::uint64_t readStream(const std::uint8_t* bytes, std::size_t count) {
    return sumOfWords(reinterpret_cast<const std::uint64_t*>(bytes), count / 8);
}

QVR_CLONES void inPlaceStream(std::uint16_t* values, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) values[i] = static_cast<std::uint16_t>(values[i] ^ 1U);
}

QVR_CLONES void narrowStream(const std::uint16_t* __restrict values, std::size_t count,
                             std::uint8_t* __restrict bytes) {
    for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(values[i] >> 6);
}

void writeFile(const char* path, const void* bytes, std::size_t count) {
    unlink(path);
    const int file = open(path, O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (file < 0) fail("create", path);
    if (write(file, bytes, count) != static_cast<ssize_t>(count) || fdatasync(file) != 0) fail("write", path);
    if (close(file) != 0) fail("close", path);
}

void readFile(const char* path, void* bytes, std::size_t count) {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) fail("open", path);
    if (read(file, bytes, count) != static_cast<ssize_t>(count)) fail("read", path);
    close(file);
}

}  // namespace bench
