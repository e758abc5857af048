// SPDX-License-Identifier: MIT
#include "gateway/values/change_filter.h"

#include <algorithm>
#include <cmath>

namespace plc
{

namespace
{

bool isFurther(double before, double value, double deadband)
{
    if (std::isnan(before) || std::isnan(value))
        return std::isnan(before) != std::isnan(value);
    if (std::isinf(before) || std::isinf(value))
        return before != value;
    return std::abs(value - before) > deadband;
}

/// Exact where a double would not be.
template <class Whole>
bool isWholeFurther(Whole before, Whole value, double deadband)
{
    const auto high = static_cast<quint64>(std::max(before, value));
    const auto low = static_cast<quint64>(std::min(before, value));
    const quint64 distance = high - low;
    return distance != 0 && static_cast<double>(distance) > deadband;
}

} // namespace

bool isBeyond(const SampleValue& before, const SampleValue& value, double deadband)
{
    if (before.index() != value.index())
        return true;
    if (const auto* real = std::get_if<double>(&value))
        return isFurther(std::get<double>(before), *real, deadband);
    if (const auto* whole = std::get_if<qint64>(&value))
        return isWholeFurther(std::get<qint64>(before), *whole, deadband);
    if (const auto* natural = std::get_if<quint64>(&value))
        return isWholeFurther(std::get<quint64>(before), *natural, deadband);
    return before != value;
}

ChangeFilter::ChangeFilter(std::vector<double> deadbands, qint64 republishMs)
    : m_deadbands(std::move(deadbands)), m_republishMs(republishMs), m_published(m_deadbands.size())
{
}

bool ChangeFilter::isNews(Sample* sample, qint64 nowMs)
{
    Published& published = m_published[sample->variable];
    if (sample->quality == SampleQuality::Good)
        published.goodAt = sample->at;
    else if (published.goodAt >= 0)
        sample->at = std::min(sample->at, published.goodAt);
    const bool isNews = !published.isThere || isDue(published, nowMs) || isChange(published.sample, *sample);
    if (!isNews)
        return false;
    published.sample = *sample;
    published.isThere = true;
    published.doneMs = nowMs;
    return true;
}

/// A value that is not good any more is as old as it was: it is no news, however often it is told.
bool ChangeFilter::isChange(const Sample& before, const Sample& sample) const
{
    if (before.quality != sample.quality)
        return true;
    return isBeyond(before.value, sample.value, m_deadbands[sample.variable]);
}

bool ChangeFilter::isDue(const Published& published, qint64 nowMs) const
{
    return m_republishMs > 0 && published.isThere && nowMs - published.doneMs >= m_republishMs;
}

std::vector<quint32> ChangeFilter::due(qint64 nowMs) const
{
    std::vector<quint32> variables;
    for (std::size_t variable = 0; variable < m_published.size(); ++variable) {
        if (isDue(m_published[variable], nowMs))
            variables.push_back(static_cast<quint32>(variable));
    }
    return variables;
}

} // namespace plc
