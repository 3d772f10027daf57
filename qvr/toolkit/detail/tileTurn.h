// Transposition of one tile, the step that quarter turns are made of.
#pragma once

#include <cstdint>

#include "qvr/platform/detail/codePath.h"

namespace qvr {

inline constexpr std::int64_t kTile = 32;  ///< values; a row of a tile is one line of memory

/// Value x of row y goes to value y of row x, for kTile rows of kTile values. The strides may be negative. `source` and
/// `target` may overlap only as one and the same tile.
using TurnTile = void (*)(const std::uint16_t* source, std::int64_t sourceStride, std::uint16_t* target,
                          std::int64_t targetStride);

struct TileTurns {
    TurnTile turn;
    /// As turn, past the caches where the processor can do that: rows of `target` begin on a line, and nobody reads them
    /// soon.
    TurnTile turnPast;
};

/// The loops for a path: those of this processor, or the portable ones.
TileTurns tileTurns(CodePath path);

}  // namespace qvr
