/// \file
/// \brief The stations that are switched off. EnCommStation() is in the public header.
#ifndef DRIVER_STATION_TABLE_H
#define DRIVER_STATION_TABLE_H

/// \return 1 when \a station is switched off, 0 otherwise. Takes stationMutex; listMutex may be held.
int Ethernetcontains(int station);

#endif
