// SPDX-License-Identifier: MIT
#include "allocation_sweep.h"

#include "image/extended_variables.h"

namespace
{

class RegisterSweep : public AllocationSweep
{
protected:
    /// Writes \a count elements that all differ from zero, after \a prepare.
    void sweepSet(
        int area, const char* address, int count, const std::function<void()>& prepare = [] {},
        Leaves leaves = Leaves::ALL_OR_NOTHING, Needs needs = Needs::NODES)
    {
        QString text(address);
        QByteArray data(4 * count, '\1');
        sweep({prepare,
               [&, area, count] { return SetRegisterData(&name, area, &text, 2, &data, count, 5, 6); },
               0,
               {},
               leaves,
               needs});
    }

    /// Writes \a count elements in pieces of \a block after \a prepare; the first pieces may stay.
    void sweepPieces(
        int area, const char* address, int count, int block, const std::function<void()>& prepare = [] {})
    {
        QString text(address);
        QByteArray data(4 * count, '\1');
        const auto write = [&, area](int elements) {
            return SetRegisterData(&name, area, &text, 2, &data, elements, 5, 6);
        };
        Situation situation = {prepare, [&] { return write(count); }, 0, {}, Leaves::FIRST_PIECES};
        for (int elements = block; elements < count; elements += block)
            situation.shorter.push_back([&write, elements] { write(elements); });
        sweep(situation);
    }

    /// Reads elements; the output is part of the state.
    void sweepGet(int area, const char* address, int count, const std::function<void()>& prepare, Needs needs)
    {
        QString text(address);
        QByteArray out;
        sweep({[&] {
                   out = fromHex("CC");
                   prepare();
               },
               [&, area, count] { return static_cast<int>(GetRegisterData(0, area, &text, 2, &out, count)); },
               0, [&out] { return toHex(out); }, Leaves::ALL_OR_NOTHING, needs});
    }

    void inMemory() { info.hostWriteMode = 0; }

    void perStation() { info.multiStation = 1; }

    QString name = QString("level");
};

} // namespace

TEST_F(RegisterSweep, AQueuedWriteOfOnePiece)
{
    sweepSet(9, "0", 2);
}

TEST_F(RegisterSweep, AQueuedWriteOfThreePieces)
{
    sweepPieces(9, "0", 250, 100);
}

TEST_F(RegisterSweep, AQueuedWriteOfThreeBits)
{
    sweepPieces(1, "0", 3, 1);
}

TEST_F(RegisterSweep, AQueuedWriteOfThreeBitsInsideWords)
{
    sweepPieces(8, "0.14", 3, 1);
}

TEST_F(RegisterSweep, AQueuedWriteOfDoubleWords)
{
    sweepPieces(14, "200", 240, 200); // 120 double words
}

TEST_F(RegisterSweep, AQueuedWriteOfThreePiecesOfWhichTwoReplaceOthers)
{
    sweepPieces(9, "0", 250, 100, [this] {
        queueWriteOf(1, 700);
        QString text("100");
        QByteArray data(300, '\2');
        SetRegisterData(&name, 9, &text, 2, &data, 150, 7, 8);
    });
}

// Once a reply failed, each piece is mirrored at once.
TEST_F(RegisterSweep, AQueuedWriteAfterAFailure)
{
    sweepPieces(9, "0", 250, 100, [] { PLC_driver.lastFailed = 1; });
}

TEST_F(RegisterSweep, AQueuedWriteToAStationAfterAFailure)
{
    sweepPieces(9, "0", 3, 2, [this] {
        perStation();
        info.maxBlockCount = 2;
        PLC_driver.lastFailed = 1;
    });
}

TEST_F(RegisterSweep, AWriteInMemory)
{
    for (int area : {1, 9, 14})
        sweepSet(
            area, area == 14 ? "200" : "0", 3, [this] { inMemory(); }, Leaves::ALL_OR_NOTHING, Needs::NONE);
}

TEST_F(RegisterSweep, AWriteOfBitsInsideWordsInMemory)
{
    sweepSet(
        8, "0.14", 3, [this] { inMemory(); }, Leaves::ALL_OR_NOTHING, Needs::MALLOC_ONLY);
}

TEST_F(RegisterSweep, AWriteInTheMemoryOfAStation)
{
    for (int area : {1, 8, 9, 14})
        sweepSet(
            area,
            area == 8    ? "0.14"
            : area == 14 ? "200"
                         : "0",
            3,
            [this] {
                inMemory();
                perStation();
            },
            Leaves::FINISHED_ELEMENTS);
}

TEST_F(RegisterSweep, AReadOfMemory)
{
    for (int area : {1, 8, 9, 14})
        sweepGet(
            area,
            area == 8    ? "0.0"
            : area == 14 ? "200"
                         : "0",
            3, [] { std::memset(&PLC_driver.image, 1, sizeof PLC_driver.image); }, Needs::MALLOC_ONLY);
}

TEST_F(RegisterSweep, AReadOfTheMemoryOfAStation)
{
    for (int area : {1, 8, 9, 14})
        sweepGet(
            area,
            area == 8    ? "0.14"
            : area == 14 ? "200"
                         : "0",
            3, [this] { perStation(); }, Needs::NODES);
}

TEST_F(RegisterSweep, FindingAValueOfAStationNeedsNoMemory)
{
    for (int address = 0; address < 100; ++address)
        ExtendFindSameVar(1, 9, address);
    {
        AllocationWatch watch;
        ExtendFindSameVar(1, 9, 99);
    }
    EXPECT_EQ(0, AllocationWatch::count());
}
