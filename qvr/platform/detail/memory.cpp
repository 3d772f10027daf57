// Buffers that say null instead of throwing, and how the large ones are asked for.
#include "qvr/platform/detail/memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "qvr/platform/detail/numbers.h"

namespace qvr {

namespace {

// Rows of a whole vector start aligned when the width allows it.
constexpr std::align_val_t kAlignment{64};

constexpr std::size_t kLarge = std::size_t{1} << 20;     // bytes of a buffer that is worth pages of its own
constexpr std::size_t kHugePage = std::size_t{2} << 20;  // bytes

// The C library keeps freed buffers of up to 32 MiB in its heap, where the next small thing takes a place inside the gap
// that an image left and the next image no longer fits: two hundred acquisitions of 8 MiB held 1.5 GiB in the end. A
// request beyond that size is mapped, and given back as a whole when it is freed; pages of it that are never touched do
// not exist. A sanitizer looks after the ends of a buffer and has a heap of its own, so there the size is what was asked
// for.
#if defined(__SANITIZE_ADDRESS__)
#define QVR_WATCHED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QVR_WATCHED 1
#endif
#endif
#if defined(QVR_WATCHED)
constexpr std::size_t kOwnPages = 0;
#else
constexpr std::size_t kOwnPages = (std::size_t{32} << 20) + 4096;
#endif

// Fresh memory of 4 KiB pages costs more than most of what is done with it (2.2 GB/s); of huge pages it comes seven times
// as fast. Only whole ones inside the buffer are asked for, and a system without them says no, which changes nothing.
void askForHugePages(void* buffer, std::size_t bytes) {
    const auto address = reinterpret_cast<std::uintptr_t>(buffer);
    const std::uintptr_t first = (address + kHugePage - 1) / kHugePage * kHugePage;
    const std::uintptr_t end = (address + bytes) / kHugePage * kHugePage;
    if (first < end) ::madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
}

void* allocate(std::size_t bytes) noexcept {
    if (bytes < kLarge) return ::operator new(std::max<std::size_t>(bytes, 1), kAlignment, std::nothrow);
    void* const buffer = ::operator new(std::max(bytes, kOwnPages), kAlignment, std::nothrow);
    if (buffer) askForHugePages(buffer, bytes);
    return buffer;
}

}  // namespace

void BufferDeleter::operator()(void* buffer) const noexcept {
    ::operator delete(buffer, kAlignment);
}

Bytes makeBytes(std::size_t count) noexcept {
    Bytes bytes(static_cast<std::uint8_t*>(allocate(count)));
    if (bytes && count > 0) std::memset(bytes.get(), 0, count);
    return bytes;
}

Pixels makeUnsetPixels(std::int64_t width, std::int64_t height) noexcept {
    const auto count = pixelCount(width, height);
    if (!count) return nullptr;
    return Pixels(static_cast<std::uint16_t*>(allocate(*count * sizeof(std::uint16_t))));
}

Pixels makePixels(std::int64_t width, std::int64_t height) noexcept {
    Pixels pixels = makeUnsetPixels(width, height);
    if (pixels) std::memset(pixels.get(), 0, *pixelCount(width, height) * sizeof(std::uint16_t));
    return pixels;
}

Pixels copyPixels(std::int64_t width, std::int64_t height, const std::uint16_t* source) noexcept {
    if (!source) return nullptr;
    Pixels pixels = makeUnsetPixels(width, height);
    if (pixels) std::memcpy(pixels.get(), source, *pixelCount(width, height) * sizeof(std::uint16_t));
    return pixels;
}

}  // namespace qvr
