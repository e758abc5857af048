/// \file
/// \brief The keys by which the panel knows its requests again in the driver's records.
#ifndef PANEL_REQUEST_KEYS_H
#define PANEL_REQUEST_KEYS_H

namespace panel
{

// RW_VAR::hostKey says what kind of request it is, RW_VAR::hostSubKey which one. The keys of cyclic variables
// are 1 for the first, and so on, so that the fine part of an error code tells which of the first eleven
// failed.
const int writeKey = 0x01000000;
const int onceReadKey = 0x02000000;
const int pacingKey = 0x03000000;

} // namespace panel

#endif
