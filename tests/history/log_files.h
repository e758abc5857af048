// SPDX-License-Identifier: MIT
/// \file
/// \brief Logs in a folder of their own, and samples to put into them.
#ifndef TESTS_HISTORY_LOG_FILES_H
#define TESTS_HISTORY_LOG_FILES_H

#include "history/history_reader.h"
#include "history/sample_store.h"
#include "support/application.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>

#include <sys/resource.h>

namespace test
{

const qint64 noon = 1795348800000; // 2026-11-22T12:00:00Z

/// For its life no file can become longer.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit tight = {bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &tight);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &m_before); }

private:
    rlimit m_before = {};
};

class LogFiles : public testing::Test
{
protected:
    LogFiles()
    {
        needApplication();
        qputenv("TZ", "UTC");
    }

    QString path(const char* name) const { return folder.filePath(QLatin1String(name)); }

    QByteArray bytesOf(const char* name) const
    {
        QFile file(path(name));
        file.open(QIODevice::ReadOnly);
        return file.readAll();
    }

    void put(const char* name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        file.open(QIODevice::WriteOnly);
        file.write(bytes);
    }

    /// \return of all files
    std::vector<std::string> names() const
    {
        std::vector<std::string> names;
        for (const QString& name : QDir(folder.path()).entryList(QDir::Files, QDir::Name))
            names.push_back(name.toStdString());
        return names;
    }

    /// \return a store of \a name with two series, speed in m/min and recipe, a text
    std::unique_ptr<plc::SampleStore> opened(const char* name, const plc::Rotation& rotation = {}) const
    {
        auto store = plc::makeSampleStore(path(name), rotation);
        store->open({{QStringLiteral("speed"), QStringLiteral("m/min"), QStringLiteral("int16"), 1},
                     {QStringLiteral("recipe"), QString(), QStringLiteral("text"), -1}});
        return store;
    }

    /// \return why a store of \a name cannot be opened
    std::string refusal(const char* name) const
    {
        try {
            opened(name);
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "";
    }

    static plc::LogSample speed(qint64 ms, const char* text)
    {
        return {0, noon + ms, plc::SampleState::Fresh, QString::fromLatin1(text)};
    }

    static plc::LogSample recipe(qint64 ms, const char* text)
    {
        return {1, noon + ms, plc::SampleState::Fresh, QString::fromUtf8(text)};
    }

    static plc::LogSample speedIs(plc::SampleState state, qint64 ms)
    {
        return {0, noon + ms, state, QString()};
    }

    const QTemporaryDir folder;
};

} // namespace test

#endif
