// SPDX-License-Identifier: MIT
/// \file
/// \brief The options of plcsoak.
#ifndef SOAK_OPTIONS_H
#define SOAK_OPTIONS_H

#include "simulator/faults.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace soak
{

struct Options {
    long requests = 1000000; ///< in all
    int pairs = 8;
    double percent = 10; ///< of the replies that are spoiled, each kind of `faults` as often as the others
    std::vector<const simulator::FaultKind*> faults; ///< that are made
    bool remote = false;
    unsigned seed = 1;
    int timeoutMs = 20;
    int lateMs = 30; ///< more than the time-out, so that late replies are late
    int hangMs = 60000;
    QString driverPath; ///< empty: to be looked for
};

struct CommandLine {
    enum Wish { Run, ShowText, Refuse };
    Wish wish = Run;
    Options options;
    QString text; ///< help to show, or what is wrong and what to do
};

/// \param arguments the program's name first. Needs no application object
CommandLine parseCommandLine(const QStringList& arguments);

} // namespace soak

#endif
