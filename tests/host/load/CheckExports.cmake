# Fails unless the dynamic symbol table of BINARY defines exactly GetPluginFactory, ModuleEntry and
# ModuleExit. Run by CTest: cmake -DNM=<nm> -DBINARY=<Quorvex.so> -P CheckExports.cmake
execute_process(COMMAND ${NM} -D --defined-only ${BINARY} OUTPUT_VARIABLE listing RESULT_VARIABLE failed)
string(REGEX MATCHALL "[0-9a-fA-F]+ [A-Za-z] [^\n]+" entries "${listing}")
string(REGEX REPLACE "[0-9a-fA-F]+ [A-Za-z] " "" names "${entries}")
list(SORT names)
if(failed OR NOT names STREQUAL "GetPluginFactory;ModuleEntry;ModuleExit")
  message(FATAL_ERROR "nm on ${BINARY}: ${failed}; exported symbols are: ${names}")
endif()
