// SPDX-License-Identifier: MIT
#include "panel/session/write_words.h"

#include "runtime/modbus/failure_words.h"

namespace plc
{

QString writeOutcomeText(const WriteOutcome& outcome)
{
    if (outcome.confirmed && outcome.broadcast)
        return QStringLiteral("sent to every station (no controller confirms a broadcast)");
    if (outcome.confirmed)
        return QStringLiteral("confirmed");
    QString words = QStringLiteral("not confirmed: ") + failureText(outcome);
    if (outcome.requests > 1)
        words += QStringLiteral("; %1 of its %2 requests were confirmed")
                     .arg(outcome.requestsConfirmed)
                     .arg(outcome.requests);
    return words;
}

} // namespace plc
