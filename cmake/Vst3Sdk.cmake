# The VST 3 SDK as a static library `vst3sdk`, built from Debian's juce-modules-source-data copy.
# Only the interface definitions and the few public.sdk helpers the binding derives from are
# compiled; the module entry, the factory and the single-component base are our own (src/host).
set(QUORVEX_VST3_SDK_HINT
    /usr/share/juce/modules/juce_audio_processors/format_types/VST3_SDK
    CACHE PATH "Folder holding the VST 3 SDK's pluginterfaces, base and public.sdk")
find_path(QUORVEX_VST3_SDK_DIR
  NAMES pluginterfaces/vst/ivstaudioprocessor.h
  HINTS ${QUORVEX_VST3_SDK_HINT}
  NO_DEFAULT_PATH)
if(NOT QUORVEX_VST3_SDK_DIR)
  message(FATAL_ERROR "VST 3 SDK not found; install juce-modules-source-data or set QUORVEX_VST3_SDK_HINT")
endif()
message(STATUS "VST 3 SDK: ${QUORVEX_VST3_SDK_DIR}")

set(_sdk ${QUORVEX_VST3_SDK_DIR})
add_library(vst3sdk STATIC
  ${_sdk}/pluginterfaces/base/conststringtable.cpp
  ${_sdk}/pluginterfaces/base/coreiids.cpp
  ${_sdk}/pluginterfaces/base/funknown.cpp
  ${_sdk}/pluginterfaces/base/ustring.cpp
  ${_sdk}/base/source/baseiids.cpp
  ${_sdk}/base/source/fbuffer.cpp
  ${_sdk}/base/source/fdebug.cpp
  ${_sdk}/base/source/fobject.cpp
  ${_sdk}/base/source/fstreamer.cpp
  ${_sdk}/base/source/fstring.cpp
  ${_sdk}/base/source/updatehandler.cpp
  ${_sdk}/base/thread/source/flock.cpp
  ${_sdk}/public.sdk/source/common/memorystream.cpp
  ${_sdk}/public.sdk/source/common/pluginview.cpp
  ${_sdk}/public.sdk/source/vst/vstbus.cpp
  ${_sdk}/public.sdk/source/vst/vstcomponent.cpp
  ${_sdk}/public.sdk/source/vst/vstcomponentbase.cpp
  ${_sdk}/public.sdk/source/vst/vsteditcontroller.cpp
  ${_sdk}/public.sdk/source/vst/vstinitiids.cpp
  ${_sdk}/public.sdk/source/vst/vstparameters.cpp
  ${CMAKE_CURRENT_LIST_DIR}/Vst3SdkGuiIids.cpp)
# The SDK headers are third-party: SYSTEM keeps their warnings out of our -Wall -Wextra builds.
target_include_directories(vst3sdk SYSTEM PUBLIC ${_sdk})
target_compile_options(vst3sdk PRIVATE -w)
set_target_properties(vst3sdk PROPERTIES POSITION_INDEPENDENT_CODE ON)
# The SDK insists on exactly one of these; its debug checks follow our build type.
target_compile_definitions(vst3sdk PUBLIC
  $<IF:$<CONFIG:Debug>,DEVELOPMENT=1,RELEASE=1>)
find_package(Threads REQUIRED)
target_link_libraries(vst3sdk PUBLIC Threads::Threads)
unset(_sdk)
