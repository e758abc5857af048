#include "panel/commands/write_command.h"

#include "panel/session/listeners.h"
#include "panel/session/session.h"
#include "panel/session/waiting.h"
#include "panel/terminal/output.h"
#include "panel/terminal/watch_signals.h"
#include "runtime/modbus/failure_words.h"

#include <algorithm>

namespace plc
{

namespace
{

/// \return how \a outcome ended in words: what was confirmed, or why not
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

int widestText(const std::vector<WriteTask>& tasks)
{
    int width = 0;
    for (const WriteTask& task : tasks)
        width = std::max(width, task.text.size());
    return width;
}

void report(const WriteTask& task, const WriteOutcome& outcome, int width)
{
    const QString words = writeOutcomeText(outcome);
    if (outcome.confirmed)
        print(task.text.leftJustified(width + 2) + words + QLatin1Char('\n'));
    else
        complain(QStringLiteral("%1: %2").arg(task.text, words));
}

/// A write that a signal has ended may be anywhere.
void reportEnded(const WriteTask& task, bool wasSent)
{
    if (wasSent)
        complain(
            QStringLiteral("the write of %1 was on its way: it may have been carried out").arg(task.text));
    else
        complain(QStringLiteral("%1: not written: ended before it was sent").arg(task.text));
}

WriteOutcome writeNotTried()
{
    WriteOutcome outcome;
    outcome.failure = Failure(FailureKind::NotTried);
    return outcome;
}

} // namespace

ExitStatus runWrite(const Options& options)
{
    WatchSignals::block(); // a signal that comes before ends the program, as is usual
    Session session(options.settings, listenersFor(options.trace, options.captureTo, options.settings));
    session.runtime().start();
    const int width = widestText(options.writes);
    bool allConfirmed = true;
    bool reachable = true;
    for (const WriteTask& task : options.writes) {
        const auto write = [&] { return session.runtime().write(task.variable, task.values); };
        const QString what = QStringLiteral("writing ") + variableText(task.variable);
        const long sentBefore = session.framesSent();
        const WriteOutcome outcome = reachable ? waitFor(&session, write(), what) : writeNotTried();
        if (session.isEnded() && !outcome.confirmed)
            reportEnded(task, session.framesSent() != sentBefore);
        else
            report(task, outcome, width);
        allConfirmed = allConfirmed && outcome.confirmed;
        reachable = outcome.confirmed || !session.neverConnected();
    }
    if (!reachable && !session.isEnded())
        complainOfNoConnection(options.settings);
    return allConfirmed ? AllGood : ControllerFailed;
}

} // namespace plc
