// SPDX-License-Identifier: MIT
/// \file
/// \brief One log has one writer.
#ifndef HISTORY_WRITER_LOCK_H
#define HISTORY_WRITER_LOCK_H

#include <QLockFile>
#include <QString>

namespace plc
{

/// \return where the lock of the log \a path lies: beside it. It is there as long as somebody writes; that of a process
///         which has died counts for nothing
QString lockPath(const QString& path);

/// \param lock of lockPath()
/// \throws std::runtime_error that says who writes the log, or why it cannot be locked
void takeWriterLock(QLockFile* lock, const QString& path);

} // namespace plc

#endif
