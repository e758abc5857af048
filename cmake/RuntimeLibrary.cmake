# SPDX-License-Identifier: MIT
# libplcruntime.so: the rooms of runtime/ as one shared library, and which of their headers are its interface.

# What a program that links it may include, as "runtime/...". They include nothing but each other, the driver's header
# and what C++ and QtCore have; tests/install holds them to it. What they declare and do not define is marked
# PLCRUNTIME_API.
set(PLC_RUNTIME_HEADERS
  runtime/export.h
  runtime/cycle/exchange_record.h
  runtime/cycle/round_trips.h
  runtime/cycle/runtime.h
  runtime/cycle/statistics.h
  runtime/host/driver_path.h
  runtime/link/dropped_reply.h
  runtime/link/link_exchange.h
  runtime/link/link_tap.h
  runtime/modbus/exception_words.h
  runtime/modbus/failure_words.h
  runtime/modbus/return_code_words.h
  runtime/modbus/return_codes.h
  runtime/model/area_table.h
  runtime/model/clock.h
  runtime/model/cyclic_value.h
  runtime/model/failure.h
  runtime/model/frame_format.h
  runtime/model/listed_value.h
  runtime/model/outcome.h
  runtime/model/pending.h
  runtime/model/settings.h
  runtime/model/small_members.h
  runtime/model/station_report.h
  runtime/model/value_text.h
  runtime/model/value_type.h
  runtime/model/variable.h
  runtime/model/variable_list.h
  runtime/model/word_order.h)

find_package(Csv REQUIRED)

# The rooms' objects as they are: what is hidden in them stays hidden.
set(plc_runtime_objects)
foreach(room IN ITEMS model modbus link host cycle c)
  list(APPEND plc_runtime_objects $<TARGET_OBJECTS:runtime_${room}>)
endforeach()
add_library(plcruntime SHARED ${plc_runtime_objects})
target_link_libraries(plcruntime
  PUBLIC Qt5::Core Threads::Threads
  PRIVATE Csv::Csv ${CMAKE_DL_LIBS} plc_rules)
# The map keeps what the standard library's and Qt's templates leave behind inside.
target_link_options(plcruntime PRIVATE
  "-Wl,--version-script=${CMAKE_CURRENT_LIST_DIR}/runtime-exports.map" -Wl,-Bsymbolic-functions -Wl,--as-needed)
# A look-up of a name may go on when the program has done with the library: the code of its thread has to stay.
target_link_options(plcruntime PRIVATE -Wl,-z,nodelete)
if(NOT PLC_SANITIZE) # whose runtime only programs have
  target_link_options(plcruntime PRIVATE -Wl,-z,defs)
endif()
target_compile_features(plcruntime INTERFACE cxx_std_17)
set_target_properties(plcruntime PROPERTIES
  EXPORT_NAME runtime
  LINKER_LANGUAGE CXX
  LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}"
  VERSION ${PROJECT_VERSION}
  SOVERSION ${PROJECT_VERSION_MAJOR}
  LINK_DEPENDS "${CMAKE_CURRENT_LIST_DIR}/runtime-exports.map")
