# Checks the built library as the dynamic linker sees it: run with -DLIBRARY, -DMAP, -DNM and -DREADELF.
cmake_minimum_required(VERSION 3.25)

file(STRINGS ${MAP} functions REGEX "^ +[A-Za-z][A-Za-z_0-9]+\\*?;$") # all but the patterns for KOV::SDK
list(TRANSFORM functions REPLACE "[ *;]" "")

function(run output)
  execute_process(COMMAND ${ARGN} OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
  set(${output} "${text}" PARENT_SCOPE)
endfunction()

run(symbols ${NM} -DC --defined-only ${LIBRARY})
string(REGEX MATCHALL "[^\n]+" lines "${symbols}")
foreach(line IN LISTS lines)
  string(REGEX REPLACE "^[0-9a-f]* *([A-Za-z]) " "" symbol "${line}")
  if(CMAKE_MATCH_1 STREQUAL u)
    message(SEND_ERROR "a unique symbol, which never lets the library go: ${symbol}")
  elseif(symbol MATCHES "^([A-Za-z_0-9]+)(\\(|$)" AND CMAKE_MATCH_1 IN_LIST functions)
    list(APPEND found ${CMAKE_MATCH_1})
  elseif(NOT symbol MATCHES "^((vtable|typeinfo|typeinfo name) for )?KOV::SDK::[^ (]+(\\(.*)?$")
    message(SEND_ERROR "exported, but not part of the interface: ${symbol}")
  endif()
endforeach()
foreach(name IN LISTS functions)
  if(NOT name IN_LIST found)
    message(SEND_ERROR "not exported: ${name}")
  endif()
endforeach()

run(dynamic ${READELF} -dW ${LIBRARY})
string(REGEX MATCHALL "NEEDED[^\n]*" needed "${dynamic}")
foreach(line IN LISTS needed)
  if(NOT line MATCHES "\\[(libQt6Core|libstdc\\+\\+|libgcc_s|libm|libc|ld-linux[^.]*)\\.so")
    message(SEND_ERROR "needs more than Qt Core and the compiler's runtime: ${line}")
  endif()
endforeach()

# Two pointers: the compiler's own, and the table of session names.
run(sections ${READELF} -SW ${LIBRARY})
if(NOT sections MATCHES " \\.init_array +INIT_ARRAY +[0-9a-f]+ [0-9a-f]+ 0000(10|08) ")
  message(SEND_ERROR "something else runs when the library is loaded: ${sections}")
endif()
