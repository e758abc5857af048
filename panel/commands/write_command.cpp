// SPDX-License-Identifier: MIT
#include "panel/commands/write_command.h"

#include "panel/session/listeners.h"
#include "panel/session/session.h"
#include "panel/session/waiting.h"
#include "panel/session/write_words.h"
#include "panel/terminal/output.h"
#include "panel/terminal/watch_signals.h"
#include "runtime/cycle/write_frames.h"
#include "runtime/modbus/dialect.h"
#include "runtime/modbus/failure_words.h"
#include "runtime/modbus/frame_words.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/listed_value.h"

#include <QJsonArray>

#include <algorithm>

namespace plc
{

namespace
{

/// How one write ended, and what was read back where that was asked for.
struct Written {
    WriteOutcome outcome;
    std::optional<ReadOutcome> readBack;
};

int widestText(const std::vector<WriteTask>& tasks)
{
    int width = 0;
    for (const WriteTask& task : tasks)
        width = std::max(width, task.text.size());
    return width;
}

QString valueOf(const WriteTask& task, const std::vector<quint32>& values)
{
    if (task.listed)
        return listedText(*task.listed, values) + unitText(*task.listed);
    return valueTexts(task.variable.area, values, ValueFormat::Decimal).join(QLatin1Char(' '));
}

/// \return true when nothing else was read back, or nothing was to be
bool isVerified(const WriteTask& task, const Written& written)
{
    return !written.readBack || (written.readBack->done && written.readBack->values == task.values);
}

/// \return what is against a confirmed write; an empty text when nothing is
QString differenceText(const WriteTask& task, const Written& written)
{
    if (isVerified(task, written))
        return QString();
    if (!written.readBack->done)
        return QStringLiteral("confirmed, but it could not be read back: ") + failureText(*written.readBack);
    return QStringLiteral("confirmed, but the controller has %1 instead of %2")
        .arg(valueOf(task, written.readBack->values), valueOf(task, task.values));
}

QJsonObject jsonOf(const WriteTask& task, const Settings& settings)
{
    QJsonObject object = jsonOfVariable(task.variable, withStation(task.variable, settings).station);
    if (task.listed) {
        addListed(&object, *task.listed);
        addListedValue(&object, *task.listed, task.values);
    }
    addValues(&object, task.values);
    return object;
}

QString writeJson(const WriteTask& task, const Written& written, const Settings& settings)
{
    const WriteOutcome& outcome = written.outcome;
    QJsonObject object = jsonOf(task, settings);
    object.insert(QStringLiteral("confirmed"), outcome.confirmed);
    object.insert(QStringLiteral("requests"), outcome.requests);
    object.insert(QStringLiteral("requestsConfirmed"), outcome.requestsConfirmed);
    if (!outcome.confirmed) {
        object.insert(QStringLiteral("error"), failureWords(outcome));
        object.insert(QStringLiteral("code"), outcome.failure.code);
    }
    if (!written.readBack)
        return jsonLine(object);
    object.insert(QStringLiteral("verified"), isVerified(task, written));
    QJsonArray values;
    for (const quint32 value : written.readBack->values)
        values.append(static_cast<qint64>(value));
    if (written.readBack->done)
        object.insert(QStringLiteral("readBack"), values);
    else
        object.insert(QStringLiteral("error"), failureWords(*written.readBack));
    return jsonLine(object);
}

void report(const Options& options, const WriteTask& task, const Written& written, int width)
{
    const QString difference = differenceText(task, written);
    QString words = difference.isEmpty() ? writeOutcomeText(written.outcome) : difference;
    if (written.readBack && difference.isEmpty())
        words += QStringLiteral(" and read back");
    if (options.format == ValueFormat::Json)
        print(writeJson(task, written, options.settings) + QLatin1Char('\n'));
    else if (written.outcome.confirmed && difference.isEmpty())
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

Written write(const Options& options, const WriteTask& task, Session* session)
{
    const QString name = variableText(task.variable);
    Written written;
    written.outcome = waitFor(session, session->runtime().write(task.variable, task.values),
                              QStringLiteral("writing ") + name);
    if (options.verify && written.outcome.confirmed)
        written.readBack =
            waitFor(session, session->runtime().read(task.variable), QStringLiteral("reading back ") + name);
    return written;
}

QString meaningOf(const WriteFrame& frame, const Settings& settings)
{
    const QString words = dialectOf(frameFormatOf(settings)).requestWords(frame.frame);
    return frame.completesRead ? words + QStringLiteral(" (its other bits are those that were read)") : words;
}

void showFrames(const Options& options, const WriteTask& task)
{
    QJsonArray frames;
    QString lines = task.text + QLatin1Char('\n');
    for (const WriteFrame& frame :
         framesOfWrite(options.settings, withStation(task.variable, options.settings), task.values)) {
        const QString meaning = meaningOf(frame, options.settings);
        lines += QStringLiteral("  -> %1  %2\n").arg(hexText(frame.frame), meaning);
        frames.append(
            QJsonObject{{QStringLiteral("bytes"), hexText(frame.frame)}, {QStringLiteral("words"), meaning}});
    }
    QJsonObject object = jsonOf(task, options.settings);
    object.insert(QStringLiteral("frames"), frames);
    print(options.format == ValueFormat::Json ? jsonLine(object) + QLatin1Char('\n') : lines);
}

ExitStatus showAllFrames(const Options& options)
{
    for (const WriteTask& task : options.writes)
        showFrames(options, task);
    return AllGood;
}

} // namespace

ExitStatus runWrite(const Options& options)
{
    if (options.dryRun)
        return showAllFrames(options);
    WatchSignals::block(); // a signal that comes before ends the program, as is usual
    Session session(options.settings, listenersFor(options.trace, options.captureTo, options.settings));
    session.runtime().start();
    const int width = widestText(options.writes);
    bool allConfirmed = true;
    bool allVerified = true;
    bool reachable = true;
    for (const WriteTask& task : options.writes) {
        const long sentBefore = session.framesSent();
        const Written written = reachable ? write(options, task, &session) : Written{writeNotTried(), {}};
        const bool isCutShort = session.isEnded() && !written.outcome.confirmed;
        if (isCutShort)
            reportEnded(task, session.framesSent() != sentBefore);
        if (!isCutShort || options.format == ValueFormat::Json)
            report(options, task, written, width);
        allConfirmed = allConfirmed && written.outcome.confirmed;
        allVerified = allVerified && isVerified(task, written);
        reachable = written.outcome.confirmed || !session.neverConnected();
    }
    if (!reachable && !session.isEnded())
        complainOfNoConnection(options.settings);
    if (!allConfirmed)
        return ControllerFailed;
    return allVerified ? AllGood : ReadBackDiffers;
}

} // namespace plc
