# Our own targets build clean under -Wall -Wextra; third-party code is built with its warnings off.
add_library(quorvex_warnings INTERFACE)
target_compile_options(quorvex_warnings INTERFACE -Wall -Wextra -Wno-unused-parameter)

# Every layer library: C++20, warnings, and its folder under src/ as the include root.
function(quorvex_layer target)
  target_link_libraries(${target} PUBLIC quorvex_warnings)
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR}/src)
endfunction()
