# SPDX-License-Identifier: MIT
# Finds ncurses for wide characters (Debian: libncurses-dev) and defines the target Ncurses::Ncurses.
find_path(Ncurses_INCLUDE_DIR curses.h)
find_library(Ncurses_LIBRARY ncursesw)
find_library(Ncurses_TERMINFO_LIBRARY tinfo)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Ncurses REQUIRED_VARS Ncurses_LIBRARY Ncurses_TERMINFO_LIBRARY Ncurses_INCLUDE_DIR)
if(Ncurses_FOUND AND NOT TARGET Ncurses::Ncurses)
  add_library(Ncurses::Ncurses UNKNOWN IMPORTED)
  set_target_properties(Ncurses::Ncurses PROPERTIES
    IMPORTED_LOCATION "${Ncurses_LIBRARY}"
    IMPORTED_LINK_INTERFACE_LIBRARIES "${Ncurses_TERMINFO_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${Ncurses_INCLUDE_DIR}")
endif()
mark_as_advanced(Ncurses_INCLUDE_DIR Ncurses_LIBRARY Ncurses_TERMINFO_LIBRARY)
