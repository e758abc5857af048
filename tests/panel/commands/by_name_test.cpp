// SPDX-License-Identifier: MIT
// plcpanel reading and writing the variables of a list by their names, against a simulated controller.

#include "panel/plcpanel_run.h"
#include "simulator/simulated_controller.h"

#include <gmock/gmock.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryFile>

#include <atomic>
#include <chrono>
#include <thread>

namespace
{

using test::plcpanel;
using test::RunResult;
using testing::HasSubstr;

const char* const machine = "name,area,address,count,type,order,scale,unit,min,max,access\n"
                            "oven,9,100,,int16,,0.1,C,0,90,\n"
                            "drive speed,9,101,,int16,,,rpm,,,\n"
                            "drive energy,9,110,,uint64,ABCD,,Wh,,,r\n"
                            "recipe,9,120,9,text,ABCD,,,,,\n"
                            "lamp,8,50.3,,bit,,,,,,\n"
                            "9:100,10,7,,uint16,,,,,,\n";

class ByName : public testing::Test
{
protected:
    ByName() : controller(settings())
    {
        controller.start();
        EXPECT_TRUE(list.open());
        list.write(machine);
        list.close();
    }

    /// Slow enough that what resets a value has its turn before the value is read back.
    static simulator::Settings settings()
    {
        simulator::Settings settings;
        settings.delayMs = 40;
        return settings;
    }

    RunResult run(QStringList arguments) const
    {
        return plcpanel(arguments << QStringLiteral("--vars") << list.fileName()
                                  << QStringLiteral("--controller")
                                  << QStringLiteral("127.0.0.1:%1").arg(controller.port()));
    }

    RunResult run(const char* command, const char* what, const char* option = "--trace") const
    {
        return run({QLatin1String(command), QLatin1String(what), QLatin1String(option)});
    }

    void set(int address, int value)
    {
        controller.memory().setHoldingRegister(1, address, static_cast<std::uint16_t>(value));
    }
    int get(int address) { return controller.memory().holdingRegister(1, address); }

