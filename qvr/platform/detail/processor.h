// What this processor has. The two checks stand for the kernels that are written with intrinsics.
#pragma once

namespace qvr {

/// AVX-512 with words and bytes (F, BW, VL).
bool hasAvx512() noexcept;
/// That, and the permutations and compressions of words and bytes (VBMI, VBMI2).
bool hasAvx512Permutes() noexcept;
/// The widest that the library uses here, for a report.
const char* processorLevel() noexcept;

}  // namespace qvr
