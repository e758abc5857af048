// SPDX-License-Identifier: MIT
#include "account.h"

int Account::write(int station, int address, const std::vector<int>& words)
{
    RW_VAR record = RW_VAR();
    record.station = station;
    record.address = address;
    record.count = static_cast<int>(words.size());
    QByteArray bytes;
    for (const int word : words)
        bytes.append(static_cast<char>(word & 0xFF)).append(static_cast<char>(word >> 8 & 0xFF));
    QString name, text = QString::number(address);

    const std::lock_guard<std::mutex> lock(m_lock);
    const int before = AddListWriteVar(nullptr, 0);
    if (m_refused.count(station) != 0 || before >= PLC_LIST_LIMIT - 1)
        return 0;
    const int key = m_lastKey + 1;
    if (SetRegisterData(&name, 9, &text, static_cast<unsigned>(station), &bytes, record.count, key, 0) == 0)
        return 0;
    m_lastKey = key;
    if (AddListWriteVar(nullptr, 0) == before) // it took the place of a queued one
        end(writeTo(record), End::Unsent);
    m_waiting[key] = record;
    m_values.writeQueued(record);
    return key;
}

std::string Account::show(int station, int address, int count)
{
    QString text = QString::number(address);
    QByteArray bytes;
    const std::lock_guard<std::mutex> lock(m_lock); // no reply is filed between the state and the values
    const State state = m_values.state(station, address, count);
    std::string shown = nameOf(state);
    if (state != State::Fresh || GetRegisterData(0, 9, &text, station, &bytes, count) == 0)
        return shown;
    for (int i = 0; i < count; ++i)
        shown += " " + std::to_string(static_cast<unsigned char>(bytes[2 * i]) |
                                      static_cast<unsigned char>(bytes[2 * i + 1]) << 8);
    return shown;
}

const Protocol* Account::poll()
{
    const std::lock_guard<std::mutex> lock(m_lock);
    return ComCommunication();
}

int Account::finish(const RW_VAR& request, QByteArray reply)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    const int result = DataCom(&reply, reply.size())->result;
    if (result == PLC_RETRYING)
        return result;
    if (result != PLC_DONE) {
        end(request.hostKey, End::Failed);
        endAll(request.station); // the driver has removed them
    } else if (m_settings.framesReceived >= m_settings.framesExpected) {
        if (request.hostKey == 0)
            m_values.read(request);
        end(request.hostKey, End::Done);
    }
    return result;
}

void Account::refuse(int station)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    m_refused.insert(station);
    EnCommStation(station, 0);
}

void Account::discarded(int station)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    endAll(station);
}

void Account::accept(int station)
{
    const std::lock_guard<std::mutex> lock(m_lock);
    EnCommStation(station, 1);
    m_refused.erase(station);
}

void Account::end(int key, End end)
{
    const auto found = m_waiting.find(key);
    if (found == m_waiting.end())
        return;
    m_values.writeEnded(found->second);
    m_waiting.erase(found);
    m_told(key, end);
}

void Account::endAll(int station)
{
    for (auto one = m_waiting.begin(); one != m_waiting.end();) {
        const auto next = std::next(one);
        if (one->second.station == station)
            end(one->first, End::Unsent);
        one = next;
    }
}

// The newest of them; the one before may be on its way, and is not replaced.
int Account::writeTo(const RW_VAR& place) const
{
    for (auto one = m_waiting.rbegin(); one != m_waiting.rend(); ++one)
        if (one->second.station == place.station && one->second.address == place.address &&
            one->second.count == place.count)
            return one->first;
    return 0;
}
