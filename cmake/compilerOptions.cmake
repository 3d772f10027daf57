# The flags that every target of this project is built with.
#
# -ffp-contract=off  a fused multiply-add would change the last bit of a table factor on some processors and
#                    with it a grey level; fast-math would break the tests for NaN.
add_library(qvr_options INTERFACE)
target_compile_options(qvr_options INTERFACE
  -ffp-contract=off -Wall -Wextra -Wconversion -Wshadow
  $<$<BOOL:${QVR_WERROR}>:-Werror>)

if(QVR_SANITIZE)
  # "undefined" of g++ does not include float-cast-overflow, so it is named by the presets.
  target_compile_options(qvr_options INTERFACE
    -fsanitize=${QVR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(qvr_options INTERFACE -fsanitize=${QVR_SANITIZE})
endif()
if(QVR_PROCESSOR)
  target_compile_definitions(qvr_options INTERFACE QVR_PROCESSOR="${QVR_PROCESSOR}")
endif()
if(QVR_COVERAGE)
  target_compile_options(qvr_options INTERFACE --coverage -O0)
  target_link_options(qvr_options INTERFACE --coverage)
endif()
if(QVR_BUILD_FUZZ)
  target_compile_options(qvr_options INTERFACE -fsanitize=fuzzer-no-link)  # the fuzzer sees which branches it reached
endif()
