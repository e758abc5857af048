#include "runtime/model/area_guide.h"

#include "runtime/model/area_table.h"
#include "runtime/model/modbus_address.h"

namespace plc
{

namespace
{

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
        .arg(areaOf(area).modbusBase);
}

} // namespace

QString areaGuide()
{
    QString text = line(QStringLiteral("AREA"), QStringLiteral("holds"), QStringLiteral("ADDRESS"),
                        QStringLiteral("example"), QStringLiteral("begins at Modbus"));
    for (int code = 0; code < areaCount(); ++code) {
        const Area& area = areaOf(code);
        text += line(QString::number(code), QLatin1String(area.holds), QLatin1String(area.addresses),
                     QLatin1String(area.example), place(code));
    }
    return text;
}

} // namespace plc
