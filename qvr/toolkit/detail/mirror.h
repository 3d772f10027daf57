// Mirrors and the negative of a pixel buffer, in place.
#pragma once

#include <cstddef>
#include <cstdint>

#include "qvr/platform/detail/codePath.h"

namespace qvr {

/// Row `row` and row height - 1 - row change places.
void mirrorRows(std::uint16_t* pixels, std::int64_t width, std::int64_t height,
                CodePath path = CodePath::fastest);
/// In every row, column x and column width - 1 - x change places.
void mirrorColumns(std::uint16_t* pixels, std::int64_t width, std::int64_t height,
                   CodePath path = CodePath::fastest);
/// Every value v becomes maximum - v, modulo 65536.
void invertValues(std::uint16_t* pixels, std::size_t count, std::uint16_t maximum,
                  CodePath path = CodePath::fastest);

}  // namespace qvr
