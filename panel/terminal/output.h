/// \file
/// \brief Text on standard output and standard error.
#ifndef PANEL_TERMINAL_OUTPUT_H
#define PANEL_TERMINAL_OUTPUT_H

#include <QString>

namespace plc
{

/// Prints \a text as it is, at once. Any thread; texts of different threads do not mix.
void print(const QString& text);

/// The same on standard error.
void printError(const QString& text);

/// Prints one message of the program on standard error, "plcpanel: MESSAGE".
void complain(const QString& message);

} // namespace plc

#endif
