# One switch for the whole build, so that libraries, tests and tools agree on the runtime.
if(QUORVEX_SANITIZE STREQUAL "asan")
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
elseif(QUORVEX_SANITIZE STREQUAL "tsan")
  add_compile_options(-fsanitize=thread -fno-omit-frame-pointer)
  add_link_options(-fsanitize=thread)
elseif(QUORVEX_SANITIZE STREQUAL "rtsan")
  add_compile_options(-fsanitize=realtime -fno-omit-frame-pointer)
  add_link_options(-fsanitize=realtime)
  add_compile_definitions(QUORVEX_RTSAN=1)
elseif(QUORVEX_SANITIZE STREQUAL "fuzz")
  # libFuzzer (clang): coverage for every library, AddressSanitizer + UBSan to turn faults into
  # crashes; the fuzz targets themselves link the fuzzer's main.
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer
                      -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=address,undefined)
elseif(NOT QUORVEX_SANITIZE STREQUAL "")
  message(FATAL_ERROR "QUORVEX_SANITIZE must be asan, tsan, rtsan, fuzz or empty")
endif()
# A sanitizer's report needs function names and lines, not full debug information, which takes a
# quarter of the compile time.
if(NOT QUORVEX_SANITIZE STREQUAL "")
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_compile_options(-gline-tables-only)
  else()
    add_compile_options(-g1)
  endif()
endif()
