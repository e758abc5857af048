# SPDX-License-Identifier: MIT
# Runs in cpack on the files that are about to be packed: Debian wants man pages and change logs compressed, with
# no time in them.
file(GLOB_RECURSE documents LIST_DIRECTORIES false
  "${CPACK_TEMPORARY_DIRECTORY}/*.1" "${CPACK_TEMPORARY_DIRECTORY}/*/changelog")
if(documents)
  execute_process(COMMAND gzip -9nf ${documents} COMMAND_ERROR_IS_FATAL ANY)
endif()
