# What is installed: the library, the headers of its public interface by folder, and the package for find_package(orva).
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
  sdk/lapheader.h
  sdk/liveplugininfo.h
  sdk/sample.h
  sdk/sdk_utils.h
  sdk/session.h
  sdk/sessioninfo.h
  sdk/value.h)

install(TARGETS orva EXPORT orvaTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
foreach(header IN LISTS public_headers)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES ${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orva/${folder})
endforeach()
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/include/orva_export.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orva)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/orva)
install(EXPORT orvaTargets NAMESPACE orva:: DESTINATION ${package_folder})
configure_package_config_file(cmake/orvaConfig.cmake.in orvaConfig.cmake INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(orvaConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orvaConfig.cmake ${CMAKE_CURRENT_BINARY_DIR}/orvaConfigVersion.cmake
  DESTINATION ${package_folder})
