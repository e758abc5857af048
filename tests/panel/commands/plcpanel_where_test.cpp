// SPDX-License-Identifier: MIT
// plcpanel where as a process.

#include "panel/plcpanel_run.h"

#include <gmock/gmock.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryFile>

namespace
{

using test::plcpanel;
using test::RunResult;
using testing::HasSubstr;
using testing::Not;

const char* const machine = "name,area,address,station,count,type,order,scale,unit,access,comment\n"
                            "drive speed,9,100,,,int16,,0.1,m/min,,tenths\n"
                            "flow,9,110,3,,float32,ABCD,,l/h,r,\n"
                            "door,0,17,,,bit,,,,,\n";

class PlcpanelWhere : public testing::Test
{
protected:
    RunResult where(const QStringList& arguments, const char* list = machine)
    {
        QTemporaryFile file;
        EXPECT_TRUE(file.open());
        file.write(list);
        file.close();
        return run(arguments + QStringList{QStringLiteral("--vars"), file.fileName()});
    }

    static RunResult run(const QStringList& arguments)
    {
        return plcpanel(QStringList{QStringLiteral("where")} + arguments);
    }
};

TEST_F(PlcpanelWhere, TellsTypedVariablesAsATable)
{
    const RunResult told = run({QStringLiteral("9:100x2"), QStringLiteral("8:10.3"), QStringLiteral("0:17")});
    EXPECT_EQ(told.out,
              "VARIABLE  READ  WRITE  MODBUS             HEX            4XXXX        VALUE\n"
              "9:100x2   3     16     registers 100-101  0x0064-0x0065  40101-40102\n"
              "8:10.3    3     3, 6   register 10        0x000A         40011        bit 3\n"
              "0:17      1     -      coil 63503         0xF80F         063504\n"
              "\n"
              "Functions: 1 read coils, 3 read holding registers, 6 write single register, 16 write multiple "
              "registers.\n");
    EXPECT_EQ(told.errors, "");
    EXPECT_EQ(told.status, 0);
}

TEST_F(PlcpanelWhere, TellsAListAsATable)
{
    const RunResult told = where({});
    EXPECT_THAT(told.out, HasSubstr("NAME         VARIABLE   READ  WRITE  MODBUS  "));
    EXPECT_THAT(told.out,
                HasSubstr("\ndrive speed  9:100      3     6      register 100       0x0064         "
                          "40101        int16, x 0.1 m/min\n"));
    EXPECT_THAT(told.out,
                HasSubstr("\nflow         9:110x2@3  3     -      registers 110-111  0x006E-0x006F  "
                          "40111-40112  float32, ABCD: high word first, l/h\n"));
    EXPECT_EQ(told.status, 0);
}

TEST_F(PlcpanelWhere, TakesNamesAndPatterns)
{
    const RunResult told = where({QStringLiteral("d*"), QStringLiteral("9:5")});
    EXPECT_THAT(told.out, HasSubstr("drive speed"));
    EXPECT_THAT(told.out, HasSubstr("door"));
    EXPECT_THAT(told.out, HasSubstr("9:5"));
    EXPECT_THAT(told.out, Not(HasSubstr("flow")));
}

TEST_F(PlcpanelWhere, PrintsNamesAloneForScripts)
{
    EXPECT_EQ(where({QStringLiteral("--names")}).out, "drive speed\nflow\ndoor\n");
    EXPECT_EQ(where({QStringLiteral("--names"), QStringLiteral("d*")}).out, "drive speed\ndoor\n");
}

TEST_F(PlcpanelWhere, PrintsJson)
{
    const RunResult told = where({QStringLiteral("flow"), QStringLiteral("--json")});
    const QJsonObject object = QJsonDocument::fromJson(QByteArray::fromStdString(told.out)).object();
    EXPECT_EQ(object.value(QLatin1String("name")).toString(), QStringLiteral("flow"));
    EXPECT_EQ(object.value(QLatin1String("station")).toInt(), 3);
    EXPECT_EQ(object.value(QLatin1String("space")).toString(), QStringLiteral("registers"));
    EXPECT_EQ(object.value(QLatin1String("modbusFirst")).toInt(), 110);
    EXPECT_EQ(object.value(QLatin1String("modbusLast")).toInt(), 111);
    EXPECT_EQ(object.value(QLatin1String("traditional")).toString(), QStringLiteral("40111-40112"));
    EXPECT_EQ(object.value(QLatin1String("read")).toArray(), QJsonArray{3});
    EXPECT_EQ(object.value(QLatin1String("write")).toArray(), QJsonArray());
    EXPECT_EQ(object.value(QLatin1String("order")).toString(), QStringLiteral("ABCD"));
    EXPECT_EQ(told.status, 0);
}

TEST_F(PlcpanelWhere, RefusesWhatHasNoPlace)
{
    const RunResult told = run({QStringLiteral("11:60000")});
    EXPECT_THAT(told.errors, HasSubstr("11:60000: it lies beyond Modbus address 65535"));
    EXPECT_EQ(told.out, "");
    EXPECT_EQ(told.status, 2);
}

TEST_F(PlcpanelWhere, RefusesOptionsThatItHasNoUseFor)
{
    const RunResult told = run({QStringLiteral("9:1"), QStringLiteral("--controller"), QStringLiteral("x")});
    EXPECT_THAT(told.errors,
                HasSubstr("--controller is no option of where; it belongs to read, write, watch, "));
    EXPECT_EQ(told.status, 2);
    EXPECT_THAT(run({QStringLiteral("--names")}).errors, HasSubstr("give it with --vars FILE"));
    EXPECT_THAT(where({QStringLiteral("--names"), QStringLiteral("--json")}).errors,
                HasSubstr("--names and --json exclude each other"));
}

} // namespace
