// SPDX-License-Identifier: MIT
/// \file
/// \brief Values of a list as metrics, and the way back.
#ifndef GATEWAY_SPARKPLUG_METRIC_TYPES_H
#define GATEWAY_SPARKPLUG_METRIC_TYPES_H

#include "gateway/values/sample.h"
#include "runtime/model/variable_list.h"

#include <QString>

namespace plc
{

namespace sparkplug
{
class Metric;
}

/// The codes of the types of metrics that are used here.
enum class Datatype : quint32 {
    Int16 = 2,
    Int32 = 3,
    Int64 = 4,
    Uint16 = 6,
    Uint32 = 7,
    Uint64 = 8,
    Float = 9,
    Double = 10,
    Boolean = 11,
    String = 12,
    Int16Array = 23,
    Int32Array = 24,
    Int64Array = 25,
    Uint16Array = 27,
    Uint32Array = 28,
    Uint64Array = 29,
    FloatArray = 30,
    DoubleArray = 31,
    BooleanArray = 32
};

/// \return the type of the metric for \a variable: of several values an array; what is scaled is a Double
Datatype datatypeOf(const ListedVariable& variable);

/// Fills in the value, or that there is none.
void setMetricValue(sparkplug::Metric* metric, Datatype type, const SampleValue& value);

/// \return the value of a command as a person would type it; empty when it has none that fits \a type, then \a error
///         says why
QString commandText(const sparkplug::Metric& metric, Datatype type, QString* error);

} // namespace plc

#endif
