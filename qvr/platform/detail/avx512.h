// The intrinsics, for the few files that use them.
#pragma once

#if defined(__x86_64__)
#include <immintrin.h>
#if !defined(__clang__)
// g++ 12 takes the deliberately undefined operands inside its own intrinsics for a mistake of ours.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#endif
