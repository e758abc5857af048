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

TEST(AreaGuide, ItsExamplesCanBeTyped)
{
    for (const QString& line : areaGuide().split(QLatin1Char('\n'), Qt::SkipEmptyParts).mid(1)) {
        const QStringList words = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        QString error;
        EXPECT_TRUE(parseVariable(words.at(words.size() - 3), &error)) << line.toStdString();
    }
}

} // namespace
