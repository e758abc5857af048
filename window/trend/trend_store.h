// SPDX-License-Identifier: MIT
/// \file
/// \brief Which variables are recorded for curves, and what is known of them.
#ifndef WINDOW_TREND_TREND_STORE_H
#define WINDOW_TREND_TREND_STORE_H

#include "window/session/source.h"
#include "window/trend/trend_series.h"

#include <map>
#include <tuple>

namespace plc
{

/// One number of a variable.
struct CurveKey {
    int variable = 0;
    int index = 0; ///< among its values
    bool operator<(const CurveKey& other) const
    {
        return std::tie(variable, index) < std::tie(other.variable, other.index);
    }
    bool operator==(const CurveKey& other) const
    {
        return variable == other.variable && index == other.index;
    }
};

/// All variables of a small list are recorded from the beginning, so that a curve begins with what was before
/// it was asked for; of a large one those that were asked for.
class TrendStore
{
public:
    static constexpr int mostRecordedFromTheBeginning = 200; ///< numbers, each of which takes 160 KB

    /// Begins anew. \param source outlives its use here; null: nothing is known
    void setSource(Source* source);
    void apply(const Snapshot& news);

    /// From now on it is recorded. \return false for what is no number
    bool want(const CurveKey& key);

    /// \return what is known; null where nothing is
    const TrendSeries* series(const CurveKey& key) const;

    /// \return "speed", or "speed[1]" of several values; logs of values call them so, too
    QString name(const CurveKey& key) const;
    const ListedVariable& variable(const CurveKey& key) const;
    bool isSwitch(const CurveKey& key) const;

    std::vector<CurveKey> keysOf(const QString& variable) const;
    std::size_t recorded() const { return m_series.size(); }

private:
    Source* m_source = nullptr;
    std::map<CurveKey, TrendSeries> m_series;
};

} // namespace plc

#endif
