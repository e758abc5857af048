// SPDX-License-Identifier: MIT
// A controller, a broker and a folder for the gateway between them.
#ifndef TESTS_GATEWAY_SERVICE_PLANT_FIXTURE_H
#define TESTS_GATEWAY_SERVICE_PLANT_FIXTURE_H

#include "gateway/plant_run.h"
#include "simulator/simulated_controller.h"
#include "support/built_files.h"
#include "support/waiting.h"

#include <gtest/gtest.h>

#include <QFile>

namespace test
{

class PlantFixture : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!hasMosquitto())
            GTEST_SKIP() << "Mosquitto is not installed";
        broker.start();
        controller.start();
        useList("name,area,address,type,unit,scale,min,max,access\n"
                "count,9,100,uint16,,,,,\n"
                "temperature,9,102,int16,°C,0.1,,,\n"
                "set point,9,200,int16,bar,,0,100,rw\n");
    }

    void useList(const char* text)
    {
        QFile file(folder.filePath(QStringLiteral("list.csv")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }

    QStringList arguments(const QStringList& more) const
    {
        return QStringList{
                   QStringLiteral("--controller"), QStringLiteral("127.0.0.1:%1").arg(controller.port()),
                   QStringLiteral("--broker"),     broker.address(),
                   QStringLiteral("--vars"),       folder.filePath(QStringLiteral("list.csv")),
                   QStringLiteral("--state"),      folder.filePath(QStringLiteral("state")),
                   QStringLiteral("--driver"),     QString::fromUtf8(builtDriver()),
                   QStringLiteral("--poll"),       QStringLiteral("10")} +
               more;
    }

    QStringList json(const QStringList& more = {}) const
    {
        return arguments(QStringList{QStringLiteral("--format"), QStringLiteral("json"),
                                     QStringLiteral("--prefix"), QStringLiteral("p")} +
                         more);
    }

    void setRegister(int address, int value)
    {
        controller.memory().setHoldingRegister(1, address, static_cast<std::uint16_t>(value));
    }

    BrokerRun broker;
    simulator::SimulatedController controller;
    QTemporaryDir folder;
};

} // namespace test

#endif
