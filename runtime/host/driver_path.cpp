// SPDX-License-Identifier: MIT
#include "runtime/host/driver_path.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <dlfcn.h>
#include <link.h>

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

/// \return the path of the library that this code was loaded from; empty when it is part of the program
QString ownLibrary()
{
    Dl_info info;
    void* map = nullptr;
    if (dladdr1(&fileName, &info, &map, RTLD_DL_LINKMAP) == 0 || map == nullptr)
        return QString();
    return QFile::decodeName(static_cast<const link_map*>(map)->l_name); // a program's is empty
}

/// \return the files that may be the driver, the likeliest first
QStringList candidates(const QString& programDirectory)
{
    const QString name = QLatin1String(fileName);
    const QString installed = QLatin1String(installedDriver);
    QStringList paths;
    if (!programDirectory.isEmpty()) {
        const QDir directory(programDirectory);
        for (const QString& place : {name, QLatin1String("../") + name, installed})
            paths << QDir::cleanPath(directory.absoluteFilePath(place));
    }
    const QString library = ownLibrary();
    if (!library.isEmpty()) {
        const QDir directory = QFileInfo(library).absoluteDir();
        paths << directory.absoluteFilePath(QFileInfo(installed).fileName())
              << directory.absoluteFilePath(name);
    }
    return paths;
}

} // namespace

QString findDriver(const QString& programDirectory)
{
    for (const QString& path : candidates(programDirectory)) {
        if (QFileInfo(path).isFile())
            return path;
    }
    for (const QString& bareName :
         {QString(QLatin1String(fileName)), QFileInfo(QLatin1String(installedDriver)).fileName()}) {
        const QString path = systemPath(bareName);
        if (!path.isEmpty())
            return path;
    }
    throw std::runtime_error(
        (QStringList(QStringLiteral("no driver library: the system finds no ") + QLatin1String(fileName)) +
         candidates(programDirectory))
            .join(QStringLiteral(", and there is no "))
            .append(QStringLiteral("; build it, or give its path"))
            .toStdString());
}

} // namespace plc
