/// \file
/// \brief The fields of pcap files, and of the headers of the packets in them.
#ifndef CAPTURE_PCAP_FIELDS_H
#define CAPTURE_PCAP_FIELDS_H

namespace plc
{

const unsigned int pcapMagic = 0xA1B2C3D4;           ///< times in microseconds
const unsigned int pcapNanosecondMagic = 0xA1B23C4D; ///< times in nanoseconds
const int pcapHeaderSize = 24;
const int pcapPacketHeaderSize = 16;

const int linkTypeRawIp = 101;

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
