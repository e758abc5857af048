// SPDX-License-Identifier: MIT
#include "panel/terminal/output.h"

#include <QTextCodec>

#include <atomic>
#include <cerrno>
#include <clocale>
#include <cstring>
#include <mutex>
#include <utility>

#include <fcntl.h>
#include <langinfo.h>
#include <poll.h>
#include <unistd.h>

namespace plc
{

namespace
{

std::atomic<bool> failed{false};

/// What is kept of standard error. Any thread.
class HeldErrors
{
public:
    void hold()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isHolding = true;
    }

    /// \return false when nothing is kept
    bool keep(const QString& text)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_isHolding && m_texts.size() < mostCharacters)
            m_texts += text;
        return m_isHolding;
    }

    QString release()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isHolding = false;
        return std::exchange(m_texts, QString());
    }

private:
    static const int mostCharacters = 100000; // a message for each failure of days would fill the memory

    std::mutex m_mutex;
    bool m_isHolding = false;
    QString m_texts;
};

HeldErrors heldErrors;

/// A descriptor that does not block may be full for a while.
bool waitForRoom(int descriptor)
{
    pollfd entry = {descriptor, POLLOUT, 0};
    return poll(&entry, 1, -1) >= 0 || errno == EINTR;
}

/// \return 0, or the error that ended it
int writeAll(int descriptor, const QByteArray& bytes)
{
    for (int at = 0; at < bytes.size();) {
        const auto rest = static_cast<std::size_t>(bytes.size() - at);
        const ssize_t written = ::write(descriptor, bytes.constData() + at, rest);
        if (written >= 0)
            at += static_cast<int>(written);
        else if (errno != EINTR && !(errno == EAGAIN && waitForRoom(descriptor)))
            return errno;
    }
    return 0;
}

/// In one piece, so that a screen shows no half table.
int printTo(int descriptor, const QByteArray& bytes)
{
    static std::mutex mutexes[STDERR_FILENO + 1]; // of two texts the one that cannot be written holds up none
    std::lock_guard<std::mutex> lock(mutexes[descriptor]);
    return writeAll(descriptor, bytes);
}

void printOut(const QByteArray& bytes)
{
    static std::atomic<bool> outFailed{false};
    if (outFailed)
        return;
    const int error = printTo(STDOUT_FILENO, bytes);
    if (error == 0 || outFailed.exchange(true))
        return;
    failed = true;
    complain(QStringLiteral("cannot write the output: %1").arg(QString::fromLocal8Bit(std::strerror(error))));
}

bool isLocaleUtf8()
{
    static const bool isUtf8 = QTextCodec::codecForLocale()->name() == "UTF-8";
    return isUtf8;
}

} // namespace

void keepStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        const int wrongWay = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        // Those below are there, so the lowest free number, which is taken, is this one.
        if (fcntl(descriptor, F_GETFD) == -1 && open("/dev/null", wrongWay) != descriptor)
            failed = true;
    }
}

void preferUtf8()
{
    if (qstrcmp(nl_langinfo(CODESET), "ANSI_X3.4-1968") == 0 && setlocale(LC_CTYPE, "C.UTF-8") != nullptr)
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
}

void print(const QString& text)
{
    printOut(text.toLocal8Bit());
}

void printBytes(const QByteArray& utf8)
{
    if (isLocaleUtf8())
        printOut(utf8);
    else
        print(QString::fromUtf8(utf8));
}

void printError(const QString& text)
{
    if (heldErrors.keep(text))
        return;
    const int error = printTo(STDERR_FILENO, text.toLocal8Bit());
    if (error != 0 && error != EBADF)
        failed = true;
}

void holdErrors()
{
    heldErrors.hold();
}

void releaseErrors()
{
    const QString texts = heldErrors.release();
    if (!texts.isEmpty())
        printError(texts);
}

void complain(const QString& message)
{
    printError(QStringLiteral("plcpanel: %1\n").arg(message));
}

bool outputFailed()
{
    return failed;
}

bool readerIsGone()
{
    pollfd entry = {STDOUT_FILENO, 0, 0};
    return poll(&entry, 1, 0) == 1 && (entry.revents & POLLERR) != 0;
}

} // namespace plc
