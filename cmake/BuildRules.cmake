# SPDX-License-Identifier: MIT
# How everything here is compiled: one language level, one set of warnings, hidden by default.

set(CMAKE_CXX_STANDARD 17 CACHE STRING "C++ level; the driver's folders also build as 11")
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release)
endif()

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Without these words ccache passes by whatever uses a precompiled header, which is all tests.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    "${CMAKE_COMMAND};-E;env;CCACHE_SLOPPINESS=pch_defines,time_macros;${CCACHE}")
endif()

find_package(Threads REQUIRED)

# Link plc_rules PRIVATE to every target of ours.
add_library(plc_rules INTERFACE)
target_compile_options(plc_rules INTERFACE
  -Wall -Wextra -Wshadow -Wconversion -Wold-style-cast
  $<$<NOT:$<BOOL:${PLC_SHARED_ROOMS}>>:-fvisibility=hidden> -fvisibility-inlines-hidden)
set(PLC_ROOM_KIND STATIC)
if(PLC_SHARED_ROOMS)
  set(PLC_ROOM_KIND SHARED)
endif()
if(CMAKE_UNITY_BUILD)
  # g++ takes what an included file leaves unnamed for a slip in a header.
  target_compile_options(plc_rules INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
if(PLC_WERROR)
  target_compile_options(plc_rules INTERFACE -Werror)
endif()

if(PLC_SANITIZE)
  add_compile_options("-fsanitize=${PLC_SANITIZE}" -fno-omit-frame-pointer -g1)
  add_link_options("-fsanitize=${PLC_SANITIZE}")
  if(PLC_SANITIZE MATCHES "undefined")
    add_compile_options(-fno-sanitize-recover=undefined)
  endif()
endif()

# What is shipped is hardened; tests/install/hardened_files looks whether it is.
if(PLC_HARDENING AND CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT PLC_SANITIZE)
  add_compile_options(-fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|i[3-6]86)$")
    # Everything is bound before main(), so the table that would bind it at the first call is a detour.
    add_compile_options(-fcf-protection -fno-plt)
  endif()
  add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()

# The same commit makes the same bytes wherever it is built: no folder of this machine gets into a file, and libraries
# find each other in the build from where they lie, so that their search paths are of one length.
if(CMAKE_BUILD_TYPE STREQUAL "Release")
  add_compile_options("-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=")
endif()
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
include(CheckPIESupported)
check_pie_supported(LANGUAGES CXX)

# Tests are compiled more often than run. Fortified functions take optimization.
set(PLC_TEST_OPTIMIZATION -O0 -U_FORTIFY_SOURCE)

# The panel's commands and the simulator wait for networks and people: building them quickly is worth more than
# optimizing them. The panel's library, whose loop runs once per request, is optimized where speed counts: nobody
# replaces a function of it by one of the same name, so that its own calls of small ones take none.
set(PLC_TOOL_OPTIMIZATION -O1)
set(PLC_LOOP_OPTIMIZATION -fno-semantic-interposition)
if(PLC_SANITIZE OR CMAKE_BUILD_TYPE STREQUAL "Coverage")
  set(PLC_TOOL_OPTIMIZATION -O0)
  set(PLC_LOOP_OPTIMIZATION -O0)
endif()

# plc_room(NAME SOURCES... LIBRARIES LIBRARY...): the library of one folder, on those of the folders that it may know.
function(plc_room name)
  cmake_parse_arguments(PARSE_ARGV 1 room "" "" "LIBRARIES")
  add_library(${name} ${PLC_ROOM_KIND} ${room_UNPARSED_ARGUMENTS})
  if(PLC_SHARED_ROOMS)
    set_target_properties(${name} PROPERTIES UNITY_BUILD OFF) # one file at a time is exchanged
  endif()
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name} PUBLIC ${room_LIBRARIES} PRIVATE plc_rules)
  target_compile_definitions(${name} PUBLIC QT_NO_KEYWORDS) # "signals" are those of the system here
  target_precompile_headers(${name} PRIVATE
    <QByteArray> <QList> <QString> <QStringList> <algorithm> <functional> <memory> <vector>)
endfunction()
