// SPDX-License-Identifier: MIT
// How often the store of multi-station mode is walked: each walk may take as long as the store.
//
// The linker puts countedFind() in the place of ExtendFindSameVar() in this program (see tests/CMakeLists.txt).
#include "driver/driver_fixture.h"

int realFind(int station, int area, int address) asm("__real__Z17ExtendFindSameVariii");
int countedFind(int station, int area, int address) asm("__wrap__Z17ExtendFindSameVariii");

namespace
{

int walks;

class StoreWalks : public DriverTest
{
protected:
    void SetUp() override
    {
        DriverTest::SetUp();
        info.multiStation = 1;
        info.hostWriteMode = 0;
    }

    static int whenRead(int area, const char* address, int count)
    {
        QString text(address);
        QByteArray out;
        walks = 0;
        GetRegisterData(0, area, &text, 1, &out, count);
        return walks;
    }

    static int whenWritten(int area, const char* address, int count)
    {
        QString name("level");
        QString text(address);
        QByteArray data(4 * count, '\1');
        walks = 0;
        SetRegisterData(&name, area, &text, 1, &data, count, 1, 0);
        return walks;
    }
};

} // namespace

int countedFind(int station, int area, int address)
{
    ++walks;
    return realFind(station, area, address);
}

TEST_F(StoreWalks, OneForTheBitsInsideOneWord)
{
    struct Row {
        const char* address;
        int count;
        int words;
    };
    const Row rows[] = {
        {"3.0", 1, 1}, {"3.0", 16, 1}, {"3.7", 9, 1}, {"3.14", 4, 2}, {"0.0", 160, 10}, {"65534.15", 5, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.address) + " count " + std::to_string(row.count));
        EXPECT_EQ(row.words, whenRead(8, row.address, row.count));
        EXPECT_EQ(row.words, whenWritten(8, row.address, row.count));
        EXPECT_EQ(row.words, whenRead(8, row.address, row.count)) << "once the words have entries";
    }
}

TEST_F(StoreWalks, OneForEachOtherElement)
{
    EXPECT_EQ(5, whenRead(1, "0", 5));
    EXPECT_EQ(5, whenRead(9, "0", 5));
    EXPECT_EQ(4, whenRead(14, "200", 5));
    EXPECT_EQ(5, whenWritten(1, "0", 5));
    EXPECT_EQ(5, whenWritten(9, "0", 5));
    EXPECT_EQ(5, whenWritten(14, "200", 5));
}

TEST_F(StoreWalks, NoneForBitsBehindTheLastWord)
{
    EXPECT_EQ(0, whenRead(8, "65535.0", 20));
    EXPECT_EQ(0, whenWritten(8, "65535.0", 20));
}
