// SPDX-License-Identifier: MIT
/// \file
/// \brief Files the data of a good read reply.
///
/// Everything about the routing comes from the head of protocolList, never from the reply;
/// PLC_driver.pendingBit MUST be set before (see TakePendingBit()). Data bytes that the array does not hold,
/// and elements outside their area, are left out. Nothing is reported. Communication thread; the caller holds
/// imageMutex on the local path.
#ifndef IMAGE_REPLY_FILING_H
#define IMAGE_REPLY_FILING_H

#include "driver/modbus_rtu_master.h"

/// \return whether a write of a bit waits behind the head for the word that was to be read, and \a reply (may be
///         null) does not hold it. Such a reply MUST NOT be filed or counted as good: the write would go out
///         with a value that nobody read.
bool LacksWordForWrite(const QByteArray* reply) PLC_REQUIRES(PLC_driver.communicationTurn);

/// Files into the image, or into extendList in multi-station mode. \a reply may be null: nothing is filed.
void SaveToLocalDataErea(QByteArray* reply) PLC_REQUIRES(PLC_driver.imageMutex, PLC_driver.communicationTurn);

/// \name Single-station mode: one saver per kind of area
/// @{

/// Bits come eight to a byte, lowest first. One cell more than the request's count is stored when the last
/// byte has a bit for it, on purpose.
void SaveBitToUC(QByteArray* reply, bool* area)
    PLC_REQUIRES(PLC_driver.imageMutex, PLC_driver.communicationTurn);

/// Registers come high byte first; an odd last byte is left out.
void SaveWordToUS(QByteArray* reply, unsigned short* area)
    PLC_REQUIRES(PLC_driver.imageMutex, PLC_driver.communicationTurn);

/// A double word is two registers, low half first; bytes beyond the last whole one are left out.
void SaveDWordToUS(QByteArray* reply, unsigned int* area)
    PLC_REQUIRES(PLC_driver.imageMutex, PLC_driver.communicationTurn);

/// One register of area 8. A read-before-write (storeSelector -1) merges the pending bit into it and patches
/// the value into the write frame that is queued behind the read. The word is stored in any case.
void SpecialRegisterSave(QByteArray* reply, unsigned short* area)
    PLC_REQUIRES(PLC_driver.imageMutex, PLC_driver.communicationTurn);
/// @}

#endif
