// SPDX-License-Identifier: MIT
/// \file
/// \brief The spool as a publisher sees it.
#ifndef GATEWAY_SERVICE_SPOOL_BACKLOG_H
#define GATEWAY_SERVICE_SPOOL_BACKLOG_H

#include "gateway/session/publisher.h"
#include "gateway/spool/spool.h"

namespace plc
{

class SpoolBacklog : public Backlog
{
public:
    explicit SpoolBacklog(Spool* spool) : m_spool(spool) {}

    std::vector<WaitingSample> take(std::size_t most) override
    {
        std::vector<WaitingSample> waiting;
        for (const TakenSample& taken : m_spool->take(static_cast<int>(most), m_taken)) {
            waiting.push_back({taken.sequence, taken.sample, taken.handedOutBefore});
            m_taken = taken.sequence;
        }
        return waiting;
    }

    void acknowledge(quint64 sequence) override { m_spool->acknowledge(sequence); }
    void rewind() override { m_taken = 0; }
    quint64 newest() const override { return m_spool->figures().newest; }

private:
    Spool* const m_spool;
    quint64 m_taken = 0; // up to here they were taken on this connection
};

} // namespace plc

#endif
