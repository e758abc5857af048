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
  -Wall -Wextra -Wshadow -Wconversion -Wold-style-cast -fvisibility=hidden -fvisibility-inlines-hidden)
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

# The panel's commands and the simulator wait for networks and people: building them quickly is worth more than
# optimizing them. The panel's library, whose loop runs once per request, is optimized where speed counts.
set(PLC_TOOL_OPTIMIZATION -O1)
set(PLC_LOOP_OPTIMIZATION)
if(PLC_SANITIZE OR CMAKE_BUILD_TYPE STREQUAL "Coverage")
  set(PLC_TOOL_OPTIMIZATION -O0)
  set(PLC_LOOP_OPTIMIZATION -O0)
endif()

# plc_room(NAME SOURCES... LIBRARIES LIBRARY...): the library of one folder, on those of the folders that it may know.
function(plc_room name)
  cmake_parse_arguments(PARSE_ARGV 1 room "" "" "LIBRARIES")
  add_library(${name} STATIC ${room_UNPARSED_ARGUMENTS})
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name} PUBLIC ${room_LIBRARIES} PRIVATE plc_rules)
  target_compile_definitions(${name} PUBLIC QT_NO_KEYWORDS) # "signals" are those of the system here
  target_precompile_headers(${name} PRIVATE
    <QByteArray> <QList> <QString> <QStringList> <algorithm> <functional> <memory> <vector>)
endfunction()
