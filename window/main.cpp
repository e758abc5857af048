// SPDX-License-Identifier: MIT
// plcwindow: the values of a controller in a window.

#include "runtime/host/driver_path.h"
#include "window/desk/main_window.h"
#include "window/desk/start_line.h"
#include "window/desk/timed_application.h"

#include <QSettings>

#include <cstdio>
#include <stdexcept>

namespace
{

enum ExitStatus { Closed = 0, WrongCommandLine = 2 };

int say(FILE* where, const QString& text)
{
    std::fprintf(where, "%s", text.toLocal8Bit().constData());
    return where == stdout ? Closed : WrongCommandLine;
}

/// \return true when a display is needed for what is asked
bool needsDisplay(int argc, char* argv[])
{
    for (int index = 1; index < argc; ++index) {
        const QByteArray word(argv[index]);
        if (word == "--help" || word == "-h" || word == "--version" || word == "-v")
            return false;
    }
    return true;
}

int showWindow(const plc::StartLine& line)
{
    QString driver;
    try {
        if (!line.watched || line.watched->settings.driverPath.isEmpty())
            driver = plc::findDriver(QCoreApplication::applicationDirPath());
    } catch (const std::runtime_error& error) {
        return say(stderr, QString::fromStdString(error.what()) + QStringLiteral(" with --driver PATH\n"));
    }
    plc::setAppearance(
        static_cast<plc::Appearance>(QSettings().value(QStringLiteral("window/appearance")).toInt()));
    plc::MainWindow window(driver);
    window.show();
    if (line.watched)
        window.open(*line.watched);
    else
        window.ask();
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char* argv[])
{
    if (!needsDisplay(argc, argv)) {
        const QCoreApplication application(argc, argv);
        return say(stdout, plc::parseStartLine(QCoreApplication::arguments()).text);
    }
    QStringList arguments;
    for (int index = 0; index < argc; ++index)
        arguments << QString::fromLocal8Bit(argv[index]);
    if (!plc::hasDisplay(arguments))
        return say(stderr,
                   QStringLiteral("plcwindow: there is no display; start it in a desktop, or set DISPLAY "
                                  "or WAYLAND_DISPLAY to one\n"));
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    const plc::TimedApplication application(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("plcdriver"));
    QCoreApplication::setApplicationName(QStringLiteral("plcwindow"));
    const plc::StartLine line = plc::parseStartLine(QCoreApplication::arguments());
    if (line.wish != plc::StartLine::Run)
        return say(line.wish == plc::StartLine::ShowText ? stdout : stderr, line.text + QLatin1Char('\n'));
    return showWindow(line);
}
