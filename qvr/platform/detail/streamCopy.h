// Copying rows of what is too large to be looked at again soon.
#pragma once

#include <cstddef>

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

/// Copies rows that do not overlap, past the caches where the processor can do that well: a target line that is written
/// whole need not be read first.
void streamCopy(const CopiedRows& copied) noexcept;

}  // namespace qvr
