// limits: the plainest loops over memory and file, as fast as this machine runs them on one thread.
#pragma once

#include <cstddef>
#include <cstdint>

namespace bench {

/// Reads `count` values. The result keeps the loop from being left out.
std::uint64_t readStream(const std::uint16_t* values, std::size_t count);
/// As readStream, of bytes.
std::uint64_t readStream(const std::uint8_t* bytes, std::size_t count);
/// Reads and writes `count` values in place.
void inPlaceStream(std::uint16_t* values, std::size_t count);
/// Reads values and writes a byte for each.
void narrowStream(const std::uint16_t* values, std::size_t count, std::uint8_t* bytes);
/// Writes a new file and synchronises it. Ends the program when that fails.
void writeFile(const char* path, const void* bytes, std::size_t count);
/// Reads a whole file. Ends the program when that fails.
void readFile(const char* path, void* bytes, std::size_t count);

}  // namespace bench
