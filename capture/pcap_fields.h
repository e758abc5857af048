// SPDX-License-Identifier: MIT
/// \file
/// \brief The fields of the pcap files that are written, and of the headers of packets.
#ifndef CAPTURE_PCAP_FIELDS_H
#define CAPTURE_PCAP_FIELDS_H

namespace plc
{

const unsigned int pcapMagic = 0xA1B2C3D4; ///< times in microseconds
const int linkTypeRawIp = 101;             ///< as files name it

/// Of the first connection that a capture of the panel shows, by which its reader knows it; each further
/// connection begins as much higher, so that a port that comes again begins another stream.
const unsigned int panelSequenceStep = 1000000;

const int ipv4AddressSize = 4;
const int ipv6AddressSize = 16;
const int ipv4HeaderSize = 20; ///< without options
const int ipv6HeaderSize = 40; ///< without extensions
const int tcpHeaderSize = 20;  ///< without options
const int protocolTcp = 6;

const int tcpFin = 0x01;
const int tcpSyn = 0x02;
const int tcpReset = 0x04;
const int tcpPush = 0x08;
const int tcpAcknowledge = 0x10;

const int modbusPort = 502;

} // namespace plc

#endif
