// SPDX-License-Identifier: MIT
/// \file
/// \brief The options of plcsim.
#ifndef SIMULATOR_COMMAND_LINE_H
#define SIMULATOR_COMMAND_LINE_H

#include "simulator/simulated_controller.h"

#include <QString>
#include <QStringList>

namespace simulator
{

struct Options {
    Settings settings;
    QString loadFile; ///< empty: none
    QString dumpFile; ///< empty: none
    bool dump = false;
    bool trace = false;
    bool quiet = false;
};

struct CommandLine {
    enum Wish { Run, ShowText, Refuse };
    Wish wish = Run;
    Options options;
    QString text; ///< help or version to show, or what is wrong with the arguments and what to do
};

/// Reads the arguments, the program's name first. Needs a QCoreApplication.
CommandLine parseCommandLine(const QStringList& arguments);

} // namespace simulator

#endif
