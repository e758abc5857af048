#include "panel/watch_statistics.h"

#include "panel/return_code_words.h"
#include "panel/wrapped_text.h"

namespace panel
{

namespace
{

const int labelWidth = 11;

/// A single refresh has no rate.
QString rateText(double perSecond)
{
    if (perSecond <= 0)
        return QString();
    return QStringLiteral(", %1 a second").arg(perSecond, 0, 'f', perSecond < 10 ? 1 : 0);
}

QString numbered(long number, const char* one, const char* several)
{
    return QStringLiteral("%1 %2").arg(number).arg(QLatin1String(number == 1 ? one : several));
}

QString refreshesText(const Statistics& statistics)
{
    if (statistics.passes == 0)
        return QStringLiteral("none is complete yet");
    const PassCost& pass = statistics.lastPass;
    return QStringLiteral("%1%2; the last took %3 in %4")
        .arg(statistics.passes)
        .arg(rateText(statistics.passesPerSecond), numbered(pass.requests, "request", "requests"),
             numbered(pass.frames, "frame", "frames"));
}

QString amountText(long read, long unused, const char* what)
{
    QString text = QStringLiteral("%1 %2").arg(read).arg(QLatin1String(what));
    if (read > 0)
        text += QStringLiteral(" (%1 % of them for no variable)")
                    .arg(100.0 * static_cast<double>(unused) / static_cast<double>(read), 0, 'f', 1);
    return text;
}

QString readText(const PassCost& pass)
{
    return amountText(pass.registers, pass.registersUnused, "registers") + QStringLiteral(", ") +
           amountText(pass.bits, pass.bitsUnused, "bits");
}

QString failuresText(const Statistics& statistics)
{
    QStringList failures;
    for (const auto& failure : statistics.failuresByCode)
        failures << QStringLiteral("%1 x %2 (return code %3)")
                        .arg(failure.second)
                        .arg(resultWords(failure.first))
                        .arg(failure.first);
    const QString text = QStringLiteral("%1, %2").arg(numbered(statistics.retried, "retry", "retries"),
                                                      numbered(statistics.failed, "failure", "failures"));
    return failures.isEmpty() ? text : text + QStringLiteral(": ") + failures.join(QStringLiteral(", "));
}

QStringList labelled(const char* label, const QString& text, int columns)
{
    const int room = columns > 0 ? qMax(columns - labelWidth, 1) : text.size();
    QStringList lines;
    for (const QString& line : wrapped(text.split(QLatin1Char(' ')), room))
        lines << QString::fromLatin1(lines.isEmpty() ? label : "").leftJustified(labelWidth) + line;
    return lines;
}

} // namespace

QStringList statisticsLines(const Statistics& statistics, int columns)
{
    QStringList lines = labelled("REFRESHES", refreshesText(statistics), columns);
    if (statistics.passes > 0)
        lines += labelled("READ", readText(statistics.lastPass), columns);
    return lines + labelled("TROUBLE", failuresText(statistics), columns);
}

} // namespace panel
