// SPDX-License-Identifier: MIT
/// \file
/// \brief What libplcruntime shows to the programs that link it.
#ifndef RUNTIME_EXPORT_H
#define RUNTIME_EXPORT_H

/// Everything is compiled hidden. What a public header declares and a source file defines carries this word;
/// cmake/RuntimeLibrary.cmake has the list of the public headers.
#define PLCRUNTIME_API __attribute__((visibility("default")))

/// For what stands inside a class with that word and is nobody's business.
#define PLCRUNTIME_INTERNAL __attribute__((visibility("hidden")))

#endif
