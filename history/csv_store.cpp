// SPDX-License-Identifier: MIT
#include "history/csv_store.h"

#include "history/csv_line.h"
#include "history/local_time.h"
#include "history/refuse.h"
#include "history/writer_lock.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <stdexcept>

#include <unistd.h>

namespace plc
{

namespace
{

const QByteArray header = csvHeader;
const int dayCharacters = 10; // of a time: "2026-11-22"

} // namespace

CsvStore::CsvStore(const QString& path, const Rotation& rotation)
    : m_rotation(rotation), m_file(path), m_lock(lockPath(path))
{
}

CsvStore::~CsvStore() = default;

void CsvStore::open(const std::vector<Series>& series)
{
    m_series = series;
    takeWriterLock(&m_lock, m_file.fileName());
    openFile();
    const QString error = m_size == 0 ? append(header) : QString();
    if (!error.isEmpty())
        refuseFile(error);
}

/// \throws std::runtime_error
void CsvStore::openFile()
{
    m_size = 0;
    if (!m_file.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
        refuseFile(m_file.errorString());
    if (m_file.isSequential()) // a pipe or device: there is no going back to a whole line
        refuseFile(QStringLiteral("this is no ordinary file"));
    if (m_file.size() > 0)
        takeOver();
}

/// Goes on with a file that has lines.
void CsvStore::takeOver()
{
    if (m_file.read(header.size()) != header)
        refuseFile(
            QStringLiteral("the file that is there has other columns than %1; give another name, or move "
                           "it away")
                .arg(QString::fromLatin1(header.trimmed())));
    const qint64 longestLine = 65536;
    m_firstTime = QString::fromUtf8(m_file.readLine(longestLine)).section(QLatin1Char(','), 0, 0);
    const qint64 tail = qMin(m_file.size(), longestLine);
    m_file.seek(m_file.size() - tail);
    const int lastEnd = m_file.read(tail).lastIndexOf('\n');
    if (lastEnd < 0)
        refuseFile(QStringLiteral("the file that is there is no log: its last line has no end"));
    m_size = m_file.size() - tail + lastEnd + 1;
    if (m_size == header.size())
        m_firstTime.clear();
    if (!m_file.resize(m_size))
        refuseFile(m_file.errorString());
}

SampleStore::Written CsvStore::write(const std::vector<LogSample>& samples)
{
    Written result;
    QByteArray lines;
    std::size_t formatted = 0;
    const auto flush = [&] {
        result.error = append(lines);
        if (result.error.isEmpty())
            result.count = formatted;
        else if (m_size <= header.size())
            m_firstTime.clear(); // it is not in the file
        lines.clear();
        return result.error.isEmpty();
    };
    for (const LogSample& sample : samples) {
        const QByteArray line = lineOf(sample);
        if (isFull(lines.size() + line.size(), sample)) {
            if (!flush())
                return result;
            result.error = rotate();
            if (!result.error.isEmpty())
                return result;
        }
        if (m_firstTime.isEmpty())
            m_firstTime = localTimeText(sample.timeMs);
        lines += line;
        ++formatted;
    }
    flush();
    return result;
}

void CsvStore::idle(qint64) {}

/// \param bytes that are to be added
bool CsvStore::isFull(qint64 bytes, const LogSample& sample) const
{
    if (m_firstTime.isEmpty())
        return false;
    if (m_rotation.mostBytes > 0 && std::max<qint64>(m_size, header.size()) + bytes > m_rotation.mostBytes)
        return true;
    // A clock that is set back begins no new file.
    return m_rotation.daily &&
           localTimeText(sample.timeMs).leftRef(dayCharacters) > m_firstTime.leftRef(dayCharacters);
}

/// All of \a lines or none: what was written in part is cut off. \return the error
QString CsvStore::append(const QByteArray& lines)
{
    if (lines.isEmpty())
        return QString();
    if (m_file.isOpen() && !QFile::exists(m_file.fileName())) // somebody has moved it away: begin anew
        m_file.close();
    if (!m_file.isOpen()) {
        try {
            openFile();
        } catch (const std::runtime_error& error) {
            return QString::fromStdString(error.what());
        }
    }
    const QByteArray bytes = m_size == 0 && lines != header ? header + lines : lines;
    if (m_file.seek(m_size) && m_file.write(bytes) == bytes.size() && fdatasync(m_file.handle()) == 0) {
        m_size += bytes.size();
        return QString();
    }
    const QString error = m_file.error() == QFileDevice::NoError ? qt_error_string() : m_file.errorString();
    m_file.unsetError();
    m_file.resize(m_size);
    return error;
}

QString CsvStore::rotate()
{
    const QString path = m_file.fileName();
    const QString name = freeName();
    m_file.close();
    if (QFile::exists(path) && !QFile::rename(path, name)) {
        QFile::OpenMode mode = QIODevice::ReadWrite | QIODevice::Unbuffered;
        m_file.open(mode);
        return QStringLiteral("it cannot be renamed to %1").arg(name);
    }
    m_size = 0;
    m_firstTime.clear();
    return QString();
}

/// \return the name that a full file gets, which no file has
QString CsvStore::freeName() const
{
    const QFileInfo info(m_file.fileName());
    QString digits = m_firstTime.left(19); // up to the second
    digits.remove(QLatin1Char('-')).remove(QLatin1Char(':')).replace(QLatin1Char('T'), QLatin1Char('-'));
    const QString stem = info.dir().filePath(info.completeBaseName()) + QLatin1Char('-') + digits;
    QString name = stem + QStringLiteral(".csv");
    for (int number = 2; QFile::exists(name); ++number)
        name = QStringLiteral("%1-%2.csv").arg(stem).arg(number);
    return name;
}

QByteArray CsvStore::lineOf(const LogSample& sample) const
{
    return csvLine(m_series[static_cast<std::size_t>(sample.series)], sample.timeMs, sample.state,
                   sample.text);
}

} // namespace plc
