// Block sums for processors with AVX-512 and its compress instructions (VBMI2). Only blockSums.cpp calls these.
#pragma once

#include "qvr/image/detail/blockSums.h"

namespace qvr::avx512 {

/// Beyond, most of what is added would be thrown away.
inline constexpr std::int32_t kLongestBlock = 8;

// To be called only when hasAvx512Permutes(), with columns that have masks and are not longer than kLongestBlock.

void sumBlocks(const BlockRows& rows, const BlockColumns& columns, std::uint32_t* out);
void pickValues(const BlockRows& rows, const BlockColumns& columns, std::uint16_t* out);
void sumColumns(const std::uint16_t* row, const BlockColumns& columns, std::uint16_t* out);

}  // namespace qvr::avx512
