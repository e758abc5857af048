/// \file
/// \brief What the driver tells the runtime. The wiring entry points are in the public header.
#ifndef DRIVER_HOST_INTERFACE_H
#define DRIVER_HOST_INTERFACE_H

/// Calls listDoneCallback, where there is one, with an empty list and \a hostKey. listMutex is held.
void TellListDone(int hostKey);

#endif
