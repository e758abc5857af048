// SPDX-License-Identifier: MIT
/// \file
/// \brief Who a station says it is: device identification (function 43) and server identity (function 17).
#ifndef RUNTIME_MODBUS_IDENTITY_H
#define RUNTIME_MODBUS_IDENTITY_H

#include <QByteArray>
#include <QString>

#include <functional>
#include <utility>
#include <vector>

namespace plc
{

struct Identity {
    int function = 0;                                ///< that told it, 43 or 17; 0: neither did
    std::vector<std::pair<QString, QString>> fields; ///< name and printable text: "VendorName", ...
};

/// \return the texts of the fields, as a person reads them; empty for none
QString identityText(const Identity& identity);

/// Sends a request of Modbus TCP and waits for its reply. \return the reply, of the unit and function of the request,
/// an exception included; empty when none came
using Ask = std::function<QByteArray(const QByteArray& request)>;

/// Asks by function 43 and, where that tells nothing, by 17. Sends a few requests at most, whatever comes.
Identity askIdentity(int station, const Ask& ask);

} // namespace plc

#endif
