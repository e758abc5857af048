// SPDX-License-Identifier: MIT
#include "soak/history.h"

#include <algorithm>

namespace soak
{

quint32 History::issue()
{
    Write write;
    write.serial = ++m_issued;
    write.end = WriteEnd::Open;
    write.carriedOut = false;
    at(m_issued) = write;
    return m_issued;
}

bool History::carries(quint32 serial, const std::vector<quint32>& values) const
{
    return valuesOf(m_variable, serial) == values;
}

QString History::received(const std::vector<quint32>& values)
{
    if (!namesItsWrites(m_variable))
        return QString();
    for (quint32 serial = std::max({m_received, m_confirmed + 1, oldest()}); serial <= m_issued; ++serial) {
        Write& write = at(serial);
        if (write.end == WriteEnd::Unsent || !carries(serial, values))
            continue;
        m_received = serial;
        if (++write.received > m_tries)
            return QStringLiteral("write %1 reached the controller %2 times").arg(serial).arg(write.received);
        return QString();
    }
    return whatElse(values);
}

/// \return what is wrong with values that are none of a write that may arrive now
QString History::whatElse(const std::vector<quint32>& values) const
{
    for (quint32 back = 0; back <= m_issued - oldest(); ++back) {
        const quint32 serial = m_issued - back;
        if (!carries(serial, values))
            continue;
        const QString number = QStringLiteral("write %1 reached the controller ").arg(serial);
        if (at(serial).end == WriteEnd::Unsent)
            return number + QStringLiteral("although it was reported as given up unsent");
        if (serial <= m_confirmed)
            return number + QStringLiteral("after write %1 had been confirmed").arg(m_confirmed);
        return number + QStringLiteral("after write %1").arg(m_received);
    }
    return QStringLiteral("something that nobody wrote reached the controller");
}

void History::carriedOut()
{
    at(m_received).carriedOut = true;
}

void History::replied(const std::vector<quint32>& values)
{
    if (namesItsWrites(m_variable) && carries(m_received, values) && at(m_received).carriedOut)
        m_confirmed = std::max(m_confirmed, m_received);
}

QString History::ended(quint32 serial, WriteEnd end)
{
    if (serial < oldest())
        return QStringLiteral("write %1 ended when %2 later ones were open")
            .arg(serial)
            .arg(m_issued - serial);
    Write& write = at(serial);
    write.end = end;
    if (end == WriteEnd::Confirmed)
        m_confirmed = std::max(m_confirmed, serial);
    if (!namesItsWrites(m_variable))
        return QString();
    if (end == WriteEnd::Confirmed && !write.carriedOut)
        return QStringLiteral("write %1 was confirmed, but never carried out").arg(serial);
    if (end == WriteEnd::Unsent && write.received != 0)
        return QStringLiteral("write %1 was reported as given up unsent, but it was sent").arg(serial);
    return QString();
}

bool History::mayHaveHeld(quint32 confirmedBefore, const std::vector<quint32>& values) const
{
    return isOneOf(confirmedBefore, values, [](const Write& write) { return write.carriedOut; });
}

bool History::mayHold(const std::vector<quint32>& values) const
{
    return isOneOf(m_confirmed, values, [](const Write& write) { return write.received != 0; });
}

/// \return true when \a confirmed carries \a values, or a later write that has \a arrived
template <class Arrived>
bool History::isOneOf(quint32 confirmed, const std::vector<quint32>& values, const Arrived& arrived) const
{
    if (carries(confirmed, values))
        return true;
    for (quint32 serial = confirmed + 1; serial <= m_issued; ++serial) {
        const bool isKnown = serial >= oldest() && namesItsWrites(m_variable);
        if ((!isKnown || arrived(at(serial))) && carries(serial, values))
            return true;
    }
    return false;
}

bool History::wereIssued(const std::vector<quint32>& values) const
{
    for (quint32 serial = oldest(); serial <= m_issued; ++serial) {
        if (carries(serial, values))
            return true;
    }
    return false;
}

bool History::wereIssuedOneByOne(const std::vector<quint32>& values) const
{
    std::size_t element = 0;
    while (element < values.size() && wasIssued(element, values[element]))
        ++element;
    return element == values.size();
}

bool History::wasIssued(std::size_t element, quint32 value) const
{
    for (quint32 serial = oldest(); serial <= m_issued; ++serial) {
        if (valuesOf(m_variable, serial)[element] == value)
            return true;
    }
    return false;
}

} // namespace soak
