# SPDX-License-Identifier: MIT
# Finds libpcap (Debian: libpcap-dev) and defines the target Pcap::Pcap.
find_path(Pcap_INCLUDE_DIR pcap/pcap.h)
find_library(Pcap_LIBRARY pcap)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Pcap REQUIRED_VARS Pcap_LIBRARY Pcap_INCLUDE_DIR)
if(Pcap_FOUND AND NOT TARGET Pcap::Pcap)
  add_library(Pcap::Pcap UNKNOWN IMPORTED)
  set_target_properties(Pcap::Pcap PROPERTIES
    IMPORTED_LOCATION "${Pcap_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${Pcap_INCLUDE_DIR}")
endif()
mark_as_advanced(Pcap_INCLUDE_DIR Pcap_LIBRARY)
