/// \file
/// \brief The values of multi-station mode, one entry per station and element.
#ifndef IMAGE_EXTENDED_VARIABLES_H
#define IMAGE_EXTENDED_VARIABLES_H

#include <QByteArray>

/// One value of one station. The key is (station, area, address); bits inside words are kept in the word's
/// entry (area 9, bit address / 16), except replies to area-8 reads, which have entries of their own (area
/// 8).
struct EXTENDVAR {
    int station;      ///< station number
    int area;         ///< area code under which the value is kept
    int address;      ///< element, or word address for bits in words
    QByteArray value; ///< little-endian: 1 byte for bits, 2 for words, 4 for double words; 4 zeros when new
};

/// Finds the entry of a key in PLC_driver.extendList, or appends one with four zero bytes. The walk is linear
/// on purpose and costs no allocation. Takes no lock: callers hold imageMutex (replies of remote requests
/// are filed without it).
/// \return index into extendList, valid until the lock is released
int ExtendFindSameVar(int station, int area, int address);

#endif