    simulator::SimulatedController controller;
    QTemporaryFile list;
};

/// A controller's program that sets a word again and again, so that what is written to it does not stay.
class Resetting
{
public:
    explicit Resetting(simulator::ControllerMemory* memory)
        : m_thread([this, memory] {
              while (!m_isOver) {
                  memory->setHoldingRegister(1, 100, 42);
                  std::this_thread::sleep_for(std::chrono::milliseconds(1));
              }
          })
    {
    }
    ~Resetting()
    {
        m_isOver = true;
        m_thread.join();
    }
    Resetting(const Resetting&) = delete;
    Resetting& operator=(const Resetting&) = delete;

private:
    std::atomic<bool> m_isOver{false};
    std::thread m_thread;
};

QJsonObject json(const std::string& line)
{
    return QJsonDocument::fromJson(QByteArray::fromStdString(line)).object();
}

TEST_F(ByName, ReadPrintsValuesInTheUnitOfTheList)
{
    set(100, 215);
    set(101, 0xFFF1);
    set(113, 7);
    const RunResult result = run({QStringLiteral("read"), QStringLiteral("oven"), QStringLiteral("drive *")});
    EXPECT_EQ(result.out, "oven          21.5 C\n"
                          "drive speed   -15 rpm\n"
                          "drive energy  7 Wh\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(ByName, ReadMarksWhatLiesOutsideItsLimits)
{
    set(100, 901);
    EXPECT_EQ(run("read", "oven").out, "oven  90.1 C  (outside 0 to 90 C)\n");
    const QJsonObject object = json(run("read", "oven", "--json").out);
    EXPECT_EQ(object.value(QStringLiteral("value")), QJsonValue(90.1));
    EXPECT_EQ(object.value(QStringLiteral("outside")), QJsonValue(true));
    EXPECT_EQ(object.value(QStringLiteral("unit")), QJsonValue(QStringLiteral("C")));
}

TEST_F(ByName, ReadTakesAddressesBesideNamesAlsoWhereAVariableIsCalledSo)
{
    set(100, 215);
    controller.memory().setHoldingRegister(1, 0x3007, 4);
    EXPECT_EQ(run({QStringLiteral("read"), QStringLiteral("9:100"), QStringLiteral("oven")}).out,
              "9:100  215\noven   21.5 C\n");
    EXPECT_EQ(run("read", "9?100").out, "9:100  4\n");
}

TEST_F(ByName, ReadSaysWhichNameIsNotInTheList)
{
    const RunResult result = run("read", "oben");
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors,
                HasSubstr("oben: the list has no variable of that name, and it is no AREA:ADDRESS"));
    EXPECT_THAT(run("read", "x*").errors, HasSubstr("x*: no name of the list fits this pattern"));
}

TEST_F(ByName, WatchAndCheckTakeThoseThatAreNamed)
{
    const RunResult watched = run({QStringLiteral("watch"), QStringLiteral("o*"), QStringLiteral("--once")});
    EXPECT_THAT(watched.out, HasSubstr("oven      0 C"));
    EXPECT_THAT(watched.out, testing::Not(HasSubstr("recipe")));
    EXPECT_EQ(run("check", "oven").status, 0);
}

TEST_F(ByName, WriteTakesValuesOfTheTypeAndInTheUnit)
{
    const RunResult result =
        run({QStringLiteral("write"), QStringLiteral("oven=21.54"), QStringLiteral("recipe=LEMON TEA"),
             QStringLiteral("lamp=true"), QStringLiteral("drive speed=-15")});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(get(100), 215);
    EXPECT_EQ(get(120), 'L' << 8 | 'E');
    EXPECT_EQ(get(124), 'A' << 8);
    EXPECT_EQ(get(50), 8);
    EXPECT_EQ(get(101), 0xFFF1);
}

TEST_F(ByName, WriteSendsNothingWhenOneValueIsRefused)
{
    for (const char* wrong :
         {"oven=90.1", "drive energy=1", "drive speed=40000", "lamp=2", "dri*=1", "oven"}) {
        const RunResult result =
            run({QStringLiteral("write"), QStringLiteral("drive speed=5"), QLatin1String(wrong)});
        EXPECT_EQ(result.status, 2) << wrong;
        EXPECT_EQ(get(101), 0) << wrong;
    }
    EXPECT_THAT(run("write", "oven=90.1").errors,
                HasSubstr("oven=90.1: 90.1 lies outside its limits, 0 to 90 C"));
}

TEST_F(ByName, WriteVerifiesByReadingBack)
{
    const RunResult result = run("write", "oven=21.5", "--verify");
    EXPECT_EQ(result.out, "oven=21.5  confirmed and read back\n");
    EXPECT_EQ(result.status, 0);
}

TEST_F(ByName, WriteTellsWhatWasReadBackInstead)
{
    const Resetting resetting(&controller.memory());
    const RunResult result = run("write", "oven=21.5", "--verify");
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.errors,
                HasSubstr("oven=21.5: confirmed, but the controller has 4.2 C instead of 21.5 C"));
    const RunResult lines = run({QStringLiteral("write"), QStringLiteral("oven=21.5"),
                                 QStringLiteral("--verify"), QStringLiteral("--json")});
    const QJsonObject object = json(lines.out);
    EXPECT_EQ(lines.status, 3);
    EXPECT_EQ(object.value(QStringLiteral("confirmed")), QJsonValue(true));
    EXPECT_EQ(object.value(QStringLiteral("verified")), QJsonValue(false));
    EXPECT_EQ(object.value(QStringLiteral("readBack")), QJsonValue(QJsonArray{42}));
}

TEST_F(ByName, WriteCannotVerifyABroadcast)
{
    const RunResult result =
        run({QStringLiteral("write"), QStringLiteral("oven=1"), QStringLiteral("--verify"),
             QStringLiteral("--station"), QStringLiteral("0")});
    EXPECT_EQ(result.status, 2);
    EXPECT_THAT(result.errors, HasSubstr("--verify cannot read it back"));
}

TEST_F(ByName, DryRunShowsTheFramesOfTheDriverAndSendsNothing)
{
    const RunResult result = run("write", "oven=21.5", "--dry-run");
    EXPECT_EQ(result.out, "oven=21.5\n"
                          "  -> 00 00 00 00 00 06 01 06 00 64 00 D7  unit 1: write register 100: 215\n");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(get(100), 0);
}

TEST_F(ByName, DryRunShowsEveryFrameOfALongWrite)
{
    const RunResult result = run("write", "2:0=1,0,1,0,1,0,1,0", "--dry-run");
    const QStringList lines = QString::fromStdString(result.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 9);
    EXPECT_EQ(lines.at(8).toStdString().substr(0, 41), "  -> 00 00 00 00 00 06 01 05 00 07 00 00 ");
}

TEST_F(ByName, DryRunSaysWhichBitsItCannotKnow)
{
    const QJsonObject object = json(run({QStringLiteral("write"), QStringLiteral("lamp=on"),
                                         QStringLiteral("--dry-run"), QStringLiteral("--json")})
                                        .out);
    const QJsonArray frames = object.value(QStringLiteral("frames")).toArray();
    ASSERT_EQ(frames.size(), 2);
    EXPECT_EQ(frames.at(0).toObject().value(QStringLiteral("bytes")),
              QJsonValue(QStringLiteral("00 00 00 00 00 06 01 03 00 32 00 01")));
    EXPECT_EQ(frames.at(1).toObject().value(QStringLiteral("bytes")),
              QJsonValue(QStringLiteral("00 00 00 00 00 06 01 06 00 32 00 08")));
    EXPECT_THAT(frames.at(1).toObject().value(QStringLiteral("words")).toString().toStdString(),
                HasSubstr("its other bits are those that were read"));
}

TEST_F(ByName, DryRunNeedsNoController)
{
    const RunResult result =
        plcpanel({QStringLiteral("write"), QStringLiteral("9:100=1"), QStringLiteral("--dry-run")});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("00 00 00 00 00 06 01 06 00 64 00 01"));
    EXPECT_THAT(run("write", "oven=1", "--dry-run=1").errors, HasSubstr("dry-run"));
    EXPECT_EQ(run({QStringLiteral("write"), QStringLiteral("oven=1"), QStringLiteral("--dry-run"),
                   QStringLiteral("--trace")})
                  .status,
              2);
}

} // namespace
