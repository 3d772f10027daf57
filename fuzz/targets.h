// The fuzz targets. Each is a plain function, so that the kept inputs are replayed as ordinary tests.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fuzz {

int bitmap(const std::uint8_t* data, std::size_t size);
int tools(const std::uint8_t* data, std::size_t size);
int sequence(const std::uint8_t* data, std::size_t size);
int readers(const std::uint8_t* data, std::size_t size);

}  // namespace fuzz
