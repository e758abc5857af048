// SPDX-License-Identifier: MIT
// What the help says of the areas.

#include "runtime/model/area_guide.h"

#include "runtime/model/area_table.h"
#include "runtime/model/variable.h"

#include <gtest/gtest.h>

#include <QStringList>

namespace
{

using namespace plc;

TEST(AreaGuide, HasALineForEachAreaBelowItsHeading)
{
    const QStringList lines = areaGuide().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 1 + areaCount());
    for (int area = 0; area < areaCount(); ++area)
        EXPECT_EQ(lines.at(1 + area).trimmed().section(QLatin1Char(' '), 0, 0), QString::number(area));
}

TEST(AreaGuide, HasItsColumnsOneBeneathTheOther)
{
    const QStringList lines = areaGuide().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    EXPECT_EQ(lines.at(0).toStdString(),
              "  AREA holds                       ADDRESS  first   last       begins at Modbus");
    for (const QString& line : lines.mid(1)) {
        EXPECT_TRUE(line.startsWith(QStringLiteral("  "))) << line.toStdString();
        for (const int column : {7, 35, 44, 52, 63}) {
            EXPECT_EQ(line.at(column - 1), QLatin1Char(' ')) << line.toStdString() << column;
            EXPECT_NE(line.at(column), QLatin1Char(' ')) << line.toStdString() << column;
        }
    }
}

TEST(AreaGuide, NamesTheFirstAndTheLastElementThatHasAModbusAddress)
{
    const QStringList ends = {
        QStringLiteral("0:0 0:3777"),   QStringLiteral("1:0 1:1777"),     QStringLiteral("2:0 2:65534"),
        QStringLiteral("3:0 3:56319"),  QStringLiteral("4:0 4:8191"),     QStringLiteral("5:0 5:4095"),
        QStringLiteral("6:0 6:3071"),   QStringLiteral("7:8000 7:65535"), QStringLiteral("8:0.0 8:65534.15"),
        QStringLiteral("9:0 9:65534"),  QStringLiteral("10:0 10:53247"),  QStringLiteral("11:0 11:56319"),
        QStringLiteral("12:0 12:4095"), QStringLiteral("13:0 13:3071"),   QStringLiteral("14:200 14:1351"),
    };
    const QStringList lines = areaGuide().split(QLatin1Char('\n'), Qt::SkipEmptyParts).mid(1);
    for (int area = 0; area < ends.size(); ++area)
        EXPECT_TRUE(lines.at(area).simplified().contains(QLatin1Char(' ') + ends.at(area) + QLatin1Char(' ')))
            << lines.at(area).toStdString();
}

} // namespace
