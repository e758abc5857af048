// SPDX-License-Identifier: MIT
/// \file
/// \brief One value of one variable as it goes to the broker: what it was, when, and how good.
#ifndef GATEWAY_VALUES_SAMPLE_H
#define GATEWAY_VALUES_SAMPLE_H

#include <QString>

#include <variant>

namespace plc
{

/// No value, a bit, a whole number, a number with a fraction or beyond 64 bits, a text.
using SampleValue = std::variant<std::monostate, bool, qint64, quint64, double, QString>;

enum class SampleQuality : quint8 {
    Good,  ///< as the controller answered
    Stale, ///< not refreshed any more; value and time are those of the last answer
    Bad    ///< there is no value to go by: never read, or what was read means nothing
};

struct Sample {
    quint32 variable = 0; ///< index in the list
    qint64 at = -1;       ///< when the controller's reply came, in ms since 1970 UTC; -1 when none ever did
    SampleValue value;
    SampleQuality quality = SampleQuality::Good;
};

} // namespace plc

#endif
