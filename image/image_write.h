// SPDX-License-Identifier: MIT
/// \file
/// \brief Mirrors a written value into the driver's memory.
#ifndef IMAGE_IMAGE_WRITE_H
#define IMAGE_IMAGE_WRITE_H

#include "driver/modbus_rtu_master.h"

/// Copies the value bytes of \a var into the image, or into extendList in multi-station mode. Area 0 is never
/// mirrored. Short data ends the copy early; elements outside the area are left out. Holds imageMutex
/// throughout and takes no other lock; listMutex may be held by the caller. \a var is not changed.
void WriteDataToLocal(RW_VAR* var) PLC_EXCLUDES(PLC_driver.imageMutex);

#endif
