#include "qvr/platform/detail/processor.h"

namespace qvr {

// QVR_PROCESSOR restricts a build to an older generation, so that its path is measured and tested on a newer one.
#if defined(__x86_64__) && !defined(QVR_PROCESSOR)

bool hasAvx512() noexcept {
    static const bool has = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                            __builtin_cpu_supports("avx512vl");
    return has;
}

bool hasAvx512Permutes() noexcept {
    static const bool has =
        hasAvx512() && __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2");
    return has;
}

const char* processorLevel() noexcept {
    if (hasAvx512Permutes()) return "AVX-512 with VBMI2";
    if (hasAvx512()) return "AVX-512";
    return __builtin_cpu_supports("avx2") ? "AVX2" : "SSE2";
}

#else

bool hasAvx512() noexcept {
    return false;
}
bool hasAvx512Permutes() noexcept {
    return false;
}
const char* processorLevel() noexcept {
#if defined(QVR_PROCESSOR)
    return "restricted to " QVR_PROCESSOR;
#else
    return "plain loops";
#endif
}

#endif

}  // namespace qvr
