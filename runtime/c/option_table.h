// SPDX-License-Identifier: MIT
/// \file
/// \brief The settings as options of plcruntime_open().
#ifndef RUNTIME_C_OPTION_TABLE_H
#define RUNTIME_C_OPTION_TABLE_H

#include "runtime/c/plcruntime.h"
#include "runtime/model/settings.h"

namespace plc
{

/// \param options ends with one whose key is null; null: all defaults
/// \return the settings; without a path of the driver unless there is an option for it
/// \throws Refusal for an unknown key, a value that is no number, or one out of range
Settings settingsOf(const plcruntime_option* options);

} // namespace plc

#endif
