// SPDX-License-Identifier: MIT
#include "runtime/model/area_guide.h"

#include "runtime/model/area_table.h"
#include "runtime/model/modbus_address.h"
#include "runtime/model/variable.h"

#include <QStringList>

namespace plc
{

namespace
{

QString line(const QStringList& cells)
{
    const int widths[] = {4, 27, 8, 7, 10};
    QString text = QStringLiteral("  ");
    for (int cell = 0; cell < cells.size() - 1; ++cell)
        text += cells.at(cell).leftJustified(widths[cell] + 1);
    return text + cells.last() + QLatin1Char('\n');
}

QString elementText(int area, int element)
{
    return variableText({area, element, 1, -1});
}

QString place(int area)
{
    return QStringLiteral("%1 %2")
        .arg(QLatin1String(liesInCoils(area) ? "coil" : "register"))
        .arg(areaOf(area).modbusBase);
}

} // namespace

QString areaGuide()
{
    QString text =
        line({QStringLiteral("AREA"), QStringLiteral("holds"), QStringLiteral("ADDRESS"),
              QStringLiteral("first"), QStringLiteral("last"), QStringLiteral("begins at Modbus")});
    for (int code = 0; code < areaCount(); ++code) {
        const Area& area = areaOf(code);
        text += line({QString::number(code), QLatin1String(area.holds), QLatin1String(area.addresses),
                      elementText(code, 0), elementText(code, modbusElements(code) - 1), place(code)});
    }
    return text;
}

} // namespace plc
