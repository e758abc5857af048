// SPDX-License-Identifier: MIT
#include "runtime/modbus/request_pieces.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace
{

using namespace plc;
using testing::HasSubstr;
using testing::IsEmpty;

const Settings oneStation = [] {
    Settings settings;
    settings.driverPath = QStringLiteral("driver");
    settings.station = 3;
    return settings;
}();

Variable variable(int area, int element, int count, int station = 3)
{
    Variable result;
    result.area = area;
    result.element = element;
    result.count = count;
    result.station = station;
    return result;
}

/// "area:element+count ..." of what is read
std::string asked(const Variable& whole, int maxBlockCount)
{
    std::string text;
    for (const ReadPiece& piece : readPieces(whole, maxBlockCount))
        text += std::to_string(piece.asked.area) + ":" + std::to_string(piece.asked.element) + "+" +
                std::to_string(piece.asked.count) + " ";
    return text;
}

std::string shown(const Variable& whole, int maxBlockCount)
{
    std::string text;
    for (const ReadPiece& piece : readPieces(whole, maxBlockCount))
        text += std::to_string(piece.shown.area) + ":" + std::to_string(piece.shown.element) + "+" +
                std::to_string(piece.shown.count) + " ";
    return text;
}

std::string written(const Variable& whole, int maxBlockCount)
{
    std::string text;
    for (const Variable& piece : writePieces(whole, maxBlockCount))
        text += std::to_string(piece.element) + "+" + std::to_string(piece.count) + " ";
    return text;
}

TEST(ReadPieces, HoldWhatOneRequestMayRead)
{
    EXPECT_EQ(asked(variable(9, 10, 250), 100), "9:10+100 9:110+100 9:210+50 ");
    EXPECT_EQ(asked(variable(9, 0, 126), 125), "9:0+125 9:125+1 ");
    EXPECT_EQ(asked(variable(2, 0, 801), 100), "2:0+800 2:800+1 ");
    EXPECT_EQ(asked(variable(2, 0, 1001), 125), "2:0+1000 2:1000+1 ");
}

TEST(ReadPieces, OfDoubleWordsStayWithinTheRegistersOfARequest)
{
    EXPECT_EQ(asked(variable(14, 0, 63), 125), "14:0+62 14:62+1 ");
    EXPECT_EQ(asked(variable(14, 0, 3), 3), "14:0+2 14:2+1 ");
    EXPECT_EQ(asked(variable(14, 0, 2), 2), "14:0+1 14:1+1 ");
}

TEST(ReadPieces, OfBitsInWordsReadTheWordsThatHoldThem)
{
    EXPECT_EQ(asked(variable(8, 163, 1), 100), "9:10+1 ");
    EXPECT_EQ(asked(variable(8, 14, 3), 100), "9:0+2 ");
    EXPECT_EQ(asked(variable(8, 14, 40), 2), "9:0+2 9:2+2 ");
    EXPECT_EQ(shown(variable(8, 14, 40), 2), "8:14+18 8:32+22 ");
}

TEST(WritePieces, HoldWhatTheDriverQueuesAsOneRequest)
{
    EXPECT_EQ(written(variable(1, 5, 3), 100), "5+1 6+1 7+1 ");
    EXPECT_EQ(written(variable(8, 5, 2), 100), "5+1 6+1 ");
    EXPECT_EQ(written(variable(9, 0, 250), 100), "0+100 100+100 200+50 ");
    EXPECT_EQ(written(variable(9, 0, 124), 125), "0+123 123+1 ");
    EXPECT_EQ(written(variable(14, 0, 62), 100), "0+61 61+1 ");
}

TEST(DriverCounts, AreOneMoreForReadsAndInWordsForWritesOfDoubleWords)
{
    EXPECT_EQ(driverReadCount(14, 1), 2);
    EXPECT_EQ(driverWriteCount(14, 1), 2);
    EXPECT_EQ(driverReadCount(14, 5), 6);
    EXPECT_EQ(driverWriteCount(14, 5), 10);
    EXPECT_EQ(driverReadCount(9, 5), 5);
    EXPECT_EQ(driverWriteCount(9, 5), 5);
    EXPECT_EQ(driverReadCount(0, 5), 5);
}

TEST(ReadRefusal, AllowsEveryArea)
{
    for (int area = 0; area <= 14; ++area)
        EXPECT_THAT(readRefusal(variable(area, 0, 1), oneStation).toStdString(), IsEmpty()) << area;
    EXPECT_THAT(readRefusal(variable(9, 65534, 1), oneStation).toStdString(), IsEmpty()) << "the last word";
    EXPECT_THAT(readRefusal(variable(9, 65532, 3), oneStation).toStdString(), IsEmpty());
}

TEST(ReadRefusal, NamesWhatIsWrong)
{
    EXPECT_THAT(readRefusal(variable(15, 0, 1), oneStation).toStdString(), HasSubstr("15 is no area"));
    EXPECT_THAT(readRefusal(variable(9, 65534, 2), oneStation).toStdString(),
                HasSubstr("do not lie in area 9"));
    EXPECT_THAT(readRefusal(variable(9, 0, 2147483647), oneStation).toStdString(),
                HasSubstr("do not lie in"));
    EXPECT_THAT(readRefusal(variable(9, -1, 1), oneStation).toStdString(), HasSubstr("do not lie in"));
    EXPECT_THAT(readRefusal(variable(9, 0, 0), oneStation).toStdString(), HasSubstr("do not lie in"));
    EXPECT_THAT(readRefusal(variable(9, 0, 1, 4), oneStation).toStdString(), HasSubstr("only station 3"));
    EXPECT_THAT(readRefusal(variable(9, 0, 1, 256), oneStation).toStdString(), HasSubstr("no station"));
}

TEST(ReadRefusal, KnowsThatNobodyAnswersABroadcast)
{
    Settings settings = oneStation;
    settings.station = 0;
    EXPECT_THAT(readRefusal(variable(9, 0, 1, 0), settings).toStdString(), HasSubstr("broadcast"));
}

TEST(WriteRefusal, KnowsTheWritesThatTheDriverCannotBuild)
{
    Settings settings = oneStation;
    settings.multiStation = true;
    EXPECT_THAT(writeRefusal(variable(0, 0, 1), {1}, settings).toStdString(), HasSubstr("only be read"));
    EXPECT_THAT(writeRefusal(variable(8, 0, 1, 0), {1}, settings).toStdString(), HasSubstr("bit in a word"));
    EXPECT_THAT(writeRefusal(variable(9, 0, 1, 0), {1}, settings).toStdString(), IsEmpty());
}

TEST(WriteRefusal, WantsOneFittingValueForEachElement)
{
    EXPECT_THAT(writeRefusal(variable(9, 0, 2), {1}, oneStation).toStdString(),
                HasSubstr("1 value given for 2 elements"));
    EXPECT_THAT(writeRefusal(variable(9, 0, 1), {1, 2}, oneStation).toStdString(),
                HasSubstr("2 values given for 1 element"));
    EXPECT_THAT(writeRefusal(variable(9, 0, 1), {65536}, oneStation).toStdString(),
                HasSubstr("at most 65535"));
    EXPECT_THAT(writeRefusal(variable(1, 0, 1), {2}, oneStation).toStdString(), HasSubstr("at most 1"));
    EXPECT_THAT(writeRefusal(variable(14, 0, 1), {0xFFFFFFFF}, oneStation).toStdString(), IsEmpty());
}

TEST(WithStation, FillsInTheStationOfTheSettings)
{
    EXPECT_EQ(withStation(variable(9, 0, 1, -1), oneStation).station, 3);
    EXPECT_EQ(withStation(variable(9, 0, 1, 7), oneStation).station, 7);
}

TEST(Overlaps, NeedsCommonElementsOfOneStation)
{
    EXPECT_TRUE(overlaps(variable(9, 0, 5), variable(9, 4, 1)));
    EXPECT_FALSE(overlaps(variable(9, 0, 5), variable(9, 5, 1)));
    EXPECT_FALSE(overlaps(variable(9, 0, 5), variable(10, 0, 5)));
    EXPECT_FALSE(overlaps(variable(9, 0, 5, 1), variable(9, 0, 5, 2)));
    EXPECT_TRUE(overlaps(variable(9, 0, 5, 0), variable(9, 0, 5, 2)));
}

TEST(Overlaps, SeesBitsInTheirWords)
{
    EXPECT_TRUE(overlaps(variable(8, 35, 1), variable(9, 2, 1)));
    EXPECT_TRUE(overlaps(variable(9, 2, 1), variable(8, 35, 1)));
    EXPECT_FALSE(overlaps(variable(8, 35, 1), variable(9, 3, 1)));
    EXPECT_FALSE(overlaps(variable(8, 35, 1), variable(8, 36, 1)));
    EXPECT_TRUE(overlaps(variable(8, 35, 2), variable(8, 36, 1)));
}

Variable valuesOf(int elementsEach, Variable run)
{
    run.valueElements = elementsEach;
    return run;
}

TEST(ReadPieces, CutNoValueApart)
{
    for (const int elementsEach : {1, 2}) {
        const Variable run = valuesOf(elementsEach, variable(9, 1, 500));
        for (int maxBlockCount = smallestBlockCount; maxBlockCount <= largestBlockCount; ++maxBlockCount) {
            int next = run.element;
            for (const ReadPiece& piece : readPieces(run, maxBlockCount)) {
                EXPECT_EQ(piece.asked.element, next);
                EXPECT_EQ(piece.asked.count % elementsEach, 0) << maxBlockCount;
                EXPECT_LE(piece.asked.count, maxBlockCount);
                next += piece.asked.count;
            }
            EXPECT_EQ(next, endOf(run)) << maxBlockCount;
        }
    }
}

TEST(WritePieces, CutNoValueApart)
{
    EXPECT_EQ(writePieces(valuesOf(2, variable(9, 0, 8)), 5).at(1).element, 4);
    EXPECT_EQ(writePieces(valuesOf(4, variable(9, 0, 240)), 125).at(1).element, 120)
        << "Modbus writes 123 at most";
}

TEST(Refusals, KeepOffAValueThatDoesNotFitIntoOneRequest)
{
    Settings settings = oneStation;
    settings.maxBlockCount = 3;
    const Variable wide = valuesOf(4, variable(9, 0, 8));
    EXPECT_THAT(readRefusal(withStation(wide, settings), settings).toStdString(), HasSubstr("--max-block"));
    EXPECT_THAT(writeRefusal(withStation(wide, settings), std::vector<quint32>(8), settings).toStdString(),
                HasSubstr("--max-block"));
    settings.maxBlockCount = 4;
    EXPECT_THAT(readRefusal(withStation(wide, settings), settings).toStdString(), IsEmpty());
}

TEST(Refusals, KeepOffPartsOfValues)
{
    const Variable half = withStation(valuesOf(2, variable(9, 0, 3)), oneStation);
    EXPECT_THAT(readRefusal(half, oneStation).toStdString(), HasSubstr("no whole number of values"));
    const Variable none = withStation(valuesOf(0, variable(9, 0, 3)), oneStation);
    EXPECT_THAT(readRefusal(none, oneStation).toStdString(), HasSubstr("no whole number of values"));
}

TEST(CyclicRefusal, KeepsValuesOfSeveralDoubleWordsOffRemoteFrames)
{
    Settings remote = oneStation;
    remote.remoteMode = true;
    const Variable wide = valuesOf(2, variable(14, 0, 2));
    EXPECT_THAT(cyclicRefusal(wide, remote).toStdString(), HasSubstr("--remote"));
    EXPECT_THAT(cyclicRefusal(wide, oneStation).toStdString(), IsEmpty());
    EXPECT_THAT(readRefusal(wide, remote).toStdString(), IsEmpty()) << "one request reads it whole";
    EXPECT_THAT(cyclicRefusal(variable(14, 0, 2), remote).toStdString(), IsEmpty());
    EXPECT_THAT(cyclicRefusal(valuesOf(4, variable(9, 0, 4)), remote).toStdString(), IsEmpty());
}

TEST(CyclicRefusal, IsThatOfReadsToo)
{
    EXPECT_THAT(cyclicRefusal(variable(15, 0, 1), oneStation).toStdString(), HasSubstr("15 is no area"));
    Settings remote = oneStation;
    remote.remoteMode = true;
    EXPECT_THAT(cyclicRefusal(valuesOf(2, variable(14, 0, 3)), remote).toStdString(),
                HasSubstr("no whole number of values"));
}

} // namespace
