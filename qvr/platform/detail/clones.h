// QVR_CLONES: a plain loop is compiled once for each of several processors, and the one that fits is taken when the
// library is loaded. Only for functions whose result does not depend on it: integer arithmetic, and single operations
// in floating point (contraction is off).
#pragma once

#if defined(__x86_64__) && defined(QVR_PROCESSOR)
#define QVR_CLONES __attribute__((target("arch=" QVR_PROCESSOR)))
#elif defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && !defined(__SANITIZE_ADDRESS__)
#define QVR_CLONES __attribute__((target_clones("arch=x86-64-v4", "arch=x86-64-v3", "default")))
#else
#define QVR_CLONES
#endif
