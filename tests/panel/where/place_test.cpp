// SPDX-License-Identifier: MIT
// What is told of a variable's place, compared with the frames that the driver builds.

#include "panel/where/place.h"

#include "runtime/cycle/driver_blocks.h"
#include "runtime/cycle/write_frames.h"
#include "runtime/model/modbus_address.h"
#include "support/application.h"
#include "support/built_files.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;

// Fields of a Modbus TCP frame, counted here once more.
int byteOf(const QByteArray& frame, int at)
{
    return static_cast<unsigned char>(frame.at(at));
}

int functionOf(const QByteArray& frame)
{
    return byteOf(frame, 7);
}

int addressOf(const QByteArray& frame)
{
    return byteOf(frame, 8) << 8 | byteOf(frame, 9);
}

/// \return coils or registers of a frame
int quantityOf(const QByteArray& frame)
{
    const int function = functionOf(frame);
    return function == 5 || function == 6 ? 1 : byteOf(frame, 10) << 8 | byteOf(frame, 11);
}

plc::Settings settings()
{
    plc::Settings settings;
    settings.driverPath = QString::fromUtf8(builtDriver());
    settings.maxBlockCount = 125;
    return settings;
}

plc::Variable variable(int area, int element, int count)
{
    plc::Variable elements{area, element, count, 1};
    return elements;
}

class PlaceOfAnArea : public testing::TestWithParam<int>
{
protected:
    static void SetUpTestSuite() { test::needApplication(); }

    /// One at the begin, several in the midst, the last one that has an address.
    std::vector<plc::Variable> samples() const
    {
        const int area = GetParam();
        const int last = plc::modbusElements(area) - 1;
        return {variable(area, 0, 1), variable(area, 17, 1), variable(area, 17, 3), variable(area, 30, 20),
                variable(area, last, 1)};
    }
};

TEST_P(PlaceOfAnArea, IsThatOfTheDriversReads)
{
    for (const plc::Variable& sample : samples()) {
        const plc::Place place = plc::placeOf(sample);
        const auto blocks = plc::BlockPlanner(settings()).blocks({sample}, 62);
        ASSERT_EQ(blocks.size(), 1u) << plc::variableText(sample).toStdString();
        const QByteArray& frame = blocks.front().frame;
        EXPECT_THAT(place.readFunctions, ElementsAre(functionOf(frame)));
        EXPECT_EQ(place.first, addressOf(frame)) << plc::variableText(sample).toStdString();
        EXPECT_EQ(place.last, addressOf(frame) + quantityOf(frame) - 1)
            << plc::variableText(sample).toStdString();
    }
}

TEST_P(PlaceOfAnArea, IsThatOfTheDriversWrites)
{
    for (const plc::Variable& sample : samples()) {
        const plc::Place place = plc::placeOf(sample);
        const auto frames = plc::framesOfWrite(
            settings(), sample, std::vector<quint32>(static_cast<std::size_t>(sample.count), 1));
        if (GetParam() == 0) {
            EXPECT_THAT(place.writeFunctions, IsEmpty());
            EXPECT_THAT(frames, IsEmpty());
            continue;
        }
        std::set<int> functions;
        int first = 65535;
        int last = 0;
        for (const plc::WriteFrame& each : frames) {
            functions.insert(functionOf(each.frame));
            first = std::min(first, addressOf(each.frame));
            last = std::max(last, addressOf(each.frame) + quantityOf(each.frame) - 1);
        }
        EXPECT_EQ(std::set<int>(place.writeFunctions.begin(), place.writeFunctions.end()), functions);
        EXPECT_EQ(place.writeFunctions.front(), functionOf(frames.front().frame));
        EXPECT_EQ(place.first, first) << plc::variableText(sample).toStdString();
        EXPECT_EQ(place.last, last) << plc::variableText(sample).toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Each, PlaceOfAnArea, testing::Range(0, 15));

TEST(Place, OfALongWriteNamesTheFunctionOfItsRestToo)
{
    EXPECT_THAT(plc::placeOf(variable(9, 0, 124)).writeFunctions, ElementsAre(16, 6));
}

TEST(Place, TellsWhichBitOfARegisterIsMeant)
{
    const plc::Place place = plc::placeOf(variable(8, 10 * 16 + 14, 4));
    EXPECT_EQ(place.first, 10);
    EXPECT_EQ(place.firstBit, 14);
    EXPECT_EQ(place.last, 11);
    EXPECT_EQ(place.lastBit, 1);
}

TEST(Place, OfABroadcastIsNotRead)
{
    plc::Variable everybody = variable(9, 5, 1);
    everybody.station = 0;
    EXPECT_THAT(plc::placeOf(everybody).readFunctions, IsEmpty());
    EXPECT_THAT(plc::placeOf(everybody).writeFunctions, ElementsAre(6));
    everybody.area = 8;
    EXPECT_THAT(plc::placeOf(everybody).writeFunctions, IsEmpty());
}

TEST(Place, IsWrittenInEachWayThatDocumentsUse)
{
    const plc::Place word = plc::placeOf(variable(9, 100, 2));
    EXPECT_EQ(plc::placeText(word).toStdString(), "registers 100-101");
    EXPECT_EQ(plc::hexAddressText(word).toStdString(), "0x0064-0x0065");
    EXPECT_EQ(plc::traditionalText(word).toStdString(), "40101-40102");
    const plc::Place bit = plc::placeOf(variable(2, 16, 1));
    EXPECT_EQ(plc::placeText(bit).toStdString(), "coil 16");
    EXPECT_EQ(plc::traditionalText(bit).toStdString(), "00017");
}

TEST(Place, HasSixTraditionalDigitsWhereFiveDoNotReach)
{
    EXPECT_EQ(plc::traditionalText(plc::placeOf(variable(9, 9998, 1))).toStdString(), "49999");
    EXPECT_EQ(plc::traditionalText(plc::placeOf(variable(9, 9999, 1))).toStdString(), "410000");
    EXPECT_EQ(plc::traditionalText(plc::placeOf(variable(9, 9998, 2))).toStdString(), "409999-410000");
    EXPECT_EQ(plc::traditionalText(plc::placeOf(variable(0, 15, 1))).toStdString(), "063504");
}

} // namespace
