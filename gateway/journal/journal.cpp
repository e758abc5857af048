// SPDX-License-Identifier: MIT
#include "gateway/journal/journal.h"

#include "runtime/model/printable.h"

#include <QByteArray>
#include <QStringList>

#include <unistd.h>

namespace plc
{

namespace
{

const int longestMessage = 4000;

/// systemd says so, and a person who starts the program by hand has a terminal.
bool hasJournal()
{
    static const bool has = qEnvironmentVariableIsSet("JOURNAL_STREAM") && isatty(STDERR_FILENO) == 0;
    return has;
}

Listener& listener()
{
    static Listener nobody;
    return nobody;
}

} // namespace

void listenToJournal(const Listener& instead)
{
    listener() = instead;
}

void tell(Weight weight, const QString& message)
{
    if (listener())
        return listener()(weight, message);
    QString text =
        hasJournal() ? QStringLiteral("<%1>").arg(static_cast<int>(weight)) : QStringLiteral("plcgateway: ");
    text += message;
    QByteArray line;
    for (const QString& part : text.split(QLatin1Char('\n')))
        line += excerpt(part, longestMessage).toUtf8() + '\n';
    // In one piece, so that lines of several threads do not mix. One that cannot be printed is lost.
    const auto written = write(STDERR_FILENO, line.constData(), static_cast<std::size_t>(line.size()));
    static_cast<void>(written);
}

} // namespace plc
