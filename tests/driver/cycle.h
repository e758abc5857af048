// SPDX-License-Identifier: MIT
/// \file
/// \brief Short words for request cycles: queue, poll, answer.
#ifndef TESTS_DRIVER_CYCLE_H
#define TESTS_DRIVER_CYCLE_H

#include "driver_fixture.h"

#include <utility>

/// A request that is known by its keys.
inline RW_VAR Keyed(RW_VAR var, int hostKey, int hostSubKey = 0)
{
    var.hostKey = hostKey;
    var.hostSubKey = hostSubKey;
    return var;
}

/// A request of a station group that is not served directly.
inline RW_VAR Remote(RW_VAR var)
{
    var.stationGroup = LOCAL_STATION + 1;
    return var;
}

class CycleTest : public DriverTest
{
protected:
    static void queueRead(RW_VAR var) { AddListReadVar(&var); }
    static void queueWrite(RW_VAR var) { AddListWriteVar(&var, 1); }
    static void queueOnce(RW_VAR var) { AddListOnceReadVar(&var, 1); }

    /// A one-word read, write or one-shot read at a station, known by its key and its address, the key.
    static void queueReadOf(int station, int key) { queueRead(Keyed(Variable(9, key, 1, station), key)); }
    static void queueWriteOf(int station, int key)
    {
        queueWrite(Keyed(Write(9, key, 1, "01 00", station), key));
    }
    static void queueOnceOf(int station, int key) { queueOnce(Keyed(Variable(9, key, 1, station), key)); }

    /// \return the frame in hexadecimal, "nothing" for none
    static std::string poll()
    {
        const Protocol* next = ComCommunication();
        return next ? toHex(next->frame) : "nothing";
    }

    /// \return the key of the request whose frame is handed out, -1 for none
    static int pollKey()
    {
        const Protocol* next = ComCommunication();
        return next ? next->var.hostKey : -1;
    }

    /// \return result code
    static int reply(const char* hex)
    {
        QByteArray bytes = fromHex(hex);
        return DataCom(&bytes, bytes.size())->result;
    }

    static int timeOut() { return reply(""); }

    /// Zeros of the length that the frame in flight awaits. \return result code
    static int goodReply()
    {
        QByteArray bytes(PLC_driver.protocolList.at(0).replyLength, '\0');
        return DataCom(&bytes, bytes.size())->result;
    }

    /// One turn with a good reply. \return the key of the request, -1 when there was nothing to send
    static int cycle()
    {
        const int key = pollKey();
        if (key != -1)
            goodReply();
        return key;
    }

    static std::vector<int> cycles(int turns)
    {
        std::vector<int> keys;
        for (int i = 0; i < turns; ++i)
            keys.push_back(cycle());
        return keys;
    }

    static std::vector<int> keys(const QList<RW_VAR>& list)
    {
        std::vector<int> result;
        for (const RW_VAR& var : list)
            result.push_back(var.hostKey);
        return result;
    }

    static unsigned short word(int element) { return PLC_driver.image.wordArea[0][element]; }
};

typedef std::vector<int> Keys;

#endif
