# SPDX-License-Identifier: MIT
# The documents and examples as they are installed, each in the package that needs them, with links that lead from one
# to the other. With PLC_BUILD_REFERENCE also the pages of the reference, which takes Doxygen.
include(GNUInstallDirs)

option(PLC_BUILD_REFERENCE "Build and install the pages of the reference, which takes Doxygen" OFF)

set(documents_dir "${CMAKE_CURRENT_BINARY_DIR}/install/documents")
set(documents_map "${documents_dir}/map")
set(documents_built)
set(documents_lines)

# plc_install_documents(COMPONENT PACKAGE FOLDER FILE...): FILEs of the sources, to FOLDER below the package's documents.
# Links in those that end in .md are made to fit.
function(plc_install_documents component package folder)
  set(where "${CMAKE_INSTALL_DATADIR}/doc/${package}")
  if(folder)
    string(APPEND where "/${folder}")
  endif()
  foreach(file IN LISTS ARGN)
    cmake_path(GET file FILENAME name)
    list(APPEND documents_lines "${file} ${where}/${name}")
    if(name MATCHES "[.]md$")
      set(built "${documents_dir}/${file}")
      cmake_path(GET built PARENT_PATH built_dir)
      file(MAKE_DIRECTORY "${built_dir}")
      add_custom_command(OUTPUT "${built}"
        COMMAND "${PROJECT_SOURCE_DIR}/cmake/installed-document" "${PROJECT_SOURCE_DIR}" "${documents_map}" "${file}"
          > "${built}"
        DEPENDS cmake/installed-document "${documents_map}" "${file}" VERBATIM)
      list(APPEND documents_built "${built}")
      install(FILES "${built}" DESTINATION "${where}" COMPONENT ${component})
    elseif(file MATCHES "/make-") # a program
      install(PROGRAMS "${file}" DESTINATION "${where}" COMPONENT ${component})
    else()
      install(FILES "${file}" DESTINATION "${where}" COMPONENT ${component})
    endif()
  endforeach()
  set(documents_built "${documents_built}" PARENT_SCOPE)
  set(documents_lines "${documents_lines}" PARENT_SCOPE)
endfunction()

# plc_install_examples(COMPONENT PACKAGE EXAMPLE...): folders below examples/.
macro(plc_install_examples component package)
  foreach(example ${ARGN})
    file(GLOB files RELATIVE "${PROJECT_SOURCE_DIR}" CONFIGURE_DEPENDS examples/${example}/*)
    plc_install_documents(${component} ${package} examples/${example} ${files})
    list(APPEND documents_lines
      "examples/${example} ${CMAKE_INSTALL_DATADIR}/doc/${package}/examples/${example}")
  endforeach()
endmacro()

plc_install_documents(development libplcdriver-dev ""
  docs/guide.md docs/wire.md docs/multi-station.md docs/performance.md docs/qt4.md CHANGELOG.md)
plc_install_examples(development libplcdriver-dev minimal_runtime full_runtime)
if(PLC_BUILD_TOOLS)
  plc_install_documents(runtime_development libplcruntime-dev "" docs/runtime.md)
  plc_install_examples(runtime_development libplcruntime-dev
    runtime_library station_runtime c_runtime python_runtime)
  plc_install_documents(tools plcdriver-tools "" docs/history.md docs/lists.md)
  plc_install_documents(tools plcdriver-tools examples examples/README.md examples/machine.csv examples/machine.memory
    examples/machine-moving.memory
    examples/thousand.csv examples/make-list examples/make-thousand)
endif()
if(PLC_BUILD_TOOLS AND PLC_BUILD_GATEWAY)
  plc_install_documents(gateway plcgateway "" docs/gateway.md docs/gateway.svg)
  plc_install_examples(gateway plcgateway gateway)
endif()

if(PLC_BUILD_TOOLS AND TARGET plcwindow)
  plc_install_documents(window plcwindow "" docs/window.md docs/window-light.png docs/window-dark.png
    docs/window-frames.png docs/window-stations.png)
else()
  # Links to it stay: the packages of all architectures bring the same documents.
  list(APPEND documents_lines "docs/window.md ${CMAKE_INSTALL_DATADIR}/doc/plcwindow/window.md")
endif()

list(JOIN documents_lines "\n" documents_text)
file(CONFIGURE OUTPUT "${documents_map}" CONTENT "${documents_text}\n" @ONLY)
add_custom_target(documents ALL DEPENDS ${documents_built})

if(PLC_BUILD_REFERENCE)
  find_package(Doxygen REQUIRED)
  set(reference "${documents_dir}/reference")
  add_custom_command(OUTPUT "${reference}/html/index.html"
    COMMAND "${PROJECT_SOURCE_DIR}/scripts/docs" --reference "${reference}"
    DEPENDS scripts/docs docs/Doxyfile driver/plcdriver.h docs/guide.md docs/wire.md docs/multi-station.md
      docs/performance.md docs/qt4.md docs/runtime.md docs/lists.md VERBATIM)
  add_custom_target(reference ALL DEPENDS "${reference}/html/index.html")
  install(DIRECTORY "${reference}/html" DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/libplcdriver-dev"
    COMPONENT development)
endif()
