// SPDX-License-Identifier: MIT
/// \file
/// \brief Where the files are that were built, and those that tests read.
///
/// Functions, not definitions of the compiler: what a test is compiled to does not depend on where the tree lies, and
/// so does not have to be compiled again elsewhere.
#ifndef TESTS_SUPPORT_BUILT_FILES_H
#define TESTS_SUPPORT_BUILT_FILES_H

const char* builtDriver();           ///< libplcdriver.so
const char* builtSilentNameServer(); ///< to be put in front of the C library by LD_PRELOAD
const char* builtPlcpanel();         ///< the program; nullptr where it is not built
const char* builtPlcsim();           ///< the program; nullptr where it is not built
const char* builtPlcgateway();       ///< the program; nullptr where it is not built
const char* testsDirectory();        ///< the folder tests/ of the sources

/// \return whether an emulator runs the programs, and this test: then they are scripts that call it
bool areProgramsEmulated();

#endif
