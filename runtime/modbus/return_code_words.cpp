#include "runtime/modbus/return_code_words.h"

#include "driver/plcdriver.h"
#include "runtime/modbus/protocol.h"

namespace plc
{

namespace
{

struct Words {
    int first;
    int last;
    const char* words;
};

const Words results[] = {
    {PLC_RETRYING, PLC_RETRYING, "failed, to be tried again"},
    {PLC_DONE, PLC_DONE, "done"},
    {PLC_LOCAL_CHECK + 1, PLC_LOCAL_CHECK + 12, "the reply failed the data check"},
    {PLC_LOCAL_NO_REPLY + 1, PLC_LOCAL_NO_REPLY + 12, "no reply"},
    {PLC_LOCAL_LENGTH + 1, PLC_LOCAL_LENGTH + 12, "the reply has the wrong length"},
    {PLC_REMOTE_DONE, PLC_REMOTE_DONE, "done (remote)"},
    {PLC_REMOTE_CHECK + 1, PLC_REMOTE_CHECK + 12, "the remote reply failed the data check"},
    {PLC_REMOTE_NO_REPLY + 1, PLC_REMOTE_NO_REPLY + 12, "no remote reply"},
    {PLC_REMOTE_LENGTH + 1, PLC_REMOTE_LENGTH + 12, "the remote reply has the wrong length"},
    {PLC_UNKNOWN_OUTCOME, PLC_UNKNOWN_OUTCOME, "an outcome that the driver does not know"},
};

// The names are those of the Modbus application protocol.
const Words exceptions[] = {
    {1, 1, "illegal function"},
    {2, 2, "illegal data address"},
    {3, 3, "illegal data value"},
    {4, 4, "server device failure"},
    {Acknowledge, Acknowledge, "acknowledge: accepted, still at work"},
    {DeviceBusy, DeviceBusy, "server device busy"},
    {8, 8, "memory parity error"},
    {GatewayPathUnavailable, GatewayPathUnavailable, "gateway path unavailable"},
    {GatewayTargetSilent, GatewayTargetSilent, "gateway target device failed to respond"},
};

template <std::size_t size>
QString lookUp(const Words (&table)[size], int code, const char* otherwise)
{
    for (const Words& row : table) {
        if (code >= row.first && code <= row.last)
            return QLatin1String(row.words);
    }
    return QLatin1String(otherwise);
}

} // namespace

QString resultWords(int code)
{
    return lookUp(results, code, "a result code that has no meaning");
}

bool isSuccess(int code)
{
    return code == PLC_DONE || code == PLC_REMOTE_DONE;
}

QString exceptionWords(int code)
{
    return lookUp(exceptions, code, "an exception that Modbus does not name");
}

} // namespace plc
