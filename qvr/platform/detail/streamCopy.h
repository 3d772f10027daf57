// Copying rows of what is too large to be looked at again soon.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qvr {

/// Bytes of a target from which on copying past the caches pays.
inline constexpr std::size_t kStreamed = std::size_t{4} << 20;

struct CopiedRows {
    const void* source = nullptr;
    std::ptrdiff_t sourceStride = 0;  ///< bytes from row to row
    void* target = nullptr;
    std::ptrdiff_t targetStride = 0;
    std::size_t bytes = 0;  ///< of a row
    std::ptrdiff_t rows = 0;
};

/// Copies rows one after the other, past the caches where the processor can do that well: a target line that is written
/// whole need not be read first. A row must not overlap its own target; the strides may be negative.
void streamCopy(const CopiedRows& copied) noexcept;

/// Fills rows with one byte, past the caches when they are large together.
void streamFill(void* target, std::ptrdiff_t stride, std::size_t bytes, std::ptrdiff_t rows,
                std::uint8_t value) noexcept;

}  // namespace qvr
