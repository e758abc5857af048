// SPDX-License-Identifier: MIT
#include "gateway/sparkplug/metric_types.h"

#include "gateway/plant/sample_of.h"
#include "sparkplug_b.pb.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtEndian>

#include <cmath>
#include <limits>

namespace plc
{

namespace
{

struct Types {
    Datatype one;
    Datatype several;
};

Types typesOf(const ListedVariable& variable)
{
    if (variable.type == ValueType::Bit)
        return {Datatype::Boolean, Datatype::BooleanArray};
    if (variable.type == ValueType::Hex && bytesOfElement(variable.elements.area) > 2)
        return {Datatype::Uint32, Datatype::Uint32Array};
    const bool isScaled = variable.scale != 1 || variable.offset != 0;
    if (isScaled)
        return {Datatype::Double, Datatype::DoubleArray};
    switch (variable.type) {
    case ValueType::Int16:
        return {Datatype::Int16, Datatype::Int16Array};
    case ValueType::Int32:
        return {Datatype::Int32, Datatype::Int32Array};
    case ValueType::Uint32:
    case ValueType::Bcd32:
        return {Datatype::Uint32, Datatype::Uint32Array};
    case ValueType::Int64:
        return {Datatype::Int64, Datatype::Int64Array};
    case ValueType::Uint64:
        return {Datatype::Uint64, Datatype::Uint64Array};
    case ValueType::Float32:
        return {Datatype::Float, Datatype::FloatArray};
    case ValueType::Float64:
        return {Datatype::Double, Datatype::DoubleArray};
    default:
        return {Datatype::Uint16, Datatype::Uint16Array};
    }
}

/// Little-endian, as arrays have them.
template <class Number>
void append(std::string* bytes, Number number)
{
    const Number little = qToLittleEndian(number);
    bytes->append(reinterpret_cast<const char*>(&little), sizeof little);
}

template <class Float, class Bits>
Bits bitsOf(double value)
{
    const Float number = static_cast<Float>(value);
    Bits bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

/// Beyond 2^53 JSON has texts for numbers; where it has null, the number is none.
template <class Number>
Number wholeOf(const QJsonValue& value)
{
    if (!value.isString())
        return static_cast<Number>(value.toDouble());
    return static_cast<Number>(std::is_signed_v<Number> ? static_cast<quint64>(value.toString().toLongLong())
                                                        : value.toString().toULongLong());
}

double realOf(const QJsonValue& value)
{
    return value.isDouble() ? value.toDouble() : std::numeric_limits<double>::quiet_NaN();
}

void appendElement(std::string* bytes, Datatype type, const QJsonValue& value)
{
    switch (type) {
    case Datatype::Int16Array:
        return append(bytes, wholeOf<qint16>(value));
    case Datatype::Int32Array:
        return append(bytes, wholeOf<qint32>(value));
    case Datatype::Int64Array:
        return append(bytes, wholeOf<qint64>(value));
    case Datatype::Uint16Array:
        return append(bytes, wholeOf<quint16>(value));
    case Datatype::Uint32Array:
        return append(bytes, wholeOf<quint32>(value));
    case Datatype::Uint64Array:
        return append(bytes, wholeOf<quint64>(value));
    case Datatype::FloatArray:
        return append(bytes, bitsOf<float, quint32>(realOf(value)));
    default:
        return append(bytes, bitsOf<double, quint64>(realOf(value)));
    }
}

/// The count, then a bit each, the first one in the top bit.
std::string packedBits(const QJsonArray& values)
{
    std::string bytes;
    append(&bytes, static_cast<quint32>(values.size()));
    for (int first = 0; first < values.size(); first += 8) {
        int byte = 0;
        for (int bit = 0; bit < 8 && first + bit < values.size(); ++bit) {
            const QJsonValue value = values.at(first + bit);
            byte |= value.toBool() || value.toDouble() != 0 ? 0x80 >> bit : 0;
        }
        bytes += static_cast<char>(byte);
    }
    return bytes;
}

std::string packed(Datatype type, const QString& json)
{
    const QJsonArray values = QJsonDocument::fromJson(json.toUtf8()).array();
    if (type == Datatype::BooleanArray)
        return packedBits(values);
    std::string bytes;
    for (const QJsonValue& value : values)
        appendElement(&bytes, type, value);
    return bytes;
}

/// Two's complement, as wide as the field.
quint64 bitsOfWhole(const SampleValue& value)
{
    if (const auto* natural = std::get_if<quint64>(&value))
        return *natural;
    const auto* whole = std::get_if<qint64>(&value);
    return whole ? static_cast<quint64>(*whole) : 0;
}

double numberOf(const SampleValue& value)
{
    if (const auto* real = std::get_if<double>(&value))
        return *real;
    if (const auto* natural = std::get_if<quint64>(&value))
        return static_cast<double>(*natural);
    const auto* whole = std::get_if<qint64>(&value);
    return whole ? static_cast<double>(*whole) : 0;
}

QString textOf(const SampleValue& value)
{
    const auto* text = std::get_if<QString>(&value);
    return text ? *text : QString();
}

// The way back.

struct WholeType {
    Datatype type;
    int bits;
    bool isSigned;
};

const WholeType wholeTypes[] = {
    {Datatype::Int16, 16, true},   {Datatype::Int32, 32, true},   {Datatype::Int64, 64, true},
    {Datatype::Uint16, 16, false}, {Datatype::Uint32, 32, false}, {Datatype::Uint64, 64, false},
};

const WholeType* wholeType(Datatype type)
{
    for (const WholeType& row : wholeTypes) {
        if (row.type == type)
            return &row;
    }
    return nullptr;
}

/// Negative numbers come sign-extended to 32 or 64 bits, or as the bits of the type alone. What has other bits above
/// those of the type does not fit.
QString wholeText(const WholeType& type, quint64 value, bool isLong)
{
    const int width = isLong ? 64 : 32;
    const quint64 all = ~quint64(0) >> (64 - width);
    const quint64 above = type.bits >= width ? 0 : all & ~(~quint64(0) >> (64 - type.bits));
    const bool isNegative = type.isSigned && (value >> (std::min(type.bits, width) - 1) & 1) != 0;
    const bool fits = (value & above) == 0 || (isNegative && (value & above) == above);
    if (!fits)
        return QString();
    if (!isNegative)
        return QString::number(value);
    const int unused = 64 - std::min(type.bits, width);
    return QString::number(static_cast<qint64>(value << unused) >> unused);
}

QString realText(const sparkplug::Metric& metric)
{
    const bool isFloat = metric.has_float_value();
    const double value = isFloat ? static_cast<double>(metric.float_value()) : metric.double_value();
    if (!std::isfinite(value))
        return QString();
    return QString::number(value, 'g',
                           isFloat ? std::numeric_limits<float>::max_digits10
                                   : std::numeric_limits<double>::max_digits10);
}

QString typedText(const sparkplug::Metric& metric, Datatype type)
{
    const WholeType* const whole = wholeType(type);
    if (whole && metric.has_int_value())
        return wholeText(*whole, metric.int_value(), false);
    if (whole && metric.has_long_value())
        return wholeText(*whole, metric.long_value(), true);
    const bool isReal = type == Datatype::Float || type == Datatype::Double;
    if (isReal && (metric.has_float_value() || metric.has_double_value()))
        return realText(metric);
    if (type == Datatype::Boolean && metric.has_boolean_value())
        return metric.boolean_value() ? QStringLiteral("1") : QStringLiteral("0");
    if (type == Datatype::String && metric.has_string_value())
        return QLatin1Char('"') + QString::fromStdString(metric.string_value()) + QLatin1Char('"');
    return QString();
}

} // namespace

Datatype datatypeOf(const ListedVariable& variable)
{
    if (variable.type == ValueType::Text)
        return Datatype::String;
    const Types types = typesOf(variable);
    return isArray(variable) ? types.several : types.one;
}

void setMetricValue(sparkplug::Metric* metric, Datatype type, const SampleValue& value)
{
    if (std::holds_alternative<std::monostate>(value))
        return metric->set_is_null(true);
    switch (type) {
    case Datatype::Int16:
    case Datatype::Int32:
    case Datatype::Uint16:
    case Datatype::Uint32:
        return metric->set_int_value(static_cast<quint32>(bitsOfWhole(value)));
    case Datatype::Int64:
    case Datatype::Uint64:
        return metric->set_long_value(bitsOfWhole(value));
    case Datatype::Float:
        return metric->set_float_value(static_cast<float>(numberOf(value)));
    case Datatype::Double:
        return metric->set_double_value(numberOf(value));
    case Datatype::Boolean:
        return metric->set_boolean_value(std::holds_alternative<bool>(value) && std::get<bool>(value));
    case Datatype::String:
        return metric->set_string_value(textOf(value).toStdString());
    default:
        return metric->set_bytes_value(packed(type, textOf(value)));
    }
}

QString commandText(const sparkplug::Metric& metric, Datatype type, QString* error)
{
    const QString text = metric.is_null() || metric.is_historical() ? QString() : typedText(metric, type);
    if (text.isEmpty())
        *error =
            QStringLiteral("the command has no value of the metric's type (%1)").arg(static_cast<int>(type));
    return text;
}

} // namespace plc
