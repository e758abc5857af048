// SPDX-License-Identifier: MIT
/// \file
/// \brief What a reply must do to the driver, worked out from the state in front of it.
#ifndef FUZZ_REPLY_CHECKS_H
#define FUZZ_REPLY_CHECKS_H

#include "driver/modbus_rtu_master.h"
#include "fuzz/callbacks.h"
#include "fuzz/memory_model.h"

#include <vector>

namespace fuzz
{

/// Made in front of a call of DataCom(), compared behind it.
class ReplyExpectation
{
public:
    /// \param reply as handed to DataCom(), may be null
    /// \param length as announced to it
    ReplyExpectation(const QByteArray* reply, int length);

    /// \return whether the data of the reply is to be filed
    bool filed() const { return m_filed; }
    const Protocol& request() const { return m_request; }
    const QueuedBit& queuedBit() const { return m_bit; }

    /// \param reply may be null
    void compare(const RW_VAR* result, const QByteArray* reply, const Callbacks& callbacks) const;

private:
    void judge(const QByteArray* reply, int length);
    bool lacksWord(const QByteArray* reply) const;
    void compareFrames(const QByteArray* reply) const;
    void compareSuccess(const QByteArray* reply) const;
    void compareFailure() const;
    void compareLists() const;
    void compareCallbacks(const Callbacks& callbacks) const;
    int left(const std::vector<int>& stations, int kind) const;

    bool m_outstanding;
    bool m_local = false;
    bool m_good = true;
    bool m_final = false;    // a failure that is not retried
    bool m_finished = false; // the request leaves its list, or goes to its end
    bool m_filed = false;
    int m_code = PLC_DONE;
    Protocol m_request;
    QueuedBit m_bit;
    COMINFO m_settings;
    int m_frames;
    int m_reads;
    int m_kind;
    std::vector<int> m_writes; // stations of the queued requests
    std::vector<int> m_onceReads;
};

/// \return the stations of the requests of \a list, in its order
std::vector<int> stationsOf(const QList<RW_VAR>& list);

/// Frames are compared with all that a runtime can see of them.
bool isSameFrame(const Protocol& a, const Protocol& b);

} // namespace fuzz

#endif
