// SPDX-License-Identifier: MIT
#include "window/desk/simulated.h"

#include "simulator/memory_text.h"
#include "simulator/simulated_controller.h"

#include <QFile>

namespace plc
{

namespace
{

QByteArray resource(const char* name)
{
    QFile file(QStringLiteral(":/plcwindow/") + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

std::shared_ptr<simulator::SimulatedController> startSimulatedMachine()
{
    auto controller = std::make_shared<simulator::SimulatedController>();
    for (const char* name : {"machine.memory", "machine-moving.memory"}) {
        const simulator::MemoryText text = simulator::parseMemoryText(resource(name).toStdString(), name);
        for (const simulator::MemoryValue& value : text.values)
            controller->memory().set(value);
        for (const simulator::MovingPlace& place : text.moving)
            controller->memory().move(place);
    }
    controller->start();
    return controller;
}

std::vector<ListedVariable> simulatedVariables()
{
    return parseVariableList(resource("machine.csv")).variables;
}

} // namespace plc
