# SPDX-License-Identifier: MIT
# Finds libmodbus (Debian: libmodbus-dev) and defines the target Modbus::Modbus.
find_path(Modbus_INCLUDE_DIR modbus.h PATH_SUFFIXES modbus)
find_library(Modbus_LIBRARY modbus)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Modbus REQUIRED_VARS Modbus_LIBRARY Modbus_INCLUDE_DIR)
if(Modbus_FOUND AND NOT TARGET Modbus::Modbus)
  add_library(Modbus::Modbus UNKNOWN IMPORTED)
  set_target_properties(Modbus::Modbus PROPERTIES
    IMPORTED_LOCATION "${Modbus_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${Modbus_INCLUDE_DIR}")
endif()
mark_as_advanced(Modbus_INCLUDE_DIR Modbus_LIBRARY)
