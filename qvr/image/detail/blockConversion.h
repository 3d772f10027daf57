// From 14-bit pixels to an 8-bit bitmap: each bitmap pixel is the mean of a block of source pixels, seen through a
// lookup table.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "qvr/image/detail/bitmapRows.h"
#include "qvr/image/detail/displayFit.h"
#include "qvr/image/detail/displayTable.h"
#include "qvr/platform/detail/codePath.h"

namespace qvr {

/// One side of the grid of blocks: which source columns (or rows) each bitmap column (or row) averages.
///
/// Block i starts at trunc(i / ratio) + offset and is trunc(1 / ratio) long, at least 1; both from 1 / ratio in single
/// precision. What lies outside the image is cut off; a block wholly outside is empty.
struct BlockSpans {
    std::vector<std::int32_t> first;  ///< first source index of each block
    std::vector<std::int32_t> end;    ///< first index behind it; equal to `first` for an empty block
    std::int64_t length = 1;          ///< of a block that is not cut
    int wholeBegin = 0;               ///< the blocks wholeBegin … wholeEnd - 1 are not cut
    int wholeEnd = 0;
};

/// @param blocks  number of bitmap columns or rows
/// @param size    number of source columns or rows
/// @param ratio   finite and above 0
BlockSpans blockSpans(int blocks, int size, int offset, float ratio);

/// Fills every bitmap pixel (row padding is not written): the mean of its block, cut to 16383, through `table`; 0 where
/// the block is empty.
/// @param pixels   width * height values, bottom row first
/// @param columns,rows  spans for each bitmap column and row
/// @param ramp     what the table says, as arithmetic; null when it is not linear
void convertBlocks(const std::uint16_t* pixels, int width, const BlockSpans& columns, const BlockSpans& rows,
                   const DisplayTable& table, const BitmapRows& bitmap, const GreyRamp* ramp = nullptr,
                   CodePath path = CodePath::fastest);

}  // namespace qvr
