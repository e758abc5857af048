// SPDX-License-Identifier: MIT
/// \file
/// \brief Text on standard output and standard error.
#ifndef PANEL_TERMINAL_OUTPUT_H
#define PANEL_TERMINAL_OUTPUT_H

#include <QByteArray>
#include <QString>

namespace plc
{

/// To be called first of all, before anything is opened: a standard descriptor that is closed would be the next
/// file's or socket's, and what is printed would go there. It gets one that can be neither read nor written.
void keepStandardDescriptors();

/// Where the locale knows ASCII only, what is typed and printed is UTF-8, as lists are. Needs a
/// QCoreApplication.
void preferUtf8();

/// Prints \a text as it is, at once. Any thread; texts of different threads do not mix. When that fails, a
/// message says why, nothing more is printed, and outputFailed() tells it.
void print(const QString& text);

/// The same of text in UTF-8 that is ready. A terminal that wants another encoding gets it.
void printBytes(const QByteArray& utf8);

/// The same on standard error, about which no message can be printed.
void printError(const QString& text);

/// From here on what goes to standard error is kept, because it would go through a screen that is drawn there.
void holdErrors();

/// Prints what was kept, and keeps nothing any more.
void releaseErrors();

/// Prints one message of the program on standard error, "plcpanel: MESSAGE".
void complain(const QString& message);

/// \return true when something that was printed did not get where it should. A standard error that is closed
///         from the beginning is no failure.
bool outputFailed();

/// \return true when standard output is a pipe that nobody will read any more, so that a display which goes on
///         only when there is something new can end before
bool readerIsGone();

} // namespace plc

#endif
