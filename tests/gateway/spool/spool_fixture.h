// SPDX-License-Identifier: MIT
// A spool in a folder of its own, for tests.
#ifndef TESTS_GATEWAY_SPOOL_SPOOL_FIXTURE_H
#define TESTS_GATEWAY_SPOOL_SPOOL_FIXTURE_H

#include "gateway/spool/spool.h"
#include "tests/support/application.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <QTemporaryDir>

#include <atomic>
#include <memory>
#include <mutex>

namespace test
{

inline plc::Sample numbered(qint64 value, quint32 variable = 0)
{
    plc::Sample sample;
    sample.variable = variable;
    sample.at = 1000 + value;
    sample.value = value;
    return sample;
}

inline std::vector<plc::Sample> numberedFrom(qint64 first, int count)
{
    std::vector<plc::Sample> samples;
    for (int index = 0; index < count; ++index)
        samples.push_back(numbered(first + index));
    return samples;
}

/// \return the values of samples made by numbered()
inline std::vector<qint64> valuesOf(const std::vector<plc::TakenSample>& taken)
{
    std::vector<qint64> values;
    for (const plc::TakenSample& sample : taken)
        values.push_back(std::get<qint64>(sample.sample.value));
    return values;
}

class SpoolTest : public testing::Test
{
protected:
    SpoolTest() { needApplication(); }

    QString path() const { return folder.filePath(QStringLiteral("line1.spool")); }

    /// Opens it, after closing the one before.
    /// \return what open() says
    QString reopen(const plc::SpoolLimits& limits = plc::SpoolLimits())
    {
        spool.reset();
        spool = std::make_unique<plc::Spool>(
            [this](const QString& words) {
                const std::lock_guard<std::mutex> lock(mutex);
                told << words;
            },
            [this] { return now.load(); });
        return spool->open(path(), names, limits);
    }

    QString everythingTold()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        return told.join(QLatin1Char('\n'));
    }

    QTemporaryDir folder;
    QStringList names{QStringLiteral("count"), QStringLiteral("speed"), QStringLiteral("text")};
    std::atomic<qint64> now{5000};
    std::mutex mutex;
    QStringList told;
    std::unique_ptr<plc::Spool> spool;
};

} // namespace test

#endif
