// SPDX-License-Identifier: MIT
#include "history/recorder.h"

#include "runtime/model/listed_value.h"
#include "runtime/model/value_text.h"

#include <algorithm>

namespace plc
{

namespace
{

int valuesOf(const RecordedVariable& variable)
{
    if (!variable.listed)
        return variable.elements.count;
    return variable.listed->type == ValueType::Text ? 1 : variable.listed->count;
}

Series seriesAt(const RecordedVariable& variable, int index, int count)
{
    if (!variable.listed) {
        Variable one = variable.elements;
        one.element += index;
        one.count = 1;
        return {variableText(one), QString(), QString(), -1};
    }
    const ListedVariable& listed = *variable.listed;
    const bool isSeveral = count > 1 || variable.firstValue;
    const QString name =
        isSeveral ? QStringLiteral("%1[%2]").arg(listed.name).arg(variable.firstValue.value_or(0) + index)
                  : listed.name.text();
    return {name, listed.unit, valueTypeWord(listed.type), listed.digits};
}

std::optional<SampleState> sampleStateOf(const CyclicValue& value)
{
    const bool isOff = value.state == ValueState::StationOff;
    switch (hasFailed(value.failure) && !isOff ? ValueState::Failed : value.state) {
    case ValueState::NeverRead:
        return SampleState::NeverRead;
    case ValueState::StationOff:
        return SampleState::StationOff;
    case ValueState::Failed:
        return SampleState::Failed;
    case ValueState::Stale:
        return SampleState::Stale;
    case ValueState::Fresh:
        return SampleState::Fresh;
    case ValueState::Unconfirmed:
        break;
    }
    return std::nullopt;
}

} // namespace

std::vector<RecordedVariable> cutLike(const RecordedVariable& variable, const std::vector<Variable>& pieces)
{
    const bool isText = variable.listed && variable.listed->type == ValueType::Text;
    if (pieces.size() < 2 || isText)
        return {variable};
    std::vector<RecordedVariable> parts;
    int before = 0;
    for (const Variable& piece : pieces) {
        RecordedVariable part = variable;
        part.elements.element = piece.element;
        part.elements.count = piece.count;
        part.firstValue = before;
        const int values = piece.count / variable.elements.valueElements;
        if (part.listed) {
            part.listed->elements = part.elements;
            part.listed->count = values;
        }
        before += values;
        parts.push_back(part);
    }
    return parts;
}

std::vector<Series> seriesOf(const std::vector<RecordedVariable>& variables)
{
    std::vector<Series> series;
    for (const RecordedVariable& variable : variables) {
        const int count = valuesOf(variable);
        for (int index = 0; index < count; ++index)
            series.push_back(seriesAt(variable, index, count));
    }
    return series;
}

Recorder::Recorder(std::vector<RecordedVariable> variables, What what, Sink sink, WallClock clock)
    : m_what(what), m_sink(std::move(sink)), m_clock(std::move(clock))
{
    int series = 0;
    for (RecordedVariable& variable : variables) {
        const int count = valuesOf(variable);
        m_entries.push_back({std::move(variable), series, count});
        series += count;
    }
    m_tracks.resize(static_cast<std::size_t>(series));
}

void Recorder::take(int index, const CyclicValue& value)
{
    const Entry& entry = m_entries[static_cast<std::size_t>(index)];
    const std::optional<SampleState> state = sampleStateOf(value);
    if (!state)
        return;
    const bool isFresh = state == SampleState::Fresh;
    const QStringList words = isFresh ? texts(entry, value) : QStringList();
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_hasEnded)
        return;
    for (int at = 0; at < entry.count; ++at) {
        if (isFresh && value.readAtMs < m_tracks[static_cast<std::size_t>(entry.firstSeries + at)].answeredMs)
            continue;
        const LogSample sample{entry.firstSeries + at, isFresh ? value.readAtMs : m_clock(), *state,
                               isFresh ? words.value(at) : QString()};
        if (isNews(m_tracks[static_cast<std::size_t>(sample.series)], sample))
            record(sample);
    }
}

std::vector<int> Recorder::missed() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<int> indices;
    for (std::size_t index = 0; index < m_entries.size(); ++index) {
        const Entry& entry = m_entries[index];
        const auto first = m_tracks.begin() + entry.firstSeries;
        if (std::any_of(first, first + entry.count, [](const Track& track) { return track.lostMs; }))
            indices.push_back(static_cast<int>(index));
    }
    return indices;
}

int Recorder::failed() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return static_cast<int>(std::count_if(m_tracks.begin(), m_tracks.end(), [](const Track& track) {
        return track.state != SampleState::Fresh && track.state != SampleState::NeverRead;
    }));
}

bool Recorder::hasAnswers() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::any_of(m_tracks.begin(), m_tracks.end(),
                       [](const Track& track) { return track.answeredMs > 0; });
}

void Recorder::end()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_hasEnded = true;
    const qint64 now = m_clock();
    for (std::size_t index = 0; index < m_tracks.size(); ++index) {
        if (m_tracks[index].state != SampleState::NeverRead)
            record({static_cast<int>(index), now, SampleState::NotLogged, QString()});
    }
}

QStringList Recorder::texts(const Entry& entry, const CyclicValue& value) const
{
    if (!entry.variable.listed)
        return valueTexts(entry.variable.elements.area, value.values, ValueFormat::Decimal);
    QStringList words = listedTexts(*entry.variable.listed, value.values);
    if (entry.variable.listed->type == ValueType::Text) // which stands in quotes
        words = QStringList(words.value(0).mid(1, words.value(0).size() - 2));
    return words;
}

bool Recorder::isNews(const Track& track, const LogSample& sample) const
{
    if (track.lostMs)
        return true;
    if (sample.state != track.state)
        return true;
    if (sample.state != SampleState::Fresh)
        return false;
    return sample.text != track.text || (m_what == What::Refreshes && sample.timeMs != track.answeredMs);
}

void Recorder::record(const LogSample& sample)
{
    Track& track = m_tracks[static_cast<std::size_t>(sample.series)];
    if (track.lostMs) {
        if (!m_sink({sample.series, *track.lostMs, SampleState::Lost, QString()}))
            return;
        track.lostMs.reset();
    }
    if (!m_sink(sample)) {
        track.lostMs = sample.timeMs;
        return;
    }
    track.state = sample.state;
    track.text = sample.text;
    if (sample.state == SampleState::Fresh)
        track.answeredMs = sample.timeMs;
}

} // namespace plc
