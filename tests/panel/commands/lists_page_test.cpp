// SPDX-License-Identifier: MIT
// What docs/lists.md says, compared with what lists are.

#include "runtime/model/listed_value.h"
#include "runtime/model/variable_list.h"
#include "support/built_files.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QRegularExpression>

namespace
{

QString page()
{
    QFile file(QString::fromUtf8(testsDirectory()) + QStringLiteral("/../docs/lists.md"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QString::fromUtf8(file.readAll());
}

/// \return the text from a heading to the next one
QString section(const char* heading)
{
    const QString begin = QStringLiteral("\n## %1\n").arg(QLatin1String(heading));
    const QString text = page();
    const int from = text.indexOf(begin) + begin.size();
    return text.mid(from, text.indexOf(QStringLiteral("\n## "), from) - from);
}

/// \return the captures of every line that fits
std::vector<QStringList> rows(const QString& text, const char* line)
{
    std::vector<QStringList> found;
    const QRegularExpression row(QLatin1String(line), QRegularExpression::MultilineOption);
    for (auto match = row.globalMatch(text); match.hasNext();)
        found.push_back(match.next().capturedTexts().mid(1));
    return found;
}

TEST(ListsPage, NamesEveryColumnAndNoOther)
{
    QStringList columns;
    for (const QStringList& row : rows(section("The file"), "^\\| `([a-z]+)` \\|"))
        columns << row.at(0);
    EXPECT_EQ(columns.join(QLatin1Char(' ')).toStdString(),
              plc::listColumns().join(QLatin1Char(' ')).toStdString());
}

TEST(ListsPage, SaysAsTheGuideDoesThatTheGatewayWritesRwOnly)
{
    EXPECT_TRUE(section("The file").contains(QStringLiteral("`plcgateway` writes `rw` only")));
    EXPECT_TRUE(plc::listGuide().contains(QStringLiteral("plcgateway writes rw only")));
}

TEST(ListsPage, NamesEveryType)
{
    const QString text = section("Types");
    for (const QString& type : plc::valueTypeWords().split(QStringLiteral(", ")))
        EXPECT_TRUE(text.contains(QLatin1Char('`') + type + QLatin1Char('`'))) << type.toStdString();
}

TEST(ListsPage, ShowsEachOrderAsValuesAreRead)
{
    const auto orders =
        rows(section("Orders"), "^\\| `([A-D]{4})` \\| 0x([0-9A-F]{4}) \\| 0x([0-9A-F]{4}) \\|");
    ASSERT_EQ(orders.size(), 8u);
    for (std::size_t each = 0; each < orders.size(); ++each) {
        const bool isNumber = each < 4; // the table above
        const QByteArray csv = "name,area,address,count,type,order\na,9,100," +
                               QByteArray(isNumber ? "1,uint32," : "4,text,") + orders[each].at(0).toLatin1();
        const plc::VariableList list = plc::parseVariableList(csv);
        ASSERT_EQ(list.variables.size(), 1u);
        const std::vector<quint32> words = {orders[each].at(1).toUInt(nullptr, 16),
                                            orders[each].at(2).toUInt(nullptr, 16)};
        EXPECT_EQ(plc::listedText(list.variables.front(), words).toStdString(),
                  isNumber ? std::to_string(0x12345678) : "\"ABCD\"")
            << orders[each].at(0).toStdString();
    }
}

TEST(ListsPage, HasListsWithoutAnError)
{
    QStringList lists;
    QString list;
    for (const QString& line : page().split(QLatin1Char('\n'))) {
        if (line.startsWith(QStringLiteral("    name,")) ||
            (!list.isEmpty() && line.startsWith(QStringLiteral("    "))))
            list += line.mid(4) + QLatin1Char('\n');
        else if (!list.isEmpty())
            lists << std::exchange(list, QString());
    }
    ASSERT_EQ(lists.size(), 2);
    for (const QString& each : lists)
        EXPECT_EQ(plc::parseVariableList(each.toUtf8()).errors.join(QLatin1Char('\n')).toStdString(), "");
}

} // namespace
