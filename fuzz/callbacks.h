// SPDX-License-Identifier: MIT
/// \file
/// \brief The runtime's two callbacks, counted.
#ifndef FUZZ_CALLBACKS_H
#define FUZZ_CALLBACKS_H

#include "driver/plcdriver.h"

namespace fuzz
{

/// What the callbacks were called with during one entry point.
struct Callbacks {
    int listDone = 0;
    int onceReadDone = 0;
    int lastStatus = 0;
};

/// Since the caller cleared it last.
Callbacks& callbacks();

/// Both check that the locks are held as the header promises.
int noteListDone(QList<RW_VAR>* list, int hostKey, int flag);
int noteOnceReadDone(int portId, int hostKey, int hostSubKey, int status);

/// Between entry points nobody holds a lock.
void checkLocksAreFree();

} // namespace fuzz

#endif
