// SPDX-License-Identifier: MIT
// plcgateway: publishes a controller's values to an MQTT broker.

#include "gateway/journal/journal.h"
#include "gateway/options/gateway_options.h"
#include "gateway/service/gateway_service.h"
#include "runtime/host/driver_path.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <stdexcept>

namespace
{

using namespace plc;

const int wrongOptions = 2; // of no use to be started again
const int failed = 1;

/// Before any thread begins: they inherit it.
void blockSignals()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
}

int run(GatewayOptions options)
{
    if (options.checkOnly)
        return 0;
    if (options.controller.driverPath.isEmpty())
        options.controller.driverPath = findDriver(QCoreApplication::applicationDirPath());
    runGateway(options);
    return 0;
}

int obey(const GatewayLine& line)
{
    if (line.wish == GatewayLine::ShowText) {
        const QByteArray text = line.text.toUtf8();
        const auto size = static_cast<std::size_t>(text.size());
        return std::fwrite(text.constData(), 1, size, stdout) == size && std::fflush(stdout) == 0 ? 0
                                                                                                  : failed;
    }
    if (line.wish == GatewayLine::Refuse) {
        tell(Weight::Error, line.text);
        return wrongOptions;
    }
    try {
        return run(line.options);
    } catch (const std::exception& error) {
        tell(Weight::Error, QString::fromStdString(error.what()));
        return failed;
    }
}

} // namespace

int main(int argc, char* argv[])
{
    blockSignals();
    const QCoreApplication application(argc, argv);
    return obey(parseGatewayLine(QCoreApplication::arguments()));
}
