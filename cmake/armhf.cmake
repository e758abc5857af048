# SPDX-License-Identifier: MIT
# Toolchain of the panels with ARM processors: 32-bit hard-float code, from clang, with Debian's armhf libraries.
# Debian's own cross compiler would remove what the 32-bit x86 build needs.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET arm-linux-gnueabihf)
set(CMAKE_CXX_COMPILER_TARGET arm-linux-gnueabihf)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_C_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_CXX_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_EXE_LINKER_FLAGS_INIT -fuse-ld=lld)
set(CMAKE_SHARED_LINKER_FLAGS_INIT -fuse-ld=lld)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -fuse-ld=lld)
# The loader and the libraries lie in the ordinary places, because they are Debian's own armhf packages.
set(CMAKE_CROSSCOMPILING_EMULATOR "qemu-arm;-L;/")
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/arm-linux-gnueabihf/pkgconfig:/usr/share/pkgconfig)
