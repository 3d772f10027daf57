// QVR_COMP_…: raw pixel files.
//
// A raw file is a headerless dump of 16-bit pixel values, little-endian: width values per row without padding, the
// bottom row of the picture first. Nothing in it tells its size; every reader is told it by its caller.
#pragma once

#include <cstdint>

#include "qvr/export.h"

/// Writes width * height pixels as a raw file, creating it or replacing its content, and makes it safe on disk.
/// @param path           UTF-8; the named file itself is written, so that a write which is cut short leaves a short
///                       file, which reading refuses
/// @param width,height   in pixels; a side of 0 gives an empty file
/// @param pixels         width * height values; only read
/// @return 1; 0 when an argument is null, the size is negative or above 2^30 - 1 pixels (an existing file then keeps its
///         bytes), or the file cannot be opened or written in full, which includes an error seen only when it is
///         synchronised or closed (a partial file then stays)
QVR_API int QVR_COMP_WriteRAWFile(const char* path, int width, int height, const std::uint16_t* pixels);

/// Reads a raw file.
/// @param pixels  out: room for width * height values. After a failure they hold what was read so far, followed by what
///                they held before
/// @return 1 when the file holds at least 2 * width * height bytes; bytes beyond are not read. 0 for a shorter file, one
///         that cannot be opened or read, a null argument or a bad size
QVR_API int QVR_COMP_ReadRAWFile(const char* path, int width, int height, std::uint16_t* pixels);
