// SPDX-License-Identifier: MIT
/// \file
/// \brief Judges replies and finishes requests. DataCom() is in the public header.
///
/// Communication thread. A reply always belongs to the head of protocolList, which MUST NOT be empty; only
/// its announced length is judged. One must also hold its data: that to the read before the write of a bit,
/// which is of the wrong length without the word.
#ifndef DRIVER_REPLY_HANDLING_H
#define DRIVER_REPLY_HANDLING_H

#include "driver/modbus_rtu_master.h"

/// Judges and files the reply to a local request; files under imageMutex, with no other lock held.
/// \return result code
int DealDataOfLocalArea(QByteArray* reply, int length) PLC_REQUIRES(PLC_driver.communicationTurn)
    PLC_EXCLUDES(PLC_driver.listMutex, PLC_driver.imageMutex);

/// Judges and files the reply to a remote request. Files without imageMutex, and only where storeSelector
/// is -1; both on purpose.
/// \return result code
int DealDataOfRemoteArea(QByteArray* reply, int length) PLC_REQUIRES(PLC_driver.communicationTurn)
    PLC_EXCLUDES(PLC_driver.listMutex, PLC_driver.imageMutex);

/// \return 1 when the data of the reply is to be filed (accessFlag 0), 2 when it is only judged
int CheckGetData(QByteArray* reply, int length) PLC_REQUIRES(PLC_driver.communicationTurn);

/// Copies everything but the value bytes, which \a target loses.
void passRetValue(const RW_VAR& source, RW_VAR& target);

/// Notes the head of writeList in PLC_driver.pendingBit, for SaveToLocalDataErea(). Takes listMutex.
void TakePendingBit() PLC_REQUIRES(PLC_driver.communicationTurn)
    PLC_EXCLUDES(PLC_driver.listMutex, PLC_driver.imageMutex);

#endif
