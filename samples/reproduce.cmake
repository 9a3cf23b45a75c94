# Makes the sample logs again, by the commands that README.md gives for them, and compares every byte.
# cmake -DGENERATOR=program -DSAMPLES=folder -DWORK=folder -P reproduce.cmake
cmake_minimum_required(VERSION 3.25)

set(maxBytes 1000000) # of all logs together: a clone stays small

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
file(STRINGS ${SAMPLES}/README.md commands REGEX "^orva-samples ")
foreach(command IN LISTS commands)
  separate_arguments(arguments UNIX_COMMAND "${command}")
  list(POP_FRONT arguments)
  execute_process(COMMAND ${GENERATOR} ${arguments} WORKING_DIRECTORY ${WORK} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

file(GLOB made RELATIVE ${WORK} ${WORK}/*)
file(GLOB kept RELATIVE ${SAMPLES} ${SAMPLES}/*.csv ${SAMPLES}/*.ld ${SAMPLES}/*.ldx)
if(NOT kept OR NOT made STREQUAL kept)
  message(FATAL_ERROR "the commands in README.md make\n  ${made}\nbut the folder has\n  ${kept}")
endif()
set(totalBytes 0)
foreach(log IN LISTS kept)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${SAMPLES}/${log} ${WORK}/${log} COMMAND_ERROR_IS_FATAL ANY)
  file(SIZE ${SAMPLES}/${log} bytes)
  math(EXPR totalBytes "${totalBytes} + ${bytes}")
endforeach()
if(totalBytes GREATER maxBytes)
  message(FATAL_ERROR "the sample logs take ${totalBytes} bytes, more than ${maxBytes}")
endif()
