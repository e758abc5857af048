// SPDX-License-Identifier: MIT
/// \file
/// \brief What is worth publishing: changes, and now and then what has not changed.
#ifndef GATEWAY_VALUES_CHANGE_FILTER_H
#define GATEWAY_VALUES_CHANGE_FILTER_H

#include "gateway/values/sample.h"

#include <vector>

namespace plc
{

/// What was published last of each variable, and whether the next sample differs enough.
///
/// Published is the first sample of a variable; each whose quality is another than before; a good one that is further
/// from the value published last than the dead band, or of another kind; and one that comes when the republish
/// interval is over. A sample that is not good keeps the time of the last good one: whatever the caller says, what is
/// not refreshed gets no new time.
class ChangeFilter
{
public:
    /// \param deadbands of each variable, at least 0: a number that moved by so much or less is no change
    /// \param republishMs 0: never without a change
    explicit ChangeFilter(std::vector<double> deadbands, qint64 republishMs = 0);

    /// Takes \a sample for published when it is to be published.
    /// \param sample its time is set back where it is not good
    /// \param nowMs by any clock that never goes back
    bool isNews(Sample* sample, qint64 nowMs);

    /// \return the variables whose republish interval is over, so that isNews() lets their next sample pass
    std::vector<quint32> due(qint64 nowMs) const;

    /// \return what was published last; its time is -1 and it has no value before the first
    const Sample& last(quint32 variable) const { return m_published[variable].sample; }

    /// \return true when something was published of it
    bool wasPublished(quint32 variable) const { return m_published[variable].isThere; }

private:
    struct Published {
        Sample sample;
        bool isThere = false;
        qint64 goodAt = -1; ///< of the last good sample, published or not
        qint64 doneMs = 0;
    };

    bool isDue(const Published& published, qint64 nowMs) const;
    bool isChange(const Sample& before, const Sample& sample) const;

    const std::vector<double> m_deadbands;
    const qint64 m_republishMs;
    std::vector<Published> m_published; // by variable
};

/// \return true when \a value is further from \a before than \a deadband, or is of another kind; what is no number
///         differs from every number and from nothing that is none either
bool isBeyond(const SampleValue& before, const SampleValue& value, double deadband);

} // namespace plc

#endif
