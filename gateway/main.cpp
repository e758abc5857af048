// SPDX-License-Identifier: MIT
// plcgateway: publishes a controller's values to an MQTT broker.

#include "gateway/journal/journal.h"
#include "gateway/options/gateway_options.h"
#include "gateway/service/gateway_service.h"
#include "gateway/status/status_command.h"
#include "runtime/host/driver_path.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <stdexcept>

namespace
{

using namespace plc;

enum ExitStatus {
    Good = 0,
    Failed = 1,
    WrongOptions = 2 // of no use to be started again
};

/// Before any thread begins: they inherit it.
void blockSignals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN); // a spool that may not get longer is told of like a disk that is full
}

/// Leaves the other parts of the list to other processes.
void keepPart(GatewayOptions* options)
{
    if (options->part.parts == 1)
        return;
    std::vector<Variable> elements;
    for (const ListedVariable& listed : options->variables)
        elements.push_back(listed.elements);
    std::vector<ListedVariable> kept;
    for (const std::size_t index : variablesOfPart(options->part, elements, options->controller))
        kept.push_back(options->variables[index]);
    if (kept.empty())
        throw std::runtime_error(
            "--part: this part is empty, because the list takes fewer block reads than there "
            "are parts; give fewer parts");
    options->variables = kept;
}

int run(GatewayOptions options)
{
    if (options.checkOnly)
        return Good;
    if (options.controller.driverPath.isEmpty())
        options.controller.driverPath = findDriver(QCoreApplication::applicationDirPath());
    keepPart(&options);
    runGateway(options);
    return Good;
}

bool print(const QString& words)
{
    const QByteArray text = words.toUtf8();
    const auto size = static_cast<std::size_t>(text.size());
    return std::fwrite(text.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0;
}

int showStatus(const GatewayLine& line)
{
    const StatusReport report = statusOf(line.names, line.isJson);
    const bool isShown = print(report.text);
    for (const QString& error : report.errors)
        tell(Weight::Error, error);
    return isShown && report.errors.isEmpty() ? Good : Failed;
}

int obey(const GatewayLine& line)
{
    if (line.wish == GatewayLine::ShowText)
        return print(line.text) ? Good : Failed;
    if (line.wish == GatewayLine::ShowStatus)
        return showStatus(line);
    if (line.wish == GatewayLine::Refuse) {
        tell(Weight::Error, line.text);
        return WrongOptions;
    }
    try {
        return run(line.options);
    } catch (const std::exception& error) {
        tell(Weight::Error, QString::fromStdString(error.what()));
        return Failed;
    }
}

} // namespace

int main(int argc, char* argv[])
{
    blockSignals();
    const QCoreApplication application(argc, argv);
    return obey(parseGatewayLine(QCoreApplication::arguments()));
}
