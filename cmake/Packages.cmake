# SPDX-License-Identifier: MIT
# What `cpack` makes: Debian packages of the driver and of libplcruntime, of what developing with each takes, of the
# tools, of the gateway and of the window.
# scripts/package builds for them, with an installation in /usr.
include(GNUInstallDirs)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME plcdriver)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "plcdriver maintainers <maintainers@users.noreply.c-seed-192f3768.example>" CACHE STRING
  "Who answers for the packages: NAME <ADDRESS>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development)
if(PLC_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL runtime runtime_development tools)
endif()
if(PLC_BUILD_TOOLS AND PLC_BUILD_GATEWAY)
  list(APPEND CPACK_COMPONENTS_ALL gateway)
endif()

# A window on a Qwt that no package of this architecture has is built and tested, but not packed.
if(TARGET plcwindow AND NOT Qwt_LIBRARY MATCHES "^/usr/local/")
  set(PLC_PACKS_WINDOW ON)
  list(APPEND CPACK_COMPONENTS_ALL window)
endif()

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(architectures "x86_64=amd64" "i386=i386" "arm-linux-gnueabihf=armhf")
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE amd64)
foreach(pair IN LISTS architectures)
  string(REGEX MATCH "^([^=]+)=(.+)$" matched "${pair}")
  if(CMAKE_LIBRARY_ARCHITECTURE MATCHES "^${CMAKE_MATCH_1}")
    string(REGEX REPLACE ".*=" "" CPACK_DEBIAN_PACKAGE_ARCHITECTURE "${pair}")
  endif()
endforeach()
# dpkg-shlibdeps looks up what packages of that architecture hold; cpack hands its environment on to it.
file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/install/cpack_environment.cmake"
  CONTENT "set(ENV{DEB_HOST_ARCH} ${CPACK_DEBIAN_PACKAGE_ARCHITECTURE})\n")
set(CPACK_PROJECT_CONFIG_FILE "${CMAKE_BINARY_DIR}/install/cpack_environment.cmake")
set(CPACK_PRE_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/CompressDocuments.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/FinishPackages.cmake")

set(library_package libplcdriver${PROJECT_VERSION_MAJOR})

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME ${library_package})
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION "controller communication driver for operator panels
An HMI runtime loads this library to read and write the memory of a controller
over Modbus TCP. It turns variable requests into frames, groups cyclic
variables into block reads, judges replies and keeps a local image of the
memory. It does no input or output of its own.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libplcdriver-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION}), qtbase5-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "controller communication driver for operator panels - development
The header, the CMake and pkg-config files, the guide, the reference, and
runtimes as examples: for writing an HMI runtime that loads the driver.")

set(runtime_package libplcruntime${PROJECT_VERSION_MAJOR})

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME ${runtime_package})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION})") # loaded, so not found by itself
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "runtime around the plcdriver library
Link, communication thread and accounts: a program that has no link layer of
its own uses this library to read, write and watch the memory of a controller
through the driver.")

set(CPACK_DEBIAN_RUNTIME_DEVELOPMENT_PACKAGE_NAME libplcruntime-dev)
set(CPACK_DEBIAN_RUNTIME_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_RUNTIME_DEVELOPMENT_PACKAGE_DEPENDS
  "${runtime_package} (= ${PROJECT_VERSION}), libplcdriver-dev (= ${PROJECT_VERSION}), qtbase5-dev")
set(CPACK_COMPONENT_RUNTIME_DEVELOPMENT_DESCRIPTION "runtime around the plcdriver library - development
The headers, the CMake target plcdriver::runtime, the pkg-config file and an
example: for writing a program that reads, writes and watches a controller.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME plcdriver-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
# Loaded, so not found by themselves: the driver, and what logs in SQLite go through.
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION}), libqt5sql5-sqlite")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION "panel and simulated controller for the plcdriver library
plcpanel reads, writes, watches and logs the memory of a controller through
the driver. plcsim is a simulated controller that misbehaves on demand.")

set(CPACK_DEBIAN_GATEWAY_PACKAGE_NAME plcgateway)
set(CPACK_DEBIAN_GATEWAY_PACKAGE_SECTION net)
set(CPACK_DEBIAN_GATEWAY_PACKAGE_SHLIBDEPS ON)
# Both are loaded, so they are not found by themselves.
set(CPACK_DEBIAN_GATEWAY_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION}), libqt5sql5-sqlite")
set(CPACK_DEBIAN_GATEWAY_PACKAGE_SUGGESTS "plcdriver-tools, mosquitto")
set(CPACK_COMPONENT_GATEWAY_DESCRIPTION "gateway from controllers to an MQTT broker
plcgateway reads the variables of a controller through the plcdriver library
and publishes them, as JSON or Sparkplug B. What the broker has not taken
waits on disk. A systemd unit runs one gateway for each controller.")

set(CPACK_DEBIAN_WINDOW_PACKAGE_NAME plcwindow)
set(CPACK_DEBIAN_WINDOW_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_WINDOW_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_WINDOW_PACKAGE_DEPENDS "${library_package} (= ${PROJECT_VERSION}), libqt5sql5-sqlite, libqt5svg5")
set(CPACK_COMPONENT_WINDOW_DESCRIPTION "values of a controller in a window, for the plcdriver library
plcwindow shows the memory of a controller as a table and as curves, with its
stations, every frame on the link and captures of it, and writes values after
a question.")

set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON) # so that packages of runtimes find what they depend on
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
# cpack refreshes the linker's cache in scripts of its own as well; FinishPackages.cmake takes them out.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")

set(CPACK_DEBIAN_GATEWAY_PACKAGE_CONTROL_EXTRA
  "${PROJECT_SOURCE_DIR}/cmake/debian/gateway/prerm"
  "${PROJECT_SOURCE_DIR}/cmake/debian/gateway/postinst"
  "${PROJECT_SOURCE_DIR}/cmake/debian/gateway/postrm")

# The date of the release stands in the change log of the sources.
file(STRINGS CHANGELOG.md heading REGEX "^## \\[${PROJECT_VERSION}\\] - " LIMIT_COUNT 1)
string(REGEX REPLACE ".* - " "" release_day "${heading}")
execute_process(COMMAND date --utc --rfc-email "--date=${release_day}" OUTPUT_VARIABLE PLC_RELEASE_DATE
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
configure_file(cmake/debian/changelog.in "${CMAKE_BINARY_DIR}/install/changelog" @ONLY)
set(packages "library:${library_package}" development:libplcdriver-dev)
if(PLC_BUILD_TOOLS)
  list(APPEND packages "runtime:${runtime_package}" runtime_development:libplcruntime-dev tools:plcdriver-tools)
endif()
if(PLC_BUILD_TOOLS AND PLC_BUILD_GATEWAY)
  list(APPEND packages gateway:plcgateway)
endif()
if(PLC_PACKS_WINDOW)
  list(APPEND packages window:plcwindow)
endif()
foreach(package IN LISTS packages)
  string(REGEX MATCH "^([^:]+):(.+)$" matched "${package}")
  install(FILES cmake/debian/copyright "${CMAKE_BINARY_DIR}/install/changelog"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${CMAKE_MATCH_2}" COMPONENT ${CMAKE_MATCH_1})
endforeach()

include(CPack)
