// SPDX-License-Identifier: MIT
#include "panel/watch/json_rows.h"

#include "panel/watch/watch_json.h"
#include "runtime/model/variable_list.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace
{

using namespace plc;

const QDateTime someTime = QDateTime(QDate(2026, 11, 22), QTime(10, 20, 30, 400), Qt::UTC);

/// \return a row of each line of a list, and some that were typed
std::vector<WatchRow> rows()
{
    static const VariableList list = parseVariableList(
        "name,area,address,count,type,scale,unit,digits,min,max,station\n"
        "plain,9,1,,uint16,,,,,,\n\"a \"\"name\"\", \xC3\xA4\\,\",9,2,,int16,,,,,,7\nlong,9,3,,int64,,,,,,\n"
        "huge,9,3,,uint64,,,,,,\nbcd,9,8,,bcd16,,,,,,\nscaled,9,9,,int16,0.1,l,1,0,50,\n"
        "digits,9,10,,int16,,,2,,,\nfloat,9,11,,float32,,,,,,\ntext,9,20,9,text,,,,,,\n"
        "several,9,30,3,uint16,,,,,,\nbit,0,1,,bit,,,,,,\ndouble,14,200,,int32,,,,,,\nhex,9,40,,hex,,,,,,\n"
        "dhex,14,300,,hex,,,,,,\npressure,9,60,,float32,,bar,2,0.5,1000.25,\nexact,9,64,,float64,,,,,,\n"
        "heat,9,70,,int16,0.01,\xC2\xB0"
        "C,,-5,5,\nlevel,9,71,,uint32,0.001,,3,,,\n\xE2\x82\xAC \xF0\x9F\x94\xA5,9,73,,int16,"
        ",,,,,\nfixed,9,74,,float64,,,4,,,\nfar,9,80,,int32,7.3,,,-1e300,,\n");
    EXPECT_EQ(list.errors, QStringList());
    std::vector<WatchRow> rows;
    for (const ListedVariable& variable : list.variables)
        rows.push_back({variable.elements, {}, &variable});
    Variable typed;
    typed.element = 50;
    typed.count = 3;
    rows.push_back({typed, {}, nullptr});
    typed.station = 3;
    rows.push_back({typed, {}, nullptr});
    return rows;
}

/// \return elements of any value; of numbers with a fraction often one that a person would have written
std::vector<quint32> someElements(const WatchRow& row, std::mt19937& random)
{
    const quint32 most = row.variable.area == 14 ? 0xFFFFFFFF : row.variable.area < 9 ? 1 : 0xFFFF;
    std::vector<quint32> elements;
    for (int element = 0; element < row.variable.count; ++element)
        elements.push_back(static_cast<quint32>(random() % 3 == 0 ? 0 : random()) & most);
    const ValueType type = row.listed == nullptr ? ValueType::Hex : row.listed->type;
    if ((type != ValueType::Float32 && type != ValueType::Float64) || random() % 4 == 0)
        return elements;
    const double number = (static_cast<int>(random() % 200001) - 100000) / (random() % 2 == 0 ? 100.0 : 96.0);
    const auto half = static_cast<float>(number);
    quint64 bits = 0;
    if (type == ValueType::Float32)
        std::memcpy(&bits, &half, sizeof half);
    else
        std::memcpy(&bits, &number, sizeof number);
    for (quint32& element : elements) {
        element = static_cast<quint32>(bits) & most;
        bits >>= 16;
    }
    return elements;
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
            row.value = CyclicValue();
            row.value.state = static_cast<ValueState>(random() % 6);
            row.value.ageMs = static_cast<qint64>(random() % 3) - 1;
            if (random() % 4 == 0)
                row.value.failure = Failure(FailureKind::NotConnected, QStringLiteral("no \"way\""));
            row.value.values = someElements(row, random);
            QByteArray line;
            lines.append(row, time, &line);
            ASSERT_EQ(line.toStdString(), watchJson(row, 1, time).toStdString() + "\n");
        }
    }
}

} // namespace
