// SPDX-License-Identifier: MIT
// How often a list is refreshed by one process, and by several that share it, when the controller takes its time for
// each reply.
//
//     parts_bench [--parts N] [--delay MS] [--seconds S] [LIST]    4, 5, 5; LIST is examples/thousand.csv
//
// A list is refreshed as often as its slowest part. Fields are separated by tabs. Each part is a process of its own,
// this program again, as parts_bench --port PORT --part K/N.

#include "bench/loopback_controller.h"
#include "runtime/cycle/list_part.h"
#include "runtime/cycle/runtime.h"
#include "runtime/model/variable_list.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <memory>
#include <stdexcept>

namespace
{

const int longestWaitMs = 60000;
const int warmUpPasses = 2;
const int patienceMs = 5000; // with a busy machine

using Variables = std::vector<plc::Variable>;

Variables variablesOf(const QString& path)
{
    const plc::VariableList list = plc::readVariableList(path);
    if (!list.errors.isEmpty())
        throw std::runtime_error(list.errors.first().toStdString());
    Variables variables;
    for (const plc::ListedVariable& listed : list.variables)
        variables.push_back(listed.elements);
    return variables;
}

long waitForPass(const plc::Runtime& runtime, long atLeast)
{
    QElapsedTimer clock;
    clock.start();
    long passes = 0;
    while ((passes = runtime.statistics().passes) < atLeast) {
        if (clock.elapsed() > longestWaitMs)
            throw std::runtime_error("the list is not refreshed");
        QThread::msleep(1);
    }
    return passes;
}

/// Refreshes one part and prints how many passes a second there were.
void runPart(const QString& path, int port, const QString& text, int seconds)
{
    QString error;
    const auto part = plc::parseListPart(text, &error);
    if (!part)
        throw std::runtime_error(error.toStdString());
    plc::Settings settings;
    settings.driverPath = QStringLiteral(PLC_DRIVER_LIBRARY);
    settings.port = port;
    settings.timeoutMs = patienceMs;
    settings.pollMs = 0;
    const Variables all = variablesOf(path);
    const std::vector<std::size_t> chosen = plc::variablesOfPart(*part, all, settings);
    plc::Runtime runtime(settings);
    for (const std::size_t index : chosen)
        runtime.addCyclic(all[index]);
    runtime.start();
    const long first = waitForPass(runtime, warmUpPasses);
    QElapsedTimer clock;
    clock.start();
    QThread::sleep(static_cast<unsigned long>(seconds));
    const long last = waitForPass(runtime, runtime.statistics().passes + 1); // so that only whole ones count
    std::printf("%.3f\n", static_cast<double>(last - first) * 1000 / static_cast<double>(clock.elapsed()));
}

/// \return passes per second of the slowest of \a parts
double refreshesPerSecond(const QString& path, int parts, int delayMs, int seconds)
{
    const bench::LoopbackController controller(
        QStringLiteral(PLCSIM_PROGRAM),
        {QStringLiteral("--quiet"), QStringLiteral("--delay"), QString::number(delayMs)});
    std::vector<std::unique_ptr<QProcess>> processes;
    for (int number = 1; number <= parts; ++number) {
        processes.push_back(std::make_unique<QProcess>());
        processes.back()->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        processes.back()->start(QCoreApplication::applicationFilePath(),
                                {QStringLiteral("--port"), QString::number(controller.port()),
                                 QStringLiteral("--part"), QStringLiteral("%1/%2").arg(number).arg(parts),
                                 QStringLiteral("--seconds"), QString::number(seconds), path});
    }
    double slowest = std::numeric_limits<double>::max();
    for (const auto& process : processes) {
        process->waitForFinished(seconds * 1000 + longestWaitMs);
        if (process->exitStatus() != QProcess::NormalExit || process->exitCode() != 0)
            throw std::runtime_error("a part failed");
        slowest = std::min(slowest, process->readAll().trimmed().toDouble());
    }
    return slowest;
}

QCommandLineOption numberOption(const char* name, const char* help, const char* number)
{
    return {QLatin1String(name), QLatin1String(help), QStringLiteral("N"), QLatin1String(number)};
}

} // namespace

int main(int argc, char* argv[])
try {
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions({numberOption("parts", "How many processes share the list.", "4"),
                       numberOption("delay", "Milliseconds that the controller takes for a reply.", "5"),
                       numberOption("seconds", "How long each is measured.", "5"),
                       numberOption("port", "Of a controller: run one part.", "0"),
                       numberOption("part", "Which one.", "1/1")});
    parser.addPositionalArgument(QStringLiteral("list"), QStringLiteral("List of variables."));
    parser.process(application);
    const auto number = [&parser](const char* name) { return parser.value(QLatin1String(name)).toInt(); };
    const QStringList lists = parser.positionalArguments();
    const QString path = lists.isEmpty() ? QStringLiteral(PLC_EXAMPLES_DIR "/thousand.csv") : lists.first();
    if (number("port") != 0) {
        runPart(path, number("port"), parser.value(QStringLiteral("part")), number("seconds"));
        return 0;
    }
    const int parts = number("parts");
    const double one = refreshesPerSecond(path, 1, number("delay"), number("seconds"));
    const double shared = refreshesPerSecond(path, parts, number("delay"), number("seconds"));
    std::printf("refreshes per second\t%d parts\t%.2f\t%.2f\t%.2f\n", parts, shared, one, shared / one);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "parts_bench: %s\n", error.what());
    return 1;
}
