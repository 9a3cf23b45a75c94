# Included after project() where scripts/matrix compiles for Windows on Debian, which has headers of Qt to compile with, but
# no library to link with.

# CMake wants a library named: any file that exists will do.
find_package(Qt6 REQUIRED COMPONENTS Core)
set_target_properties(Qt6::Core PROPERTIES IMPORTED_IMPLIB ${CMAKE_CURRENT_LIST_FILE})

# Everything is compiled and nothing linked.
set(CMAKE_CXX_CREATE_SHARED_LIBRARY "<CMAKE_COMMAND> -E touch <TARGET> <TARGET_IMPLIB>")
set(CMAKE_CXX_LINK_EXECUTABLE "<CMAKE_COMMAND> -E touch <TARGET>")

# Header libraries lie in /usr/include, whose C library is not the one for Windows.
list(APPEND CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES /usr/include)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/header-libraries)
foreach(library CLI rapidjson)
  file(CREATE_LINK /usr/include/${library} ${CMAKE_BINARY_DIR}/header-libraries/${library} SYMBOLIC)
endforeach()
include_directories(SYSTEM ${CMAKE_BINARY_DIR}/header-libraries)
