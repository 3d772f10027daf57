// Sums of blocks of source pixels, one bitmap row at a time: the work that the display conversion and the reduced
// pictures share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "qvr/platform/detail/codePath.h"

namespace qvr {

/// The columns of a row of blocks: block i has the columns first[i] … first[i] + length - 1.
struct BlockColumns {
    std::vector<std::int32_t> first;
    std::int32_t length = 1;
    bool adjacent = false;  ///< one column each, one behind the other
    std::vector<std::uint32_t>
        masks;  ///< of 32 columns each, from column 0: which are a first one; empty unless rising

    /// Values of a row that the blocks reach.
    std::int64_t width() const;
};

/// @param first  not negative, at least one
BlockColumns blockColumns(std::span<const std::int32_t> first, std::int32_t length);

/// Rows of a source that are summed to one row of blocks.
struct BlockRows {
    const std::uint16_t* values = nullptr;  ///< the value in column 0 of the first row
    std::int64_t stride = 0;                ///< values from row to row
    std::int64_t count = 0;                 ///< at least 1
    std::int64_t ahead = 0;  ///< rows from here to the next row of blocks; 0 when there is none
};

/// Values that must be writable behind the results, whatever is written there.
inline constexpr std::size_t kBlockPadding = 64;

/// The sum of every block. Sums must fit into 32 bits.
/// @param scratch  room for columns.width() values
/// @param out      one value for each block, and the padding
void sumBlocks(const BlockRows& rows, const BlockColumns& columns, std::uint32_t* scratch, std::uint32_t* out,
               CodePath path = CodePath::fastest);

/// The first value of every block: what sumBlocks gives for blocks of one pixel, in 16 bits.
/// @param out  one value for each block, and the padding
void pickValues(const BlockRows& rows, const BlockColumns& columns, std::uint16_t* out,
                CodePath path = CodePath::fastest);

/// The sum of columns of one row, modulo 65536.
/// @param row  columns.width() values, with the padding readable behind them
/// @param out  one value for each block, and the padding
void sumColumns(const std::uint16_t* row, const BlockColumns& columns, std::uint16_t* out,
                CodePath path = CodePath::fastest);

}  // namespace qvr
