// SPDX-License-Identifier: MIT
#include "runtime/modbus/return_code_words.h"

#include "driver/plcdriver.h"

namespace plc
{

namespace
{

struct ResultWords {
    int first;
    int last;
    const char* words;
};

const ResultWords results[] = {
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

} // namespace

QString resultWords(int code)
{
    for (const ResultWords& row : results) {
        if (code >= row.first && code <= row.last)
            return QLatin1String(row.words);
    }
    return QStringLiteral("a result code that has no meaning");
}

} // namespace plc
