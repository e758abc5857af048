#include "panel/commands/read_command.h"

#include "panel/session/listeners.h"
#include "panel/session/session.h"
#include "panel/session/waiting.h"
#include "panel/terminal/output.h"
#include "panel/terminal/watch_signals.h"
#include "runtime/modbus/failure_words.h"
#include "runtime/modbus/request_pieces.h"

#include <algorithm>

namespace plc
{

namespace
{

/// \return the line that tells how \a variable was read, without the line's end
/// \param width the name is filled up to it
QString readLine(const Variable& variable, const ReadOutcome& outcome, ValueFormat format, int width)
{
    return variableText(variable).leftJustified(width + 2) +
           valueTexts(variable.area, outcome.values, format).join(QLatin1Char(' '));
}

/// \return the line of JSON that tells it
QString readJson(const Variable& variable, int station, const ReadOutcome& outcome)
{
    QJsonObject object = jsonOfVariable(variable, station);
    if (outcome.done) {
        addValues(&object, outcome.values);
    } else {
        object.insert(QStringLiteral("error"), failureWords(outcome));
        object.insert(QStringLiteral("code"), outcome.failure.code);
    }
    return jsonLine(object);
}

/// \return the length of the longest name of \a variables
int widestName(const std::vector<Variable>& variables)
{
    int width = 0;
    for (const Variable& variable : variables)
        width = std::max(width, variableText(variable).size());
    return width;
}

/// Failures go to standard error, but for JSON, whose reader wants an object for each variable.
void report(const Options& options, const Variable& variable, const ReadOutcome& outcome, int width)
{
    if (options.format == ValueFormat::Json)
        print(readJson(variable, withStation(variable, options.settings).station, outcome) +
              QLatin1Char('\n'));
    else if (outcome.done)
        print(readLine(variable, outcome, options.format, width) + QLatin1Char('\n'));
    else
        complain(QStringLiteral("%1: not read: %2").arg(variableText(variable), failureText(outcome)));
}

ReadOutcome readNotTried()
{
    ReadOutcome outcome;
    outcome.failure = Failure(FailureKind::NotTried);
    return outcome;
}

} // namespace

ExitStatus runRead(const Options& options)
{
    WatchSignals::block(); // a signal that comes before ends the program, as is usual
    Session session(options.settings, listenersFor(options.trace, options.captureTo, options.settings));
    session.runtime().start();
    const int width = widestName(options.variables);
    bool allDone = true;
    bool reachable = true;
    for (const Variable& variable : options.variables) {
        const QString what = QStringLiteral("reading ") + variableText(variable);
        const ReadOutcome outcome =
            reachable ? waitFor(&session, session.runtime().read(variable), what) : readNotTried();
        report(options, variable, outcome, width);
        allDone = allDone && outcome.done;
        reachable = outcome.done || !session.neverConnected();
    }
    if (!reachable && !session.isEnded())
        complainOfNoConnection(options.settings);
    return allDone ? AllGood : ControllerFailed;
}

} // namespace plc
