// SPDX-License-Identifier: MIT
/// \file
/// \brief Files that hold what nobody else may know.
#ifndef GATEWAY_OPTIONS_SECRET_FILE_H
#define GATEWAY_OPTIONS_SECRET_FILE_H

#include <QString>

namespace plc
{

/// \return why the file is not to be used: it cannot be read, or others than its owner can read it; an empty
///         text when nothing is against it. In the folder of CREDENTIALS_DIRECTORY, which systemd makes, the group may
///         read it.
QString secretFileRefusal(const QString& path);

struct Login {
    QString user;
    QString password;
    QString error; ///< not empty: what is wrong with the file and what to do
};

/// Reads the user of the first line and the password of the second.
Login readLogin(const QString& path);

} // namespace plc

#endif
