// SPDX-License-Identifier: MIT
#include "gateway/options/config_file.h"

#include "runtime/model/printable.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace plc
{

namespace
{

const int longestConfigBytes = 1024 * 1024;
const char section[] = "[plcgateway]";

QString knownNames()
{
    QStringList names;
    for (const GatewayOptionRow& row : gatewayOptionRows()) {
        if (!row.onlyOnLine)
            names << QLatin1String(row.name);
    }
    return names.join(QStringLiteral(", "));
}

/// \return what is wrong with the line, or an empty text
QString takePair(const QString& name, const QString& value, const QDir& folder, GivenOptions* given)
{
    const GatewayOptionRow* row = gatewayOptionRow(name);
    if (!row)
        return QStringLiteral("there is no \"%1\"; known are %2").arg(excerpt(name), knownNames());
    if (row->onlyOnLine)
        return QStringLiteral("\"%1\" belongs on the command line").arg(name);
    if (given->contains(name))
        return QStringLiteral("\"%1\" is there twice").arg(name);
    if (value.isEmpty())
        return QStringLiteral("\"%1\" has no value; leave the line out for the default").arg(name);
    const bool isYesOrNo = value == QLatin1String("yes") || value == QLatin1String("no");
    if (row->kind == OptionKind::Switch && !isYesOrNo)
        return QStringLiteral("%1 = %2: yes or no is expected").arg(name, excerpt(value));
    given->insert(name, row->kind == OptionKind::File ? folder.absoluteFilePath(value) : value);
    return QString();
}

/// \return what is wrong with the line, or an empty text
QString takeLine(const QString& line, const QDir& folder, GivenOptions* given)
{
    if (line.isEmpty() || line.startsWith(QLatin1Char('#')) || line.startsWith(QLatin1Char(';')) ||
        line == QLatin1String(section))
        return QString();
    if (line.startsWith(QLatin1Char('[')))
        return QStringLiteral("%1: the only section is %2, and it may be left out")
            .arg(excerpt(line), QLatin1String(section));
    const int sign = line.indexOf(QLatin1Char('='));
    if (sign < 0)
        return QStringLiteral("\"%1\" is no NAME = VALUE").arg(excerpt(line));
    return takePair(line.left(sign).trimmed(), line.mid(sign + 1).trimmed(), folder, given);
}

} // namespace

ConfigFile parseConfigFile(const QByteArray& text, const QString& folder)
{
    ConfigFile config;
    int number = 0;
    for (const QByteArray& line : text.split('\n')) {
        ++number;
        const QString words = takeLine(QString::fromUtf8(line).trimmed(), QDir(folder), &config.given);
        if (!words.isEmpty())
            config.errors << QStringLiteral("line %1: %2").arg(number).arg(words);
    }
    return config;
}

ConfigFile readConfigFile(const QString& path)
{
    QFile file(path);
    ConfigFile config;
    if (!file.open(QIODevice::ReadOnly)) {
        config.errors << QStringLiteral("cannot be read: %1").arg(file.errorString());
        return config;
    }
    const QByteArray text = file.read(longestConfigBytes + 1);
    if (text.size() > longestConfigBytes) {
        config.errors << QStringLiteral("is longer than %1 bytes; this is no configuration file")
                             .arg(longestConfigBytes);
        return config;
    }
    return parseConfigFile(text, QFileInfo(path).absolutePath());
}

} // namespace plc
