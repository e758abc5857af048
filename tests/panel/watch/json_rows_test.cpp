// SPDX-License-Identifier: MIT
#include "panel/watch/json_rows.h"

#include "panel/watch/watch_json.h"
#include "runtime/model/variable_list.h"

#include <gtest/gtest.h>

#include <random>

namespace
{

using namespace plc;

const QDateTime someTime = QDateTime(QDate(2026, 11, 22), QTime(10, 20, 30, 400), Qt::UTC);

/// \return a row of each line of a list, and some that were typed
std::vector<WatchRow> rows()
{
    const VariableList list = parseVariableList(
        "name,area,address,count,type,scale,unit,digits,min,max,station\n"
        "plain,9,1,,uint16,,,,,,\n\"a \"\"name\"\", \xC3\xA4\\,\",9,2,,int16,,,,,,7\nlong,9,3,,int64,,,,,,\n"
        "huge,9,3,,uint64,,,,,,\nbcd,9,8,,bcd16,,,,,,\nscaled,9,9,,int16,0.1,l,1,0,50,\n"
        "digits,9,10,,int16,,,2,,,\nfloat,9,11,,float32,,,,,,\ntext,9,20,9,text,,,,,,\n"
        "several,9,30,3,uint16,,,,,,\nbit,0,1,,bit,,,,,,\ndouble,14,200,,int32,,,,,,\nhex,9,40,,hex,,,,,,\n");
    EXPECT_EQ(list.errors, QStringList());
    std::vector<WatchRow> rows;
    for (const ListedVariable& variable : list.variables)
        rows.push_back({variable.elements, {}, variable});
    Variable typed;
    typed.element = 50;
    typed.count = 3;
    rows.push_back({typed, {}, std::nullopt});
    typed.station = 3;
    rows.push_back({typed, {}, std::nullopt});
    return rows;
}

TEST(JsonRows, AreTheLinesOfWatchJsonWhateverTheValues)
{
    std::vector<WatchRow> all = rows();
    JsonRows lines(1);
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        const QDateTime time = someTime.addMSecs(round / 3);
        for (std::size_t index = 0; index < all.size(); ++index) {
            WatchRow& row = all[index];
            const quint32 most = row.variable.area == 14 ? 0xFFFFFFFF : row.variable.area < 9 ? 1 : 0xFFFF;
            row.value = CyclicValue();
            row.value.state = static_cast<ValueState>(random() % 6);
            row.value.ageMs = static_cast<qint64>(random() % 3) - 1;
            if (random() % 4 == 0)
                row.value.failure = Failure(FailureKind::NotConnected, QStringLiteral("no \"way\""));
            for (int element = 0; element < row.variable.count; ++element)
                row.value.values.push_back(static_cast<quint32>(random() % 3 == 0 ? 0 : random()) & most);
            QByteArray line;
            lines.append(index, row, time, &line);
            ASSERT_EQ(line.toStdString(), watchJson(row, 1, time).toStdString() + "\n");
        }
    }
}

} // namespace
