// SPDX-License-Identifier: MIT
#include "gateway/json/json_messages.h"

#include "gateway/plant/sample_of.h"
#include "runtime/model/value_type.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>

#include <charconv>
#include <cmath>

namespace plc
{

namespace
{

const int longestPayload = 4096;

QByteArray quoted(const QString& text)
{
    // The library's own way of writing a text, without the brackets around it.
    const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
    return array.mid(1, array.size() - 2);
}

template <class Number>
QByteArray digits(Number number)
{
    char text[40];
    const auto end = std::to_chars(text, text + sizeof text, number).ptr;
    return QByteArray(text, static_cast<int>(end - text));
}

QByteArray whole(qint64 number)
{
    const bool isExact = number >= -greatestExactWhole && number <= greatestExactWhole;
    return isExact ? digits(number) : '"' + digits(number) + '"';
}

struct ValueWriter {
    QByteArray operator()(std::monostate) const { return "null"; }
    QByteArray operator()(bool value) const { return value ? "true" : "false"; }
    QByteArray operator()(qint64 value) const { return whole(value); }
    QByteArray operator()(quint64 value) const
    {
        const bool isExact = value <= static_cast<quint64>(greatestExactWhole);
        return isExact ? digits(value) : '"' + digits(value) + '"';
    }
    QByteArray operator()(double value) const { return std::isfinite(value) ? digits(value) : "null"; }
    QByteArray operator()(const QString& value) const { return quoted(value); }
};

/// Of several values the sample holds the array as JSON already; a text of its own has to be quoted.
QByteArray valueOf(const Sample& sample, const ListedVariable& variable)
{
    const QString* text = std::get_if<QString>(&sample.value);
    if (text && isArray(variable))
        return text->toUtf8();
    return std::visit(ValueWriter(), sample.value);
}

/// Whole numbers without an exponent, which is for numbers with a fraction alone; but those that JSON may have
/// rounded with one, so that none is written that was not asked for.
QString typedNumber(double number)
{
    if (std::trunc(number) != number)
        return QString::fromLatin1(digits(number));
    if (std::fabs(number) < static_cast<double>(greatestExactWhole))
        return QString::fromLatin1(digits(static_cast<qint64>(number)));
    return QString::number(number, 'e', QLocale::FloatingPointShortest);
}

/// \return the text of a value as a person would type it; empty where it is none that can be written
QString typedText(const QJsonValue& value)
{
    if (value.isBool())
        return value.toBool() ? QStringLiteral("1") : QStringLiteral("0");
    if (value.isString())
        return value.toString();
    if (value.isDouble())
        return typedNumber(value.toDouble());
    if (!value.isArray())
        return QString();
    QStringList texts;
    const QJsonArray values = value.toArray();
    for (const QJsonValue one : values) {
        const QString text = one.isArray() ? QString() : typedText(one);
        if (text.isEmpty())
            return QString();
        texts << text;
    }
    return texts.join(QLatin1Char(','));
}

SetRequest wrong(const QString& words)
{
    SetRequest request;
    request.error = words;
    return request;
}

} // namespace

QString qualityWord(SampleQuality quality)
{
    switch (quality) {
    case SampleQuality::Good:
        return QStringLiteral("good");
    case SampleQuality::Stale:
        return QStringLiteral("stale");
    default:
        return QStringLiteral("bad");
    }
}

QByteArray jsonOfSample(const Sample& sample, const ListedVariable& variable, bool mayBeDouble)
{
    QByteArray text = "{\"value\":" + valueOf(sample, variable);
    text += ",\"at\":" + (sample.at < 0 ? QByteArray("null") : digits(sample.at));
    text += ",\"quality\":\"" + qualityWord(sample.quality).toLatin1() + '"';
    if (!variable.unit.isEmpty())
        text += ",\"unit\":" + quoted(variable.unit);
    if (mayBeDouble)
        text += ",\"again\":true";
    return text + '}';
}

SetRequest parseSetRequest(const QByteArray& payload)
{
    if (payload.size() > longestPayload)
        return wrong(QStringLiteral("the payload has %1 bytes; %2 are allowed")
                         .arg(payload.size())
                         .arg(longestPayload));
    // A value alone is no document for the parser, one in an array is.
    QJsonParseError error = {};
    const QJsonArray array = QJsonDocument::fromJson('[' + payload + ']', &error).array();
    if (array.size() != 1)
        return wrong(QStringLiteral("no JSON: {\"value\":...,\"id\":...} or a value alone is expected"));
    SetRequest request;
    QJsonValue value = array.first();
    if (value.isObject()) {
        const QJsonObject object = value.toObject();
        value = object.value(QStringLiteral("value"));
        const QJsonValue id = object.value(QStringLiteral("id"));
        if (id.isString() || id.isDouble())
            request.id = id;
    }
    request.text = typedText(value);
    if (value.isUndefined())
        request.error = QStringLiteral("there is no \"value\"");
    else if (request.text.isEmpty() && !value.isString())
        request.error =
            QStringLiteral("\"value\" is neither a number, a text, true, false nor an array of such");
    return request;
}

} // namespace plc
