// SPDX-License-Identifier: MIT
#include "panel/demo/demo_report.h"

#include "panel/session/received_reply.h"
#include "panel/terminal/output.h"
#include "runtime/modbus/frame_words.h"

namespace plc
{

namespace
{

const char indent[] = "       ";

QString row(const QString& number, const QString& what, const QString& result, const QString& controller,
            const QString& verdict)
{
    return QStringLiteral("%1  %2 %3 %4 %5\n")
        .arg(number, 4)
        .arg(what, -27)
        .arg(result, -24)
        .arg(controller, -38)
        .arg(verdict);
}

QString frameLine(const ExchangeRecord& record, int times)
{
    const QByteArray& bytes = record.exchange.sent ? record.exchange.sentFrame : record.frame;
    QString line = QLatin1String(indent) + QStringLiteral("-> ") + hexText(bytes) + QStringLiteral("  ") +
                   requestWords(record.frame);
    if (times > 1)
        line += QStringLiteral(" (%1 times, each with a number of its own)").arg(times);
    return line + QLatin1Char('\n');
}

QString replyLine(const ExchangeRecord& record)
{
    const QByteArray reply = replyAsReceived(record.exchange);
    const QString begin = QLatin1String(indent) + QStringLiteral("<- ");
    if (reply.isEmpty())
        return begin + replyWords(record.frame, reply) + QLatin1Char('\n');
    return begin + hexText(reply) + QStringLiteral("  ") + replyWords(record.frame, reply) +
           QLatin1Char('\n');
}

bool sameStory(const ExchangeRecord& a, const ExchangeRecord& b)
{
    return a.frame == b.frame && a.exchange.reply == b.exchange.reply && a.exchange.sent == b.exchange.sent;
}

} // namespace

QString framesText(const std::vector<ExchangeRecord>& exchanges)
{
    QString text;
    for (std::size_t index = 0; index < exchanges.size();) {
        std::size_t next = index + 1;
        while (next < exchanges.size() && sameStory(exchanges[index], exchanges[next]))
            ++next;
        text += frameLine(exchanges[index], static_cast<int>(next - index)) + replyLine(exchanges[index]);
        index = next;
    }
    return text;
}

void DemoReport::chapter(const QString& title)
{
    print(QStringLiteral("\n%1\n\n").arg(title) +
          row(QStringLiteral("No"), QStringLiteral("What"), QStringLiteral("Result"),
              QStringLiteral("At the controller"), QStringLiteral("Check")));
}

void DemoReport::note(const QString& sentence)
{
    print(QStringLiteral("      %1\n").arg(sentence));
}

QString DemoReport::coloured(const QString& text, bool good) const
{
    if (!m_colours)
        return text;
    return QStringLiteral("\x1b[%1m%2\x1b[0m").arg(good ? 32 : 31).arg(text);
}

QString DemoReport::verdict(const DemoStep& step) const
{
    if (step.right == 0 && step.wrong.isEmpty())
        return QStringLiteral("-");
    return step.wrong.isEmpty() ? coloured(QStringLiteral("ok"), true)
                                : coloured(QStringLiteral("WRONG"), false);
}

void DemoReport::add(const DemoStep& step)
{
    m_right += step.right;
    m_wrong += step.wrong.size();
    QString text = row(QString::number(++m_steps), step.what, step.result, step.controller, verdict(step));
    if (!step.note.isEmpty())
        text += QLatin1String(indent) + step.note + QLatin1Char('\n');
    text += framesText(step.exchanges);
    for (const QString& words : step.wrong)
        text += QLatin1String(indent) + coloured(QStringLiteral("WRONG: %1\n").arg(words), false);
    print(text);
}

QString DemoReport::summary(long requests, qint64 milliseconds) const
{
    const QString words =
        m_wrong == 0 ? QStringLiteral("all right") : QStringLiteral("%1 WRONG").arg(m_wrong);
    return QStringLiteral("\nDemo: %1 steps, %2 requests in %3.%4 s; %5 things compared, %6\n")
        .arg(m_steps)
        .arg(requests)
        .arg(milliseconds / 1000)
        .arg(milliseconds % 1000 / 100)
        .arg(m_right + m_wrong)
        .arg(coloured(words, m_wrong == 0));
}

} // namespace plc
