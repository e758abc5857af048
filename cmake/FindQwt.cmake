# SPDX-License-Identifier: MIT
# Finds Qwt for Qt 5 (Debian: libqwt-qt5-dev) in the architecture that is built, and defines the target Qwt::Qwt.
# Debian has its library in one folder for all architectures, so that one of another may lie there: it is not taken.
# Beside it a 32-bit one may lie in /usr/local/lib (scripts/install-dependencies puts it there); the headers are shared.
find_path(Qwt_INCLUDE_DIR qwt_plot.h PATH_SUFFIXES qwt qwt-qt5)
find_library(Qwt_LIBRARY NAMES libqwt-qt5.so.6 qwt-qt5 NAMES_PER_DIR
  HINTS "/usr/local/lib/${CMAKE_LIBRARY_ARCHITECTURE}")
if(Qwt_LIBRARY)
  file(READ "${Qwt_LIBRARY}" Qwt_class OFFSET 4 LIMIT 1 HEX) # of the ELF header: 01 is 32-bit, 02 is 64-bit
  math(EXPR Qwt_pointer "4 * 0x${Qwt_class}")
  if(NOT Qwt_pointer EQUAL CMAKE_SIZEOF_VOID_P)
    unset(Qwt_LIBRARY CACHE)
  endif()
endif()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Qwt REQUIRED_VARS Qwt_LIBRARY Qwt_INCLUDE_DIR)
if(Qwt_FOUND AND NOT TARGET Qwt::Qwt)
  add_library(Qwt::Qwt UNKNOWN IMPORTED)
  set_target_properties(Qwt::Qwt PROPERTIES
    IMPORTED_LOCATION "${Qwt_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${Qwt_INCLUDE_DIR}")
endif()
mark_as_advanced(Qwt_INCLUDE_DIR Qwt_LIBRARY)
