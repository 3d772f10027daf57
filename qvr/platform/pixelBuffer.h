// Owners of the library's large buffers.
#pragma once

#include <cstdint>
#include <memory>

namespace qvr {

/// Gives a buffer back to where the library takes its buffers from.
struct BufferDeleter {
    void operator()(void* buffer) const noexcept;
};

/// Bytes of a bitmap or a record.
using Bytes = std::unique_ptr<std::uint8_t[], BufferDeleter>;
/// Pixels of an image: width * height values without padding, row 0 being the bottom row of the picture.
using Pixels = std::unique_ptr<std::uint16_t[], BufferDeleter>;

}  // namespace qvr
