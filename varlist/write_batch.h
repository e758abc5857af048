/// \file
/// \brief Queues the pieces of one write, all or none. AddListWriteVar() is in the public header.
#ifndef VARLIST_WRITE_BATCH_H
#define VARLIST_WRITE_BATCH_H

#include "driver/plcdriver.h"

#include <QMutexLocker>

/// Holds listMutex as long as it lives. Without keep(), as when an exception leaves the scope, the write list
/// ends as it began, so that half a value is never sent.
class WriteBatch
{
public:
    WriteBatch();
    ~WriteBatch();

    /// As AddListWriteVar() without direct, but throws when there is no memory; \a var is not in the list
    /// then.
    void add(const RW_VAR& var);

    /// \return entries in the write list
    int keep();

private:
    WriteBatch(const WriteBatch&);
    WriteBatch& operator=(const WriteBatch&);

    QMutexLocker lock_;
    int before_;             // entries in the list
    QList<RW_VAR> replaced_; // what stood in the list, oldest first
    bool kept_;
};

#endif
