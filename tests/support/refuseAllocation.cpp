// Every replaceable form of operator new and delete, over malloc and free.
#include "refuseAllocation.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constexpr long kNever = -1;
thread_local long allowed = kNever;  // allocations until the first failing one
thread_local bool refused = false;

void* allocate(std::size_t bytes, std::size_t alignment) noexcept {
    if (allowed == 0) {
        refused = true;
        return nullptr;
    }
    if (allowed > 0) --allowed;
    if (alignment <= alignof(std::max_align_t)) return std::malloc(bytes > 0 ? bytes : 1);
    void* memory = nullptr;
    return posix_memalign(&memory, alignment, bytes > 0 ? bytes : 1) == 0 ? memory : nullptr;
}

void* allocateOrThrow(std::size_t bytes, std::size_t alignment) {
    if (void* memory = allocate(bytes, alignment)) return memory;
    throw std::bad_alloc();
}

std::size_t size(std::align_val_t alignment) {
    return static_cast<std::size_t>(alignment);
}

}  // namespace

RefuseAllocation::RefuseAllocation(long skipped) {
    refused = false;
    allowed = skipped;
}
RefuseAllocation::~RefuseAllocation() {
    allowed = kNever;
}
bool RefuseAllocation::happened() const {
    return refused;
}

void* operator new(std::size_t n) {
    return allocateOrThrow(n, 1);
}
void* operator new[](std::size_t n) {
    return allocateOrThrow(n, 1);
}
void* operator new(std::size_t n, std::align_val_t a) {
    return allocateOrThrow(n, size(a));
}
void* operator new[](std::size_t n, std::align_val_t a) {
    return allocateOrThrow(n, size(a));
}
void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
    return allocate(n, 1);
}
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept {
    return allocate(n, 1);
}
void* operator new(std::size_t n, std::align_val_t a, const std::nothrow_t&) noexcept {
    return allocate(n, size(a));
}
void* operator new[](std::size_t n, std::align_val_t a, const std::nothrow_t&) noexcept {
    return allocate(n, size(a));
}

void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete[](void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    std::free(p);
}
void operator delete(void* p, std::align_val_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, std::align_val_t) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t, std::align_val_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept {
    std::free(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept {
    std::free(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept {
    std::free(p);
}
void operator delete(void* p, std::align_val_t, const std::nothrow_t&) noexcept {
    std::free(p);
}
void operator delete[](void* p, std::align_val_t, const std::nothrow_t&) noexcept {
    std::free(p);
}
