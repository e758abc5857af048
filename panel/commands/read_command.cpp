// SPDX-License-Identifier: MIT
#include "panel/commands/read_command.h"

#include "panel/session/listeners.h"
#include "panel/session/session.h"
#include "panel/session/waiting.h"
#include "panel/terminal/output.h"
#include "panel/terminal/watch_signals.h"
#include "panel/watch/row_texts.h"
#include "panel/watch/watch_rows.h"
#include "runtime/modbus/failure_words.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/listed_value.h"

#include <algorithm>

namespace plc
{

namespace
{

QString valueOf(const WatchRow& row, const ReadOutcome& outcome, ValueFormat format)
{
    if (!row.listed)
        return valueTexts(row.variable.area, outcome.values, format).join(QLatin1Char(' '));
    const QString text = listedText(*row.listed, outcome.values) + unitText(*row.listed);
    return isOutside(*row.listed, outcome.values)
               ? text + QStringLiteral("  (outside %1)").arg(limitsText(*row.listed))
               : text;
}

/// \return the line of JSON that tells how \a row was read
QString readJson(const WatchRow& row, int station, const ReadOutcome& outcome)
{
    QJsonObject object = jsonOfVariable(row.variable, station);
    if (row.listed)
        addListed(&object, *row.listed);
    if (outcome.done) {
        if (row.listed)
            addListedValue(&object, *row.listed, outcome.values);
        addValues(&object, outcome.values);
    } else {
        object.insert(QStringLiteral("error"), failureWords(outcome));
        object.insert(QStringLiteral("code"), outcome.failure.code);
    }
    return jsonLine(object);
}

/// \return the length of the longest name of \a rows
int widestName(const std::vector<WatchRow>& rows)
{
    int width = 0;
    for (const WatchRow& row : rows)
        width = std::max(width, rowName(row).size());
    return width;
}

/// Failures go to standard error, but for JSON, whose reader wants an object for each variable.
void report(const Options& options, const WatchRow& row, const ReadOutcome& outcome, int width)
{
    if (options.format == ValueFormat::Json)
        print(readJson(row, withStation(row.variable, options.settings).station, outcome) +
              QLatin1Char('\n'));
    else if (outcome.done)
        print(rowName(row).leftJustified(width + 2) + valueOf(row, outcome, options.format) +
              QLatin1Char('\n'));
    else
        complain(QStringLiteral("%1: not read: %2").arg(rowName(row), failureText(outcome)));
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
    const std::vector<WatchRow> rows = emptyRows(options.variables, options.listed);
    const int width = widestName(rows);
    bool allDone = true;
    bool reachable = true;
    for (const WatchRow& row : rows) {
        const QString what = QStringLiteral("reading ") + rowName(row);
        const ReadOutcome outcome =
            reachable ? waitFor(&session, session.runtime().read(row.variable), what) : readNotTried();
        report(options, row, outcome, width);
        allDone = allDone && outcome.done;
        reachable = outcome.done || !session.neverConnected();
    }
    if (!reachable && !session.isEnded())
        complainOfNoConnection(options.settings);
    return allDone ? AllGood : ControllerFailed;
}

} // namespace plc
