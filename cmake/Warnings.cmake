# Our own targets build clean under -Wall -Wextra; third-party code is built with its warnings off.
add_library(quorvex_warnings INTERFACE)
target_compile_options(quorvex_warnings INTERFACE -Wall -Wextra -Wno-unused-parameter)

# Every layer library: C++20, warnings, and its folder under src/ as the include root.
# A layer's headers are reached as "<layer>/Name.h" through an include root of its own that holds
# only that layer (a link to its folder), so a target sees its own layer and the layers it links,
# and an include of a higher layer fails to build.
function(quorvex_layer target)
  target_link_libraries(${target} PUBLIC quorvex_warnings)
  get_filename_component(layer ${CMAKE_CURRENT_SOURCE_DIR} NAME)
  set(root ${PROJECT_BINARY_DIR}/include-roots/${layer})
  file(MAKE_DIRECTORY ${root})
  file(CREATE_LINK ${CMAKE_CURRENT_SOURCE_DIR} ${root}/${layer} SYMBOLIC)
  target_include_directories(${target} PUBLIC ${root})
endfunction()
