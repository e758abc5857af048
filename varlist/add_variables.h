// SPDX-License-Identifier: MIT
/// \file
/// \brief Queues one write for the driver itself. The entry points are in the public header.
#ifndef VARLIST_ADD_VARIABLES_H
#define VARLIST_ADD_VARIABLES_H

#include "driver/modbus_rtu_master.h"

/// As AddListWriteVar() without direct, but throws when there is no memory; \a var is not in the list then,
/// not even in part. Takes listMutex. \return entries in the write list
int AddWrite(const RW_VAR& var) PLC_EXCLUDES(PLC_driver.listMutex);

#endif
