// SPDX-License-Identifier: MIT
#include "allocation_sweep.h"

#include "driver_state.h"

namespace
{

// A one-shot read by address text, of more than one block unless the count is small.
RW_VAR OnceRead(int area, const char* text, int count)
{
    RW_VAR var = Keyed(Variable(area, 0, count), 5, 6);
    var.name2 = text;
    return var;
}

class AddingSweep : public AllocationSweep
{
protected:
    RW_VAR var;

    /// Queues \a request; the record is given back with what the call made of it.
    void sweepOnceRead(
        const RW_VAR& request, const std::function<void()>& queued = [] {})
    {
        sweep({[=] {
                   var = request;
                   queued();
               },
               [this] { return AddListOnceReadVar(&var, 0); }, 0, [this] { return Describe(var); }});
    }
};

} // namespace

TEST_F(AddingSweep, ACyclicRead)
{
    sweep({[this] { var = Variable(9, 0, 2); }, [this] { return AddListReadVar(&var); }});
}

TEST_F(AddingSweep, ACyclicReadBehindAnother)
{
    sweep({[this] {
               queueReadOf(1, 3);
               var = Variable(9, 0, 2);
           },
           [this] { return AddListReadVar(&var); }, 1});
}

TEST_F(AddingSweep, ADirectWrite)
{
    sweep({[this] { var = Write(9, 0, 1, "34 12"); }, [this] { return AddListWriteVar(&var, 1); }});
}

TEST_F(AddingSweep, AWriteBehindOthers)
{
    sweep({[this] {
               queueWriteOf(1, 3);
               queueWriteOf(1, 4);
               var = Write(9, 0, 1, "34 12");
           },
           [this] { return AddListWriteVar(&var, 0); }, 2});
}

TEST_F(AddingSweep, ADirectOneShotRead)
{
    sweep({[this] { var = OnceRead(9, "0", 250); }, [this] { return AddListOnceReadVar(&var, 1); }});
}

TEST_F(AddingSweep, AOneShotReadOfOnePiece)
{
    sweepOnceRead(OnceRead(9, "7", 2));
}

// A read that is queued in part would be reported as done although nobody read the rest.
TEST_F(AddingSweep, AOneShotReadOfThreePieces)
{
    sweepOnceRead(OnceRead(9, "0", 250));
}

TEST_F(AddingSweep, AOneShotReadWhoseFirstPieceIsQueuedAlready)
{
    sweepOnceRead(OnceRead(9, "0", 250), [] {
        RW_VAR first = OnceRead(9, "0", 100);
        AddListOnceReadVar(&first, 0);
    });
}

TEST_F(AddingSweep, AOneShotReadOfBitsInsideWords)
{
    sweepOnceRead(OnceRead(8, "10.3", 2000));
}

TEST_F(AddingSweep, AOneShotReadWithALongAddressText)
{
    sweepOnceRead(OnceRead(9, std::string(400, '0').c_str(), 1));
}
