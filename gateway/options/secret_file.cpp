// SPDX-License-Identifier: MIT
#include "gateway/options/secret_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace plc
{

namespace
{

const int longestLoginBytes = 64 * 1024; // as long as MQTT allows

/// What systemd hands over lies in a folder that only the service's user gets at. It may give that user the files by
/// an access list, which shows as a right of their group.
bool isHandedOver(const QString& path)
{
    const QString folder = QFile::decodeName(qgetenv("CREDENTIALS_DIRECTORY"));
    return !folder.isEmpty() && QFileInfo(path).absolutePath() == QDir(folder).absolutePath();
}

QString refusalOf(int descriptor, mode_t forbidden)
{
    struct stat status = {};
    if (fstat(descriptor, &status) != 0)
        return QString::fromLocal8Bit(std::strerror(errno));
    if (!S_ISREG(status.st_mode))
        return QStringLiteral("is no file");
    if ((status.st_mode & forbidden) != 0)
        return QStringLiteral("others than its owner can get at it (mode %1); chmod 600 puts that right")
            .arg(status.st_mode & 0777, 4, 8, QLatin1Char('0'));
    return QString();
}

} // namespace

QString secretFileRefusal(const QString& path)
{
    const int descriptor = open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0)
        return QStringLiteral("cannot be read: %1").arg(QString::fromLocal8Bit(std::strerror(errno)));
    const mode_t ofOthers = S_IRWXG | S_IRWXO;
    const QString words = refusalOf(descriptor, isHandedOver(path) ? ofOthers & ~mode_t(S_IRGRP) : ofOthers);
    close(descriptor);
    return words;
}

Login readLogin(const QString& path)
{
    Login login;
    login.error = secretFileRefusal(path);
    if (!login.error.isEmpty())
        return login;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        login.error = QStringLiteral("cannot be read: %1").arg(file.errorString());
        return login;
    }
    const QStringList lines = QString::fromUtf8(file.read(longestLoginBytes)).split(QLatin1Char('\n'));
    const auto line = [&lines](int number) {
        QString text = lines.value(number);
        if (text.endsWith(QLatin1Char('\r')))
            text.chop(1);
        return text;
    };
    login.user = line(0);
    login.password = line(1);
    if (login.user.isEmpty())
        login.error =
            QStringLiteral("the first line is empty; the user is expected there, the password on the second");
    return login;
}

} // namespace plc
