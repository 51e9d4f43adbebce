# Fails unless the dynamic symbol table of BINARY defines exactly GetPluginFactory, ModuleEntry and
# ModuleExit. Run by CTest: cmake -DNM=<nm> -DBINARY=<Quorvex.so> -P CheckExports.cmake
execute_process(COMMAND ${NM} -D --defined-only ${BINARY}
                OUTPUT_VARIABLE listing RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "nm failed on ${BINARY}")
endif()
string(REGEX MATCHALL "[0-9a-fA-F]+ [A-Za-z] [^\n]+" entries "${listing}")
set(names "")
foreach(entry IN LISTS entries)
  string(REGEX REPLACE "^[0-9a-fA-F]+ [A-Za-z] " "" name "${entry}")
  list(APPEND names "${name}")
endforeach()
list(SORT names)
if(NOT names STREQUAL "GetPluginFactory;ModuleEntry;ModuleExit")
  message(FATAL_ERROR "exported symbols are: ${names}")
endif()
