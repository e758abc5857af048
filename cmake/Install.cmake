# SPDX-License-Identifier: MIT
# What `cmake --install` puts where. One component for each package: library and development of the driver, runtime and
# runtime_development of libplcruntime, tools.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Runtimes load libplcdriver.so or, where nothing is developed, libplcdriver.so.0; the first number changes with
# the records and entry points of the header.
set_target_properties(plcdriver PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
target_include_directories(plcdriver INTERFACE "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>")
target_link_libraries(plcdriver INTERFACE Qt5::Core)

# A library is not executable, as Debian wants it.
set(PLC_DATA_PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
install(TARGETS plcdriver EXPORT plcdriverTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" PERMISSIONS ${PLC_DATA_PERMISSIONS}
    COMPONENT library NAMELINK_COMPONENT development)

install(FILES driver/plcdriver.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/plcdriver" COMPONENT development)

set(PLC_CONFIG_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/plcdriver")
set(PLC_GENERATED_DIR "${CMAKE_CURRENT_BINARY_DIR}/install")
configure_package_config_file(cmake/plcdriverConfig.cmake.in "${PLC_GENERATED_DIR}/plcdriverConfig.cmake"
  INSTALL_DESTINATION "${PLC_CONFIG_DIR}")
# Also tells a 64-bit build that the 32-bit library is none for it. Before 1.0 every minor version may break.
write_basic_package_version_file("${PLC_GENERATED_DIR}/plcdriverConfigVersion.cmake"
  COMPATIBILITY SameMinorVersion)
install(EXPORT plcdriverTargets NAMESPACE plcdriver:: DESTINATION "${PLC_CONFIG_DIR}" COMPONENT development)
install(FILES
  "${PLC_GENERATED_DIR}/plcdriverConfig.cmake" "${PLC_GENERATED_DIR}/plcdriverConfigVersion.cmake"
  DESTINATION "${PLC_CONFIG_DIR}" COMPONENT development)

# The .pc file finds its folders from where it stands, so that an installation can be moved.
file(RELATIVE_PATH PLC_PREFIX_FROM_PKGCONFIG "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" PLC_PREFIX_FROM_PKGCONFIG "${PLC_PREFIX_FROM_PKGCONFIG}")
configure_file(cmake/plcdriver.pc.in "${PLC_GENERATED_DIR}/plcdriver.pc" @ONLY)
install(FILES "${PLC_GENERATED_DIR}/plcdriver.pc"
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)

if(PLC_BUILD_TOOLS)
  # libplcruntime: what it was built from says "runtime/..." and "driver/plcdriver.h", and so may its users.
  target_include_directories(plcruntime INTERFACE
    "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>" "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/plcdriver>")
  install(TARGETS plcruntime EXPORT plcruntimeTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" PERMISSIONS ${PLC_DATA_PERMISSIONS}
      COMPONENT runtime NAMELINK_COMPONENT runtime_development)
  foreach(header IN LISTS PLC_RUNTIME_HEADERS)
    cmake_path(GET header PARENT_PATH folder)
    install(FILES ${header} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/plcdriver/${folder}"
      COMPONENT runtime_development)
  endforeach()
  file(CONFIGURE OUTPUT "${PLC_GENERATED_DIR}/driver/plcdriver.h" CONTENT "#include \"../plcdriver.h\"\n")
  install(FILES "${PLC_GENERATED_DIR}/driver/plcdriver.h" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/plcdriver/driver"
    COMPONENT runtime_development)
  install(EXPORT plcruntimeTargets NAMESPACE plcdriver:: DESTINATION "${PLC_CONFIG_DIR}"
    COMPONENT runtime_development)
  configure_file(cmake/plcruntime.pc.in "${PLC_GENERATED_DIR}/plcruntime.pc" @ONLY)
  install(FILES "${PLC_GENERATED_DIR}/plcruntime.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT runtime_development)
  install(FILES runtime/c/plcruntime.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT runtime_development)
  configure_file(cmake/plcruntime-c.pc.in "${PLC_GENERATED_DIR}/plcruntime-c.pc" @ONLY)
  install(FILES "${PLC_GENERATED_DIR}/plcruntime-c.pc"
    DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT runtime_development)

  install(TARGETS plcpanel plcsim RUNTIME COMPONENT tools)
  # How the installed panel gets to the installed driver, wherever both are moved.
  file(RELATIVE_PATH libraries_from_programs "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
  set_source_files_properties("${PROJECT_SOURCE_DIR}/runtime/host/driver_path.cpp" TARGET_DIRECTORY runtime_host
    PROPERTIES COMPILE_DEFINITIONS
    "PANEL_INSTALLED_DRIVER=\"${libraries_from_programs}/libplcdriver.so.${PROJECT_VERSION_MAJOR}\"")
  file(GLOB manuals CONFIGURE_DEPENDS docs/man/*.1)
  list(FILTER manuals EXCLUDE REGEX "plcwindow") # it has a package of its own
  list(FILTER manuals EXCLUDE REGEX "/plcgateway[.]1$")
  install(FILES ${manuals} DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT tools)
  # bash looks a completion up by the name of its program.
  file(GLOB completions CONFIGURE_DEPENDS panel/completion/*.bash)
  foreach(completion IN LISTS completions)
    cmake_path(GET completion STEM program)
    install(FILES "${completion}" DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions"
      RENAME "${program}" COMPONENT tools)
  endforeach()
endif()

if(PLC_BUILD_TOOLS AND PLC_BUILD_GATEWAY)
  install(TARGETS plcgateway RUNTIME COMPONENT gateway)
  install(FILES gateway/completion/plcgateway.bash RENAME plcgateway
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT gateway)
  install(FILES docs/man/plcgateway.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT gateway)
  # A 64-bit systemd lets its services make no system calls of 32-bit programs unless they say so.
  set(PLC_GATEWAY_PROGRAM "${CMAKE_INSTALL_FULL_BINDIR}/plcgateway")
  set(PLC_GATEWAY_SYSTEM_CALLS native)
  if(CMAKE_LIBRARY_ARCHITECTURE MATCHES "^arm-")
    set(PLC_GATEWAY_SYSTEM_CALLS "native arm")
  elseif(CMAKE_SIZEOF_VOID_P EQUAL 4)
    set(PLC_GATEWAY_SYSTEM_CALLS "native x86")
  endif()
  configure_file(gateway/units/plcgateway@.service.in "${PLC_GENERATED_DIR}/plcgateway@.service" @ONLY)
  install(FILES "${PLC_GENERATED_DIR}/plcgateway@.service" gateway/units/plcgateway.target
    DESTINATION lib/systemd/system COMPONENT gateway)
endif()

if(TARGET plcwindow)
  install(TARGETS plcwindow RUNTIME COMPONENT window)
  install(FILES docs/man/plcwindow.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT window)
  install(FILES window/plcwindow.desktop DESTINATION "${CMAKE_INSTALL_DATADIR}/applications" COMPONENT window)
  install(FILES window/desk/plcwindow.svg
    DESTINATION "${CMAKE_INSTALL_DATADIR}/icons/hicolor/scalable/apps" COMPONENT window)
endif()
