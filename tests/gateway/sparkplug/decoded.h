// SPDX-License-Identifier: MIT
/// \file
/// \brief What tshark, which shares no code with the gateway, makes of packets.
#ifndef TESTS_GATEWAY_SPARKPLUG_DECODED_H
#define TESTS_GATEWAY_SPARKPLUG_DECODED_H

#include <QByteArray>

#include <map>
#include <string>
#include <vector>

namespace test
{

struct DecodedMetric {
    std::map<std::string, std::string> fields; ///< by name, "quality" and "engUnit" among them
    bool has(const char* name) const { return fields.count(name) != 0; }
    std::string operator[](const char* name) const
    {
        const auto found = fields.find(name);
        return found == fields.end() ? std::string() : found->second;
    }
};

struct DecodedPacket {
    std::string kind; ///< "Connect Command", "Publish Message", ...
    std::string topic;
    std::string type; ///< of a message: NBIRTH, ...
    std::string device;
    std::string qos; ///< "0", "1"
    bool retained = false;
    std::string text;                          ///< all that tshark says of it
    std::map<std::string, std::string> fields; ///< of the payload: timestamp, seq
    std::vector<DecodedMetric> metrics;

    /// \return the metric of this name or, where it has none, alias; an empty one when there is none
    DecodedMetric metric(const char* nameOrAlias) const;
};

/// \return false where tshark or its dissector is missing; tests that need it are skipped
bool canDecode();

std::vector<DecodedPacket> decoded(const std::vector<QByteArray>& packets);

} // namespace test

#endif
