// SPDX-License-Identifier: MIT
#include "panel/demo/demo_steps.h"

#include "panel/demo/demo_stage.h"

#include <stdexcept>

namespace plc
{

namespace
{

/// What one variable is written with, and what the controller changes it to before it is read.
struct AreaStep {
    const char* variable;
    Values written;
    Values read;
};

const AreaStep areaSteps[] = {
    {"1:17x3", {1, 0, 1}, {0, 1, 1}},
    {"2:100x2", {1, 0}, {0, 1}},
    {"3:100", {1}, {0}},
    {"4:100", {1}, {1}},
    {"5:100", {0}, {1}},
    {"6:100", {1}, {0}},
    {"7:8100x2", {0, 1}, {1, 1}},
    {"8:10.3", {1}, {0}},
    {"8:10.15", {0}, {1}},
    {"9:100", {4660}, {65535}},
    {"9:101x3", {1, 65535, 258}, {3, 2, 1}},
    {"10:5x2", {1000, 2000}, {30000, 40000}},
    {"11:6", {11}, {1111}},
    {"12:7", {12}, {1212}},
    {"13:8", {13}, {1313}},
    {"14:200", {305419896}, {4294967295}},
    {"14:201x2", {65536, 1}, {65537, 131074}},
};

const int mainStation = 1;
const int otherStation = 2;

// Enough to outlast a machine that is busy elsewhere, see DemoStage::writeIsDiscarded().
const int patientRetries = 30;

Variable variableOf(const char* text, int station = mainStation)
{
    QString error;
    auto variable = parseVariable(QLatin1String(text), &error);
    if (!variable)
        throw std::logic_error(error.toStdString());
    variable->station = station;
    return *variable;
}

void showAreas(DemoStage* stage, DemoController* controller, DemoReport* report)
{
    report->chapter(
        QStringLiteral("Areas. Before each write the controller holds other values; before each read it "
                       "changes them."));
    stage->read(variableOf("0:17x3"), {1, 0, 1});
    stage->writeFails(variableOf("0:17"), {1}, FailureKind::Invalid);
    controller->set(variableOf("9:10"), {0xA5A0}); // the bits beside those that are written in area 8
    for (const AreaStep& step : areaSteps) {
        stage->write(variableOf(step.variable), step.written);
        stage->read(variableOf(step.variable), step.read);
    }
}

void showSilence(DemoStage* stage, DemoReport* report)
{
    report->chapter(
        QStringLiteral("A controller that falls silent and comes back. 9:300 is watched: refreshed again "
                       "and again."));
    stage->shows(0, {7});
    stage->setSilent(mainStation, true);
    stage->writeFails(variableOf("9:100"), {42}, FailureKind::NoReply);
    stage->looksOld(0, ValueState::Failed);
    stage->setSilent(mainStation, false);
    stage->shows(0, {8});
    stage->write(variableOf("9:100"), {42});
}

void showSwitchingOff(DemoStage* stage, DemoReport* report)
{
    stage->shows(0, {11});
    stage->shows(1, {22});
    stage->write(variableOf("9:100", otherStation), {77});

    report->note(QStringLiteral(
        "Station 1 does not answer for a moment, so writes wait; station 2 is switched off with "
        "its write still waiting."));
    stage->writeIsDiscarded(variableOf("9:100", otherStation), {88}, variableOf("9:100"), {99});

    stage->isNotRead(1, {23}, 0);
    stage->writeFails(variableOf("9:100", otherStation), {88}, FailureKind::StationOff);
    stage->readFails(variableOf("9:100", otherStation), FailureKind::StationOff);
}

void showSwitchingOn(DemoStage* stage)
{
    stage->shows(0, {12});
    stage->switchStation(otherStation, true);
    stage->shows(1, {24});
    stage->write(variableOf("9:100", otherStation), {88});
    stage->read(variableOf("9:100", otherStation), {89});
}

} // namespace

void showAreasAndSilence(const Settings& settings, const Listeners& listeners, DemoController* controller,
                         DemoReport* report)
{
    Settings own = settings;
    own.station = mainStation;
    DemoStage stage(own, {variableOf("9:300")}, listeners, controller, report);
    showAreas(&stage, controller, report);
    showSilence(&stage, report);
}

void showStations(const Settings& settings, const Listeners& listeners, DemoController* controller,
                  DemoReport* report)
{
    report->chapter(
        QStringLiteral("Two stations on one link, of which 2 is switched off and on. 9:300 of both is "
                       "watched."));
    Settings own = settings;
    own.multiStation = true;
    own.retryLimit = patientRetries;
    const Variable first = variableOf("9:300");
    const Variable second = variableOf("9:300", otherStation);
    DemoStage stage(own, {first, second}, listeners, controller, report);
    showSwitchingOff(&stage, report);
    showSwitchingOn(&stage);
}

} // namespace plc
