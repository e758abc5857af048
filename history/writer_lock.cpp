// SPDX-License-Identifier: MIT
#include "history/writer_lock.h"

#include "history/refuse.h"

#include <QFileInfo>

namespace plc
{

namespace
{

QString refusal(const QLockFile& lock, const QString& path)
{
    const QFileInfo folder(QFileInfo(path).absolutePath());
    if (!folder.isDir())
        return QStringLiteral("there is no directory %1").arg(folder.filePath());
    if (lock.error() != QLockFile::LockFailedError)
        return QStringLiteral("no file can be made in %1 (look at its rights, and whether the disk is full)")
            .arg(folder.filePath());
    qint64 process = 0;
    QString host;
    QString program;
    lock.getLockInfo(&process, &host, &program);
    return QStringLiteral("process %1 (%2) writes this file; end that one, or give another name")
        .arg(process)
        .arg(program);
}

} // namespace

QString lockPath(const QString& path)
{
    return path + QStringLiteral(".lock");
}

void takeWriterLock(QLockFile* lock, const QString& path)
{
    lock->setStaleLockTime(0); // however old: it is its process that counts
    if (!lock->tryLock())
        refuseFile(refusal(*lock, path));
}

} // namespace plc
