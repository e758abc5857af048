// SPDX-License-Identifier: MIT
/// \file
/// \brief Messages for whoever runs the gateway.
#ifndef GATEWAY_JOURNAL_JOURNAL_H
#define GATEWAY_JOURNAL_JOURNAL_H

#include <QString>

#include <functional>

namespace plc
{

/// The numbers are those of syslog.
enum class Weight { Error = 3, Warning = 4, Notice = 5, Info = 6 };

/// Prints one line on standard error: under systemd with the weight in front, as the journal takes it, otherwise with
/// the program's name. Any thread.
void tell(Weight weight, const QString& message);

using Listener = std::function<void(Weight weight, const QString& message)>;

/// For tests, before anything is told: messages go to \a listener instead.
void listenToJournal(const Listener& listener);

} // namespace plc

#endif
