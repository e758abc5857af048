// SPDX-License-Identifier: MIT
/// \file
/// \brief What plcsim prints, and whether it got where it should.
#ifndef SIMULATOR_OUTPUT_H
#define SIMULATOR_OUTPUT_H

#include <string>

namespace simulator
{

/// To be called before anything is opened: a standard descriptor that is closed would be the next socket's, and
/// what is printed would go there. It gets one that can be neither read nor written.
void keepStandardDescriptors();

/// Prints `text` on standard output, at once. False when that failed, which a message on standard error tells.
bool print(const std::string& text);

/// Replaces the file by `text`. False when that failed, which a message on standard error tells; `option` is
/// the one that named the file.
bool writeFile(const std::string& option, const std::string& fileName, const std::string& text);

} // namespace simulator

#endif
