#include "runtime/model/area_guide.h"

#include "runtime/model/variable.h"

namespace plc
{

namespace
{

struct AreaRow {
    const char* holds;
    const char* address;
    const char* example;
    int base;
};

// Row = area code.
const AreaRow rows[] = {
    {"bits, read only", "octal", "0:17", 0xF800},
    {"bits", "octal", "1:17", 0xFC00},
    {"bits", "decimal", "2:100", 0x0000},
    {"bits", "decimal", "3:100", 0x2400},
    {"bits", "decimal", "4:100", 0xE000},
    {"bits", "decimal", "5:100", 0xF000},
    {"bits", "decimal", "6:100", 0xF400},
    {"bits", "decimal from 8000 on", "7:8100", 0x1F40},
    {"bits in the words of area 9", "word.bit, both decimal", "8:10.3", 0x0000},
    {"words (16 bits)", "decimal", "9:100", 0x0000},
    {"words (16 bits)", "decimal", "10:100", 0x3000},
    {"words (16 bits)", "decimal", "11:100", 0x2400},
    {"words (16 bits)", "decimal", "12:100", 0xF000},
    {"words (16 bits)", "decimal", "13:100", 0xF400},
    {"double words (32 bits)", "decimal from 200 on", "14:200", 0xF700},
};

QString line(const QString& area, const QString& holds, const QString& address, const QString& example,
             const QString& place)
{
    return QStringLiteral("  %1 %2 %3 %4 %5\n")
        .arg(area, -4)
        .arg(holds, -27)
        .arg(address, -22)
        .arg(example, -7)
        .arg(place);
}

QString place(int area)
{
    return QStringLiteral("%1 %2")
        .arg(QLatin1String(liesInCoils(area) ? "coil" : "register"))
        .arg(rows[area].base);
}

} // namespace

QString areaGuide()
{
    QString text = line(QStringLiteral("AREA"), QStringLiteral("holds"), QStringLiteral("ADDRESS"),
                        QStringLiteral("example"), QStringLiteral("begins at Modbus"));
    int area = 0;
    for (const AreaRow& row : rows) {
        text += line(QString::number(area), QLatin1String(row.holds), QLatin1String(row.address),
                     QLatin1String(row.example), place(area));
        ++area;
    }
    return text;
}

bool liesInCoils(int area)
{
    return kindOf(area) == ElementKind::Bit;
}

int modbusAddress(int area, int element)
{
    int offset = element;
    if (kindOf(area) == ElementKind::BitInWord)
        offset = element / bitsOfWord;
    else if (kindOf(area) == ElementKind::DoubleWord)
        offset = 2 * element;
    return (rows[area].base + offset) & 0xFFFF;
}

} // namespace plc
