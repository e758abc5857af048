#include "runtime/host/driver_path.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <dlfcn.h>
#include <link.h>

#include <initializer_list>
#include <stdexcept>

namespace plc
{

namespace
{

const char fileName[] = "libplcdriver.so";

/// From the folder of the installed program; its name has the version, without which only development goes.
const char installedDriver[] = PANEL_INSTALLED_DRIVER;

/// \return the path of the file that the system's loader finds for the bare name; empty when none
QString systemPath(const QString& name)
{
    void* const library = dlopen(QFile::encodeName(name).constData(), RTLD_LAZY | RTLD_LOCAL);
    if (library == nullptr)
        return QString();
    link_map* map = nullptr;
    const bool known = dlinfo(library, RTLD_DI_LINKMAP, &map) == 0;
    const QString path = known ? QFile::decodeName(map->l_name) : QString();
    dlclose(library);
    return path;
}

} // namespace

QString findDriver(const QString& programDirectory)
{
    const QString name = QLatin1String(fileName);
    const QString installed = QLatin1String(installedDriver);
    const QDir directory(programDirectory);
    for (const QString& place : {name, QLatin1String("../") + name, installed}) {
        const QString path = directory.absoluteFilePath(place);
        if (QFileInfo(path).isFile())
            return QDir::cleanPath(path);
    }
    for (const QString& bareName : {name, QFileInfo(installed).fileName()}) {
        const QString path = systemPath(bareName);
        if (!path.isEmpty())
            return path;
    }
    throw std::runtime_error(
        QStringLiteral("no driver library: %1 is neither in %2 nor one directory up nor installed with this "
                       "program nor where the system looks for libraries; build it, or give its path with "
                       "--driver PATH")
            .arg(name, directory.absolutePath())
            .toStdString());
}

} // namespace plc
