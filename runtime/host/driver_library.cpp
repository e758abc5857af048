// SPDX-License-Identifier: MIT
#include "runtime/host/driver_library.h"

#include <QFileInfo>

#include <stdexcept>

namespace plc
{

namespace
{

[[noreturn]] void fail(const QString& words)
{
    throw std::runtime_error(words.toStdString());
}

/// Looks up one entry point; a library without it is no driver.
template <class Function>
void lookUp(QLibrary& library, const char* name, Function* function)
{
    const QFunctionPointer address = library.resolve(name);
    if (address == nullptr) {
        const QString words =
            QStringLiteral("%1 has no entry point %2, so it is no driver (or one of another version); "
                           "give the path of libplcdriver.so");
        fail(words.arg(library.fileName(), QLatin1String(name)));
    }
    *function = reinterpret_cast<Function>(address);
}

void lookUpAll(QLibrary& library, DriverCalls* calls)
{
#define PANEL_LOOK_UP(name) lookUp(library, #name, &calls->name)
    PANEL_LOOK_UP(SetComInfo);
    PANEL_LOOK_UP(RegistCallBackFuncIntf);
    PANEL_LOOK_UP(FlashLocalRegister);
    PANEL_LOOK_UP(QueryFinishFlag);
    PANEL_LOOK_UP(ComCommunication);
    PANEL_LOOK_UP(DataCom);
    PANEL_LOOK_UP(PLCAddressChangeIntef);
    PANEL_LOOK_UP(AddListReadVar);
    PANEL_LOOK_UP(AddListWriteVar);
    PANEL_LOOK_UP(AddListOnceReadVar);
    PANEL_LOOK_UP(ReCreatReadVarList);
    PANEL_LOOK_UP(EnCommStation);
    PANEL_LOOK_UP(SetRegisterData);
    PANEL_LOOK_UP(GetRegisterData);
#undef PANEL_LOOK_UP
}

} // namespace

DriverLibrary::DriverLibrary(const QString& path)
    // QLibrary searches the system's folders for a bare name; the path of a file means that file.
    : m_library(QFileInfo(path).absoluteFilePath())
{
    // The system's own words for a driver built for another processor are "wrong ELF class".
    if (!m_library.load())
        fail(QStringLiteral("the driver %1 cannot be loaded: %2; build it, or give the path of a "
                            "libplcdriver.so that was built for the same processor as this program")
                 .arg(path, m_library.errorString()));
    try {
        lookUpAll(m_library, &m_calls);
    } catch (...) {
        m_library.unload();
        throw;
    }
}

DriverLibrary::~DriverLibrary()
{
    m_library.unload();
}

} // namespace plc
