# Debian packages by CPack, one for each component of the installation; scripts/package makes them.
set(ORVA_EMBEDDED_PACKAGES "" CACHE STRING "Debian packages whose code is compiled into orva-host")

if(NOT CMAKE_INSTALL_PREFIX STREQUAL /usr)
  message(FATAL_ERROR "Debian packages install to /usr: configure with -DCMAKE_INSTALL_PREFIX=/usr, or with the preset \"package\"")
endif()
find_program(GZIP gzip REQUIRED)

set(packaging ${CMAKE_CURRENT_SOURCE_DIR}/packaging)
set(doc_folder ${CMAKE_CURRENT_BINARY_DIR}/doc)
set(soversion ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR})
file(READ ${packaging}/changelog changelog)
if(NOT changelog MATCHES "^orva \\(${PROJECT_VERSION}\\)")
  message(FATAL_ERROR "packaging/changelog does not begin with version ${PROJECT_VERSION}")
endif()

set(CPACK_PACKAGE_NAME orva)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_GENERATOR DEB)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development host)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The orva maintainers <maintainers@orva.invalid>" CACHE STRING "Name and address")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR}/lib)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME liborva${soversion})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "import plug-in for motorsport telemetry logs
This library turns telemetry logs of racing cars into laps: text exports
with their sidecar, and binary logs. It is a plug-in for Qt 6
applications and holds the classes that they share with it.")
# The loader's cache is renewed by a trigger, as Debian wants it. CPack would write scripts that call ldconfig, unless it
# is given others: these do not exist, so the package has none.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  ${packaging}/triggers ${packaging}/none/postinst ${packaging}/none/postrm)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME liborva-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "liborva${soversion} (= ${PROJECT_VERSION}), qt6-base-dev (>= 6.4)")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "import plug-in for motorsport telemetry logs - development files
Headers, and the packages for CMake and pkg-config, to write
applications that load telemetry logs and further import plug-ins for
such applications.")

set(CPACK_DEBIAN_HOST_PACKAGE_NAME orva-host)
set(CPACK_DEBIAN_HOST_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_HOST_PACKAGE_DEPENDS "liborva${soversion} (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_HOST_DESCRIPTION "motorsport telemetry logs at the shell
The program orva-host reads telemetry logs of racing cars, text exports
and binary logs alike, and prints their laps, channels, samples and
setup values as tables or as JSON.")

# What each package has in its folder below share/doc, and what lintian should know.
function(orva_document_package component)
  string(TOUPPER ${component} upper)
  set(package ${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  file(READ ${packaging}/copyright copyright)
  foreach(other IN LISTS ARGN)
    file(READ /usr/share/doc/${other}/copyright text)
    string(APPEND copyright "\n\nThe program contains code of ${other}, whose copyright file follows.\n\n${text}")
  endforeach()
  file(WRITE ${doc_folder}/${package}/copyright "${copyright}")
  execute_process(COMMAND ${GZIP} -9nc ${packaging}/changelog
    OUTPUT_FILE ${doc_folder}/${package}/changelog.gz COMMAND_ERROR_IS_FATAL ANY)
  install(FILES ${doc_folder}/${package}/copyright ${doc_folder}/${package}/changelog.gz
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
  if(EXISTS ${packaging}/${package}.lintian-overrides)
    install(FILES ${packaging}/${package}.lintian-overrides
      DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME ${package} COMPONENT ${component})
  endif()
endfunction()
orva_document_package(runtime)
orva_document_package(development)
orva_document_package(host ${ORVA_HEADER_PACKAGES})

include(CPack)
