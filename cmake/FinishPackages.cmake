# SPDX-License-Identifier: MIT
# Runs in cpack on the packages that it made, and does what it has no words for: the field Multi-Arch, and no scripts
# that refresh the linker's cache, which the trigger does. The packages are put together anew by dpkg-deb, whose order
# and times depend on nothing but the files and SOURCE_DATE_EPOCH.
set(work "${CPACK_TOPLEVEL_DIRECTORY}/finish")
foreach(package IN LISTS CPACK_PACKAGE_FILES)
  file(REMOVE_RECURSE "${work}")
  execute_process(COMMAND dpkg-deb --raw-extract "${package}" "${work}" COMMAND_ERROR_IS_FATAL ANY)

  # Libraries lie in the folder of their architecture, so those of several can be installed. The tools of any
  # architecture do, and so does the gateway.
  set(multi_arch same)
  file(READ "${work}/DEBIAN/control" control)
  if(control MATCHES "(^|\n)Package: ([^\n]*-tools|plcgateway|plcwindow)\n")
    set(multi_arch foreign)
  endif()
  string(STRIP "${control}" control)
  file(WRITE "${work}/DEBIAN/control" "${control}\nMulti-Arch: ${multi_arch}\n")
  if(NOT control MATCHES "(^|\n)Package: plcgateway\n") # which has scripts of its own
    file(REMOVE "${work}/DEBIAN/postinst" "${work}/DEBIAN/postrm")
  endif()
  execute_process(COMMAND dpkg-deb --root-owner-group -Zxz --build "${work}" "${package}"
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
