// The entry of the fuzzer: QVR_FUZZ_TARGET names the target that this program is built for.
#include "fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    return fuzz::QVR_FUZZ_TARGET(data, size);
}
