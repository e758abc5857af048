// SPDX-License-Identifier: MIT
#include "window/trend/trend_store.h"

#include "runtime/model/shown_number.h"

#include <limits>
#include <tuple>

namespace plc
{

namespace
{

const double noFreshValue = std::numeric_limits<double>::quiet_NaN();

} // namespace

void TrendStore::setSource(Source* source)
{
    m_series.clear();
    m_source = source;
    if (!source)
        return;
    const std::vector<ListedVariable>& variables = source->watched().variables;
    int numbers = 0;
    for (const ListedVariable& variable : variables)
        numbers += numbersOf(variable);
    if (numbers > mostRecordedFromTheBeginning)
        return;
    for (int variable = 0; variable < static_cast<int>(variables.size()); ++variable) {
        for (int index = 0; index < numbersOf(variables[static_cast<std::size_t>(variable)]); ++index)
            want({variable, index});
    }
}

bool TrendStore::want(const CurveKey& key)
{
    if (!m_source || key.index >= numbersOf(variable(key)))
        return false;
    m_series.try_emplace(key);
    m_source->setRecorded(key.variable, true);
    return true;
}

void TrendStore::apply(const Snapshot& news)
{
    for (const CurveSample& sample : news.samples) {
        auto found = m_series.lower_bound({sample.index, 0});
        for (; found != m_series.end() && found->first.variable == sample.index; ++found) {
            const double number = sample.values.empty() ? noFreshValue
                                                        : shownNumber(variable(found->first), sample.values,
                                                                      found->first.index);
            found->second.add(sample.atMs, number);
        }
    }
}

const TrendSeries* TrendStore::series(const CurveKey& key) const
{
    const auto found = m_series.find(key);
    return found == m_series.end() ? nullptr : &found->second;
}

const ListedVariable& TrendStore::variable(const CurveKey& key) const
{
    return m_source->watched().variables[static_cast<std::size_t>(key.variable)];
}

QString TrendStore::name(const CurveKey& key) const
{
    const ListedVariable& listed = variable(key);
    return numbersOf(listed) == 1 ? listed.name.text() : QStringLiteral("%1[%2]").arg(listed.name).arg(key.index);
}

bool TrendStore::isSwitch(const CurveKey& key) const
{
    return variable(key).type == ValueType::Bit;
}

std::vector<CurveKey> TrendStore::keysOf(const QString& name) const
{
    std::vector<CurveKey> keys;
    if (!m_source)
        return keys;
    const std::vector<ListedVariable>& variables = m_source->watched().variables;
    for (std::size_t variable = 0; variable < variables.size(); ++variable) {
        if (variables[variable].name != name)
            continue;
        for (int index = 0; index < numbersOf(variables[variable]); ++index)
            keys.push_back({static_cast<int>(variable), index});
    }
    return keys;
}

} // namespace plc
