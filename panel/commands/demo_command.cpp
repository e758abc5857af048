// SPDX-License-Identifier: MIT
#include "panel/commands/demo_command.h"

#include "panel/demo/demo_controller.h"
#include "panel/demo/demo_report.h"
#include "panel/demo/demo_steps.h"
#include "panel/session/listeners.h"
#include "panel/terminal/output.h"
#include "panel/terminal/terminal.h"

#include <QElapsedTimer>

namespace plc
{

ExitStatus runDemo(const Options& options)
{
    QElapsedTimer clock;
    clock.start();
    DemoController controller;
    controller.start();
    Settings settings = options.settings;
    settings.host = QStringLiteral("127.0.0.1");
    settings.port = controller.port();
    print(QStringLiteral("A simulated controller listens on 127.0.0.1:%1; the driver is %2.\n")
              .arg(settings.port)
              .arg(settings.driverPath));
    DemoReport report(wantsColours());
    const Listeners listeners = listenersFor(options.trace, options.captureTo, settings);
    showAreasAndSilence(settings, listeners, &controller, &report);
    showStations(settings, listeners, &controller, &report);
    print(report.summary(controller.requests(), clock.elapsed()));
    return report.wrong() == 0 ? AllGood : ControllerFailed;
}

} // namespace plc
