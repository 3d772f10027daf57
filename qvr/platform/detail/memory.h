// Buffers that say null instead of throwing.
//
// All of them come from the nothrow form of `operator new`, so that a program which replaces that operator sees
// every allocation of the library.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qvr/platform/pixelBuffer.h"

namespace qvr {

/// @return `count` cleared bytes (a valid empty buffer for 0), or null when there is no memory
[[nodiscard]] Bytes makeBytes(std::size_t count) noexcept;
/// @return width * height cleared pixels, or null for a size that pixelCount() refuses or when there is no memory
[[nodiscard]] Pixels makePixels(std::int64_t width, std::int64_t height) noexcept;
/// As makePixels, but uncleared: for buffers that are filled at once.
[[nodiscard]] Pixels makeUnsetPixels(std::int64_t width, std::int64_t height) noexcept;
/// @return a copy of width * height pixels, or null as makePixels or when `source` is null
[[nodiscard]] Pixels copyPixels(std::int64_t width, std::int64_t height,
                                const std::uint16_t* source) noexcept;

}  // namespace qvr
