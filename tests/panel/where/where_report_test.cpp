// SPDX-License-Identifier: MIT
// The table of plcpanel where, and what stands in its place on a narrow terminal.

#include "panel/where/where_report.h"

#include "panel/terminal/display_width.h"

#include <gmock/gmock.h>

namespace
{

using testing::HasSubstr;
using testing::StartsWith;

std::vector<plc::LocatedVariable> located(const char* lines)
{
    const QByteArray csv = QByteArray("name,area,address,count,type,unit\n") + lines;
    std::vector<plc::LocatedVariable> variables;
    for (const plc::ListedVariable& listed : plc::parseVariableList(csv).variables)
        variables.push_back({listed.elements, listed});
    return variables;
}

int widest(const QString& text)
{
    int width = 0;
    for (const QString& line : text.split(QLatin1Char('\n')))
        width = std::max(width, plc::columnsOf(line));
    return width;
}

TEST(WhereReport, IsATableWhereItFits)
{
    const QString text = plc::whereText(located("Füllstand,9,7,,int16,°C\npump,2,1,,bit,\n"), 80);
    EXPECT_EQ(text.toStdString(), "NAME       VARIABLE  READ  WRITE  MODBUS      HEX     4XXXX  VALUE\n"
                                  "Füllstand  9:7       3     6      register 7  0x0007  40008  int16, °C\n"
                                  "pump       2:1       1     5      coil 1      0x0001  00002  bit\n"
                                  "\n"
                                  "Functions: 1 read coils, 3 read holding registers, 5 write single coil, 6 "
                                  "write\nsingle register.\n");
}

TEST(WhereReport, HasAParagraphForEachWhereTheTableIsTooWide)
{
    const QString text = plc::whereText(located("level,9,7,,float32,bar\npump,2,1,,bit,\n"), 34);
    EXPECT_THAT(text.toStdString(), StartsWith("level\n"
                                               "  variable     9:7x2\n"
                                               "  read by      3\n"
                                               "  written by   16\n"
                                               "  Modbus       registers 7-8\n"
                                               "  hexadecimal  0x0007-0x0008\n"
                                               "  4xxxx        40008-40009\n"
                                               "  value        float32, CDAB: low\n"
                                               "               word first, bar\n"
                                               "\n"
                                               "pump\n"));
    EXPECT_LE(widest(text), 34);
}

TEST(WhereReport, NamesAVariableThatIsOnlyTypedByItsAddress)
{
    const QString text = plc::whereText({{{9, 7, 1, -1}, std::nullopt}}, 20);
    EXPECT_THAT(text.toStdString(), StartsWith("9:7\n  read by      3\n"));
}

TEST(WhereReport, OfWhatCanBeNeitherReadNorWrittenNamesNoFunction)
{
    const QString text = plc::whereText({{{0, 7, 1, 0}, std::nullopt}}, 0);
    EXPECT_THAT(text.toStdString(), HasSubstr("0:7@0     -     -      coil 63495"));
    EXPECT_EQ(text.count(QLatin1String("Functions")), 0);
}

} // namespace
