// SPDX-License-Identifier: MIT
// What it costs to keep samples until a broker has acknowledged them: processor time of the whole process.
//
//     spool_bench [SECONDS]    how long each is measured; 5 by default
//
// 1,000 variables change ten times a second. First the broker acknowledges at once, then it is away, and at last what
// waited is taken and acknowledged as fast as it goes. The reference is a line of text for each sample, written to a
// file ten times a second. Fields are separated by tabs.

#include "gateway/spool/spool.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <sys/resource.h>

namespace
{

const int variables = 1000;
const int roundsPerSecond = 10;
const int takenAtOnce = 500;

double processSeconds()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::vector<plc::Sample> samplesOf(int round)
{
    std::vector<plc::Sample> samples;
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    for (int index = 0; index < variables; ++index) {
        plc::Sample sample;
        sample.variable = static_cast<quint32>(index);
        sample.at = now;
        sample.value = static_cast<double>(round) + index * 0.5;
        samples.push_back(sample);
    }
    return samples;
}

/// \return processor seconds of \a seconds of rounds, each a call of \a use
template <class Use>
double costOf(int seconds, Use use)
{
    const double before = processSeconds();
    for (int round = 0; round < seconds * roundsPerSecond; ++round) {
        use(samplesOf(round));
        QThread::msleep(1000 / roundsPerSecond);
    }
    return processSeconds() - before;
}

void print(const char* what, double seconds, int samples, double reference)
{
    const double each = seconds * 1e6 / samples;
    std::printf("processor us per value\t%s\t%.2f\t%.1f\n", what, each, each / reference);
}

void appendLines(QFile* file, const std::vector<plc::Sample>& samples)
{
    for (const plc::Sample& sample : samples)
        file->write(QByteArray::number(sample.variable) + ' ' + QByteArray::number(sample.at) + ' ' +
                    QByteArray::number(std::get<double>(sample.value)) + '\n');
    file->flush();
}

void open(plc::Spool* spool, const QString& path, const QStringList& names)
{
    const QString words = spool->open(path, names);
    if (!words.isEmpty())
        throw std::runtime_error(words.toStdString());
}

void run(int seconds)
{
    const QTemporaryDir folder;
    QStringList names;
    for (int index = 0; index < variables; ++index)
        names << QStringLiteral("variable %1").arg(index);
    plc::Spool spool;
    const QString path = folder.filePath(QStringLiteral("spool.db"));
    open(&spool, path, names);
    const int samples = seconds * roundsPerSecond * variables;

    QFile lines(folder.filePath(QStringLiteral("lines")));
    if (!lines.open(QIODevice::WriteOnly))
        throw std::runtime_error("no file can be written");
    const double reference =
        costOf(seconds, [&](const auto& batch) { appendLines(&lines, batch); }) * 1e6 / samples;
    const double online = costOf(seconds, [&](const auto& batch) {
        spool.append(batch);
        spool.acknowledge(spool.take(variables).back().sequence);
    });
    const double away = costOf(seconds, [&](const auto& batch) { spool.append(batch); });

    spool.close();
    plc::Spool again; // so that nothing comes out of memory
    open(&again, path, names);
    QElapsedTimer clock;
    clock.start();
    const double before = processSeconds();
    for (auto taken = again.take(takenAtOnce); !taken.empty(); taken = again.take(takenAtOnce))
        again.acknowledge(taken.back().sequence);
    const double drain = processSeconds() - before;
    std::printf("values a second\tread from disk and acknowledged\t%.0f\n",
                samples * 1000.0 / static_cast<double>(clock.elapsed()));
    std::printf("processor us per value\tlines in a file\t%.2f\t1.0\n", reference);
    print("acknowledged at once", online, samples, reference);
    print("broker away, written to disk", away, samples, reference);
    print("read from disk afterwards", drain, samples, reference);
    std::printf("share of a processor at 10,000 values a second\tbroker away\t%.2f %%\n",
                away / seconds * 100);
}

} // namespace

int main(int argc, char* argv[])
try {
    const QCoreApplication application(argc, argv);
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 5;
    if (seconds < 1)
        throw std::runtime_error("give a number of seconds from 1 on");
    run(seconds);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "spool_bench: %s\n", error.what());
    return 1;
}
