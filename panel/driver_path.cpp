#include "panel/driver_path.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <dlfcn.h>
#include <link.h>

#include <initializer_list>
#include <stdexcept>

namespace panel
{

namespace
{

const char fileName[] = "libplcdriver.so";

/// \return the path of the file that the system's loader finds for the bare name; empty when none
QString systemPath()
{
    void* const library = dlopen(fileName, RTLD_LAZY | RTLD_LOCAL);
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
    const QDir directory(programDirectory);
    for (const char* place : {"", "../"}) {
        const QString path = directory.absoluteFilePath(QLatin1String(place) + QLatin1String(fileName));
        if (QFileInfo(path).isFile())
            return QDir::cleanPath(path);
    }
    const QString path = systemPath();
    if (path.isEmpty())
        throw std::runtime_error(
            QStringLiteral(
                "no driver library: %1 is neither in %2 nor one directory up nor where the system looks for "
                "libraries; build it, or give its path with --driver PATH")
                .arg(QLatin1String(fileName), directory.absolutePath())
                .toStdString());
    return path;
}

} // namespace panel
