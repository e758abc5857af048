#include "panel/demo_command.h"

#include "panel/demo_controller.h"
#include "panel/demo_report.h"
#include "panel/demo_steps.h"
#include "panel/listeners.h"
#include "panel/output.h"
#include "panel/terminal.h"

#include <QElapsedTimer>

namespace panel
{

ExitStatus runDemo(const Options& options)
{
    QElapsedTimer clock;
    clock.start();
    DemoController controller;
    controller.start();
    Options own = options;
    own.settings.host = QStringLiteral("127.0.0.1");
    own.settings.port = controller.port();
    print(QStringLiteral("A simulated controller listens on 127.0.0.1:%1; the driver is %2.\n")
              .arg(own.settings.port)
              .arg(own.settings.driverPath));
    DemoReport report(wantsColours());
    const Listeners listeners = listenersFor(own);
    showAreasAndSilence(own, listeners, &controller, &report);
    showStations(own, listeners, &controller, &report);
    print(report.summary(controller.requests(), clock.elapsed()));
    return report.wrong() == 0 ? AllGood : ControllerFailed;
}

} // namespace panel
