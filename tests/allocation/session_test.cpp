// SPDX-License-Identifier: MIT
// A whole session of a runtime in which any one allocation fails: with every refused call made again, the
// controller sees the same frames and the driver ends in the same state as if nothing had failed.
#include "allocation_sweep.h"

#include "driver_state.h"

namespace
{

const int TURNS = 40;

HOST_VAR Cyclic(const char* address)
{
    HOST_VAR var = HOST_VAR();
    var.area = 9;
    var.station = 1;
    var.address = QString(address);
    var.count = 2;
    return var;
}

// With a sanitizer the C library's allocations, Qt's arrays among them, do not fail.
#ifdef PLC_SANITIZED
const int LEAST_FAILURES = 10;
#else
const int LEAST_FAILURES = 30;
#endif

class Session : public AllocationSweep
{
protected:
    void SetUp() override
    {
        AllocationSweep::SetUp();
        m_cyclic = {Cyclic("300"), Cyclic("600")};
        m_once = Keyed(Variable(9, 0, 250), 8, 9);
        m_once.name2 = QString("0");
        m_reply.reserve(1000);
        frames.reserve(100000);
        frames.clear();
    }

    void prepareFor(int multiStation)
    {
        SetUp();
        info.multiStation = multiStation;
    }

    /// Rebuilds, writes and reads once, then polls and answers. The pieces of the large writes wait behind a
    /// small one, so that those which were queued before memory ran out are replaced, not doubled.
    void run()
    {
        unlessRefused(
            [this] { return ReCreatReadVarList(&m_cyclic) >= 0 && PLC_driver.readList.size() == 2; });
        unlessRefused([this] { return SetRegisterData(&m_name, 9, &m_wordText, 1, &m_data, 1, 5, 5) > 0; });
        unlessRefused([this] { return SetRegisterData(&m_name, 9, &m_wordText, 1, &m_data, 250, 5, 6) > 0; });
        unlessRefused([this] { return SetRegisterData(&m_name, 8, &m_bitText, 1, &m_data, 2, 5, 7) > 0; });
        unlessRefused([this] { return AddListOnceReadVar(&m_once, 0) > 0; });
        for (int turn = 0; turn < TURNS; ++turn)
            unlessRefused([this] { return cycleOnce(); });
    }

    /// Every frame that was answered, one after the other.
    std::string frames;

private:
    /// Makes a call that may be refused for want of memory, once more at most.
    template <typename Call>
    static void unlessRefused(const Call& call)
    {
        EXPECT_TRUE(call() || call());
    }

    bool cycleOnce()
    {
        const Protocol* next = ComCommunication();
        if (!next)
            return false;
        const std::size_t sent = frames.size();
        frames.append(next->frame.constData(), static_cast<std::size_t>(next->frame.size()));
        m_reply.resize(next->replyLength);
        m_reply.fill('\x21');
        const bool answered = DataCom(&m_reply, m_reply.size())->result != PLC_RETRYING;
        if (!answered)
            frames.resize(sent);
        return answered;
    }

    QList<HOST_VAR> m_cyclic;
    RW_VAR m_once;
    QString m_name = QString("level");
    QString m_wordText = QString("0");
    QString m_bitText = QString("3.7");
    QByteArray m_data = QByteArray(500, '\1');
    QByteArray m_reply;
};

} // namespace

TEST_F(Session, AnyOneFailedAllocationChangesNothingInTheEnd)
{
    for (int multiStation : {0, 1}) {
        prepareFor(multiStation);
        run();
        const std::string expectedFrames = frames;
        const std::string expectedState = DescribeDriver();
        bool failed = true;
        int nth = 0;
        while (failed && !HasFailure()) {
            prepareFor(multiStation);
            {
                AllocationWatch watch(++nth);
                EXPECT_NO_THROW(run());
            }
            failed = AllocationWatch::failed();
            EXPECT_EQ(expectedFrames, frames) << "when allocation " << nth << " fails";
            EXPECT_EQ(expectedState, DescribeDriver()) << "when allocation " << nth << " fails";
        }
        EXPECT_GT(nth, LEAST_FAILURES) << "not much failed";
    }
}
