// SPDX-License-Identifier: MIT
// Elements whose Modbus address would lie beyond 65535: a frame would carry the address of another element.

#include "panel/plcpanel_run.h"
#include "simulator/simulated_controller.h"

#include <gmock/gmock.h>

#include <QTemporaryFile>

namespace
{

using test::plcpanel;
using test::RunResult;
using testing::HasSubstr;

simulator::Settings controllerSettings(bool remote)
{
    simulator::Settings settings;
    settings.remote = remote;
    return settings;
}

struct LastElement {
    const char* area;
    const char* last;
    const char* behind;
    bool coil;
    int place; // of the last one
};

// From where each area begins: 65536 coils and registers there are, two registers for a double word.
const LastElement lastElements[] = {
    {"0", "3777", "4000", true, 65535},     {"1", "1777", "2000", true, 65535},
    {"3", "56319", "56320", true, 65535},   {"4", "8191", "8192", true, 65535},
    {"5", "4095", "4096", true, 65535},     {"6", "3071", "3072", true, 65535},
    {"7", "65535", "65536", true, 65535},   {"10", "53247", "53248", false, 65535},
    {"11", "56319", "56320", false, 65535}, {"12", "4095", "4096", false, 65535},
    {"13", "3071", "3072", false, 65535},   {"14", "1351", "1352", false, 65534},
};

class LastElements : public testing::TestWithParam<LastElement>
{
protected:
    LastElements() : controller(controllerSettings(false)) { controller.start(); }

    RunResult run(const QString& text) const
    {
        return plcpanel(text.split(QLatin1Char(' ')) +
                        QStringList{QStringLiteral("--controller"),
                                    QStringLiteral("127.0.0.1:%1").arg(controller.port())});
    }

    QString at(const char* address) const
    {
        return QStringLiteral("%1:%2").arg(QLatin1String(GetParam().area), QLatin1String(address));
    }

    simulator::SimulatedController controller;
};

TEST_P(LastElements, IsReadWrittenWatchedAndChecked)
{
    const LastElement& each = GetParam();
    controller.memory().setCoil(1, each.place, each.coil);
    controller.memory().setHoldingRegister(1, each.place, each.coil ? 0 : 1);
    const QString last = at(each.last);
    for (const char* command : {"read %1", "watch %1 --once", "watch %1 --once --max-block 2", "check %1"}) {
        const RunResult ended = run(QString::fromLatin1(command).arg(last));
        EXPECT_EQ(ended.status, 0) << command << ended.out << ended.errors;
    }
    EXPECT_THAT(run(QStringLiteral("read ") + last).out, HasSubstr("  1\n"));
    if (each.area != std::string("0")) {
        EXPECT_EQ(run(QStringLiteral("write %1=0").arg(last)).status, 0);
        EXPECT_FALSE(controller.memory().coil(1, each.place));
        EXPECT_EQ(controller.memory().holdingRegister(1, each.place), 0);
    }
}

TEST_P(LastElements, HasNoneBehindItThatIsAskedFor)
{
    const LastElement& each = GetParam();
    const std::string words =
        std::string("the last element of area ") + each.area + " is " + each.area + ":" + each.last;
    const QString behind = at(each.behind);
    const QString across = at(each.last) + QStringLiteral("x2");
    for (const QString& variable : {behind, across}) {
        for (const char* command : {"read %1", "write %1=1,1", "watch %1 --once", "check %1"}) {
            QString line = QString::fromLatin1(command).arg(variable);
            if (line.startsWith(QStringLiteral("write ")) && !variable.contains(QLatin1Char('x')))
                line.chop(2);
            const RunResult ended = run(line);
            EXPECT_EQ(ended.status, 2) << line.toStdString();
            EXPECT_THAT(ended.errors,
                        testing::AnyOf(HasSubstr(words), HasSubstr("no address of area"),
                                       HasSubstr("run past the end"), HasSubstr("only be read")))
                << line.toStdString();
        }
    }
    EXPECT_EQ(controller.requests(), 0U);
}

TEST_P(LastElements, IsTheLastOfAListToo)
{
    const LastElement& each = GetParam();
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write("name,area,address,station,count,type\n");
    file.write(QByteArray("a,") + each.area + "," + each.behind + ",,1," +
               (each.coil                        ? "bit"
                : each.area == std::string("14") ? "uint32"
                                                 : "uint16") +
               "\n");
    file.close();
    const RunResult ended = run(QStringLiteral("check --vars ") + file.fileName());
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("line 2: "));
    EXPECT_THAT(ended.errors, HasSubstr(each.last));
    EXPECT_EQ(controller.requests(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Areas, LastElements, testing::ValuesIn(lastElements));

TEST(LastElementsOfRemoteFrames, ReachAsFarAsTheAreaHasElements)
{
    simulator::SimulatedController controller(controllerSettings(true));
    controller.start();
    const QStringList remote = {QStringLiteral("--remote"), QStringLiteral("--controller"),
                                QStringLiteral("127.0.0.1:%1").arg(controller.port())};
    // Not refused by the panel; what the controller makes of it is its own affair.
    const RunResult ended = plcpanel(QStringList{QStringLiteral("read"), QStringLiteral("10:60000"),
                                                 QStringLiteral("--retries"), QStringLiteral("0")} +
                                     remote);
    EXPECT_NE(ended.status, 2) << ended.errors;
    EXPECT_GT(controller.requests(), 0U);
}

} // namespace
