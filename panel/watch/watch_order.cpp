// SPDX-License-Identifier: MIT
#include "panel/watch/watch_order.h"

#include "runtime/model/variable.h"

namespace plc
{

namespace
{

const int longestLine = 20;

const char backspace = '\b';
const char deleteKey = '\x7f';
const char controlU = '\x15';

WatchOrder::Kind kindOf(QChar letter)
{
    switch (letter.toLatin1()) {
    case 'o':
    case '-':
        return WatchOrder::SwitchOff;
    case 'i':
    case '+':
        return WatchOrder::SwitchOn;
    default:
        return WatchOrder::Wrong;
    }
}

WatchOrder wrong(const QString& line)
{
    WatchOrder order;
    order.kind = WatchOrder::Wrong;
    order.error = QStringLiteral("\"%1\" is no command; o3 switches station 3 off, i3 on (0 to %2), q ends")
                      .arg(line)
                      .arg(lastStation);
    return order;
}

} // namespace

WatchOrder parseWatchOrder(const QString& line)
{
    const QString text = line.trimmed().toLower();
    WatchOrder order;
    if (text.isEmpty())
        return order;
    if (text == QLatin1String("q")) {
        order.kind = WatchOrder::End;
        return order;
    }
    order.kind = kindOf(text.at(0));
    const QString number = text.mid(1).trimmed();
    bool isNumber = false;
    order.station = number.toInt(&isNumber);
    // A sign of its own would be taken for a part of the number.
    if (order.kind == WatchOrder::Wrong || !isNumber || !number.at(0).isDigit() ||
        order.station > lastStation)
        return wrong(line.trimmed());
    return order;
}

bool TypedLine::press(char key)
{
    if (key == '\r' || key == '\n')
        return true;
    if (key == backspace || key == deleteKey)
        m_text.chop(1);
    else if (key == controlU)
        m_text.clear();
    else if (key >= ' ' && key < deleteKey && m_text.size() < longestLine)
        m_text += QLatin1Char(key);
    return false;
}

QString TypedLine::take()
{
    const QString line = m_text;
    m_text.clear();
    return line;
}

} // namespace plc
