#include "panel/terminal/output.h"

#include <cstdio>

namespace plc
{

namespace
{

/// In one piece, so that a screen shows no half table.
void printTo(std::FILE* file, const QString& text)
{
    const QByteArray bytes = text.toLocal8Bit();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), file);
    std::fflush(file);
}

} // namespace

void print(const QString& text)
{
    printTo(stdout, text);
}

void printError(const QString& text)
{
    printTo(stderr, text);
}

void complain(const QString& message)
{
    printError(QStringLiteral("plcpanel: %1\n").arg(message));
}

} // namespace plc
