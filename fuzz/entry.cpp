// The entry of the fuzzer: QVR_FUZZ_TARGET names the target that this program is built for.
#include <sys/prctl.h>

#include "fuzz/targets.h"

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Huge pages would be cleared as a whole for every header that claims a large picture: five times fewer executions.
extern "C" int LLVMFuzzerInitialize(int*, char***) {
    prctl(PR_SET_THP_DISABLE, 1, 0, 0, 0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::QVR_FUZZ_TARGET(data, size);
}
