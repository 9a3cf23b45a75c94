# What is installed: the library, the headers of its public interface, and the packages for find_package(orva) and
# pkg-config. COMPONENT runtime is what a host needs at run time, development what it is built with.
include(CMakePackageConfigHelpers)

set(public_headers
  csv/csvtext.h
  ld/lapcutter.h
  ld/ldfile.h
  ld/ldx.h
  ld/loadlaps.h
  ld/resample.h
  plugin/plugininterfaceimport.h
  sdk/carinfo.h
  sdk/carstatus.h
  sdk/channel.h
  sdk/channelutils.h
  sdk/dataemitter.h
  sdk/dynamicdata.h
  sdk/lap.h
  sdk/lapchannels.h
  sdk/lapheader.h
  sdk/namemap.h
  sdk/liveplugininfo.h
  sdk/sample.h
  sdk/sdk_utils.h
  sdk/session.h
  sdk/sessioninfo.h
  sdk/value.h)

# Users include <orva/sdk/lap.h>, and an installed header includes the others in that form too: then it finds them, and
# never a file of the user's that is called sdk/lap.h. In this tree headers include each other by folder.
set(header_folder ${CMAKE_CURRENT_BINARY_DIR}/installed)
set(installed_headers)
foreach(header IN LISTS public_headers ITEMS orva_export.h)
  set(file ${CMAKE_CURRENT_SOURCE_DIR}/${header})
  if(header STREQUAL orva_export.h)
    set(file ${CMAKE_CURRENT_BINARY_DIR}/include/${header})
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(READ ${file} text)
  string(REGEX REPLACE "#include \"([^\"]+)\"" "#include <orva/\\1>" text "${text}")
  file(CONFIGURE OUTPUT ${header_folder}/orva/${header} CONTENT "${text}" @ONLY)
  list(APPEND installed_headers ${header_folder}/orva/${header})
endforeach()
target_sources(orva PUBLIC FILE_SET HEADERS BASE_DIRS ${header_folder} FILES ${installed_headers})

install(TARGETS orva EXPORT orvaTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime # with liborva.so, the name that hosts open
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)

# A link in Qt's plug-in folder, so that a host that knows no path finds "orva/liborva".
set(ORVA_QT_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/qt6/plugins CACHE STRING
  "Qt's folder of plug-ins, below the prefix; empty installs no link in it")
if(UNIX AND ORVA_QT_PLUGIN_DIR)
  file(RELATIVE_PATH library_from_plugins
    /${ORVA_QT_PLUGIN_DIR}/orva /${CMAKE_INSTALL_LIBDIR}/${CMAKE_SHARED_LIBRARY_PREFIX}orva${CMAKE_SHARED_LIBRARY_SUFFIX})
  set(plugin_link ${CMAKE_CURRENT_BINARY_DIR}/plugins/liborva${CMAKE_SHARED_LIBRARY_SUFFIX})
  file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/plugins)
  file(CREATE_LINK ${library_from_plugins} ${plugin_link} SYMBOLIC)
  install(FILES ${plugin_link} DESTINATION ${ORVA_QT_PLUGIN_DIR}/orva COMPONENT runtime)
endif()

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/orva)
install(EXPORT orvaTargets NAMESPACE orva:: DESTINATION ${package_folder} COMPONENT development)
configure_package_config_file(cmake/orvaConfig.cmake.in orvaConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(orvaConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orvaConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/orvaConfigVersion.cmake
  DESTINATION ${package_folder} COMPONENT development)

# The folders in orva.pc are relative to its own, so that an installed tree can be moved.
set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pc /${pkgconfig_folder} /)
string(REGEX REPLACE "/$" "" prefix_from_pc "${prefix_from_pc}")
configure_file(cmake/orva.pc.in orva.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orva.pc DESTINATION ${pkgconfig_folder} COMPONENT development)
