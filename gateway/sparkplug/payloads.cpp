// SPDX-License-Identifier: MIT
#include "gateway/sparkplug/payloads.h"

#include "gateway/sparkplug/metric_types.h"
#include "sparkplug_b.pb.h"

#include <algorithm>

namespace plc
{

namespace
{

using sparkplug::Metric;
using sparkplug::Payload;

const std::size_t mostMetrics = 500; // of one message
const char connectedName[] = "Controller/Connected";

quint64 unsignedTime(qint64 ms)
{
    return static_cast<quint64>(std::max<qint64>(ms, 0));
}

QByteArray bytesOf(const Payload& payload)
{
    QByteArray bytes(static_cast<int>(payload.ByteSizeLong()), Qt::Uninitialized);
    payload.SerializeToArray(bytes.data(), bytes.size());
    return bytes;
}

quint32 codeOf(SampleQuality quality)
{
    switch (quality) {
    case SampleQuality::Good:
        return 192;
    case SampleQuality::Stale:
        return 500;
    default:
        return 0;
    }
}

void addQuality(Metric* metric, SampleQuality quality)
{
    const quint32 int32Type = 3;
    metric->mutable_properties()->add_keys("Quality");
    auto* const value = metric->mutable_properties()->add_values();
    value->set_type(int32Type);
    value->set_int_value(codeOf(quality));
}

void addUnit(Metric* metric, const QString& unit)
{
    metric->mutable_properties()->add_keys("engUnit");
    auto* const value = metric->mutable_properties()->add_values();
    value->set_type(static_cast<quint32>(Datatype::String));
    value->set_string_value(unit.toStdString());
}

/// Name and value, without an alias.
Metric* addNamed(Payload* payload, const char* name, Datatype type, qint64 at)
{
    Metric* const metric = payload->add_metrics();
    metric->set_name(name);
    metric->set_timestamp(unsignedTime(at));
    metric->set_datatype(static_cast<quint32>(type));
    return metric;
}

void addBirthNumber(Payload* payload, int number, qint64 at)
{
    addNamed(payload, birthNumberName, Datatype::Int64, at)->set_long_value(static_cast<quint64>(number));
}

void addSample(Payload* payload, const Sample& sample, const ListedVariable& variable, qint64 sentAt)
{
    Metric* const metric = payload->add_metrics();
    metric->set_alias(aliasOf(sample.variable));
    metric->set_timestamp(unsignedTime(sample.at < 0 ? sentAt : sample.at));
    setMetricValue(metric, datatypeOf(variable), sample.value);
    addQuality(metric, sample.quality);
}

bool isOlder(const Sample& one, const Sample& other)
{
    return one.at < other.at;
}

} // namespace

QByteArray deathOfNode(int birthNumber)
{
    Payload payload;
    Metric* const metric = payload.add_metrics();
    metric->set_name(birthNumberName);
    metric->set_datatype(static_cast<quint32>(Datatype::Int64));
    metric->set_long_value(static_cast<quint64>(birthNumber));
    return bytesOf(payload);
}

QByteArray birthOfNode(int birthNumber, const GatewayFigures& figures, std::size_t variables, qint64 sentAt)
{
    Payload payload;
    payload.set_timestamp(unsignedTime(sentAt));
    payload.set_seq(0);
    addBirthNumber(&payload, birthNumber, sentAt);
    addNamed(&payload, rebirthName, Datatype::Boolean, sentAt)->set_boolean_value(false);
    quint64 alias = aliasOf(variables);
    Metric* const connected = addNamed(&payload, connectedName, Datatype::Boolean, sentAt);
    connected->set_alias(alias++);
    connected->set_boolean_value(figures.controllerConnected);
    for (const FigureRow& row : figureRows()) {
        Metric* const metric = addNamed(&payload, row.name, Datatype::Double, sentAt);
        metric->set_alias(alias++);
        metric->set_double_value(row.value(figures));
    }
    return bytesOf(payload);
}

std::optional<QByteArray> dataOfNode(const GatewayFigures& before, const GatewayFigures& figures,
                                     std::size_t variables, int seq, qint64 sentAt)
{
    Payload payload;
    payload.set_timestamp(unsignedTime(sentAt));
    payload.set_seq(static_cast<quint64>(seq));
    const auto add = [&](quint64 alias) {
        Metric* const metric = payload.add_metrics();
        metric->set_alias(alias);
        metric->set_timestamp(unsignedTime(sentAt));
        return metric;
    };
    quint64 alias = aliasOf(variables);
    if (before.controllerConnected != figures.controllerConnected)
        add(alias)->set_boolean_value(figures.controllerConnected);
    for (const FigureRow& row : figureRows()) {
        ++alias;
        if (row.value(before) < row.value(figures) || row.value(before) > row.value(figures))
            add(alias)->set_double_value(row.value(figures));
    }
    return payload.metrics_size() == 0 ? std::nullopt : std::optional<QByteArray>(bytesOf(payload));
}

QByteArray birthOfDevice(const std::vector<Sample>& samples, const std::vector<ListedVariable>& variables,
                         int seq, qint64 sentAt)
{
    std::vector<Sample> ordered = samples;
    std::stable_sort(ordered.begin(), ordered.end(), [sentAt](const Sample& one, const Sample& other) {
        const auto timeOf = [sentAt](const Sample& sample) { return sample.at < 0 ? sentAt : sample.at; };
        return timeOf(one) < timeOf(other);
    });
    Payload payload;
    payload.set_timestamp(unsignedTime(sentAt));
    payload.set_seq(static_cast<quint64>(seq));
    for (const Sample& sample : ordered) {
        const ListedVariable& variable = variables[sample.variable];
        addSample(&payload, sample, variable, sentAt);
        Metric* const metric = payload.mutable_metrics(payload.metrics_size() - 1);
        metric->set_name(variable.name.utf8().toStdString());
        metric->set_datatype(static_cast<quint32>(datatypeOf(variable)));
        if (!variable.unit.isEmpty())
            addUnit(metric, variable.unit);
    }
    return bytesOf(payload);
}

QByteArray deathOfDevice(int seq, qint64 sentAt)
{
    Payload payload;
    payload.set_timestamp(unsignedTime(sentAt));
    payload.set_seq(static_cast<quint64>(seq));
    return bytesOf(payload);
}

DataMessage::DataMessage(const std::vector<ListedVariable>& variables, bool isHistorical)
    : m_variables(variables), m_isHistorical(isHistorical)
{
}

bool DataMessage::add(const Sample& sample)
{
    const auto last = m_last.find(sample.variable);
    if (m_samples.size() >= mostMetrics || (last != m_last.end() && last->second >= sample.at))
        return false;
    m_last[sample.variable] = sample.at;
    m_samples.push_back(sample);
    return true;
}

QByteArray DataMessage::take(int seq, qint64 sentAt)
{
    if (!m_isHistorical)
        std::stable_sort(m_samples.begin(), m_samples.end(), isOlder);
    Payload payload;
    payload.set_timestamp(unsignedTime(sentAt));
    payload.set_seq(static_cast<quint64>(seq));
    for (const Sample& sample : m_samples) {
        addSample(&payload, sample, m_variables[sample.variable], sentAt);
        if (m_isHistorical)
            payload.mutable_metrics(payload.metrics_size() - 1)->set_is_historical(true);
    }
    m_samples.clear();
    m_last.clear();
    return bytesOf(payload);
}

} // namespace plc
