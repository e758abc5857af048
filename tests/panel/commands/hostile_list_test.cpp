// SPDX-License-Identifier: MIT
// Lists and command lines that nobody meant well: the panel says what is wrong with them, briefly and at once.

#include "panel/plcpanel_run.h"
#include "simulator/simulated_controller.h"
#include "support/built_files.h"

#include <gmock/gmock.h>

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryFile>
#include <QThread>

#include <csignal>
#include <memory>

namespace
{

using test::plcpanel;
using test::RunResult;
using testing::HasSubstr;

const QByteArray header = "name,area,address,station,count,type\n";
const int soonMs = 10000;

class HostileList : public testing::Test
{
protected:
    HostileList() : controller(simulator::Settings()) { controller.start(); }

    RunResult run(const QString& text) const
    {
        return plcpanel(text.split(QLatin1Char(' ')) +
                        QStringList{QStringLiteral("--controller"),
                                    QStringLiteral("127.0.0.1:%1").arg(controller.port())});
    }

    RunResult check(const QByteArray& csv) const
    {
        QTemporaryFile file;
        EXPECT_TRUE(file.open());
        file.write(csv);
        file.close();
        return run(QStringLiteral("check --vars ") + file.fileName());
    }

    /// With less memory than such a file has.
    RunResult checkInLittleRoom(const QString& path) const
    {
#ifdef __SANITIZE_ADDRESS__ // which takes room for itself
        const char* const script = "\"$@\"";
#else
        const char* const script = "ulimit -v 300000; \"$@\"";
#endif
        return test::plcpanelInShell(script, {QStringLiteral("check"), QStringLiteral("--vars"), path,
                                              QStringLiteral("--controller"),
                                              QStringLiteral("127.0.0.1:%1").arg(controller.port())});
    }

    simulator::SimulatedController controller;
};

TEST_F(HostileList, AnAddressThatLooksHexadecimalIsNotWritten)
{
    for (const char* text : {"write 9:0x1=7", "read 9:0x1", "watch 9:0x1 --once", "check 9:0x10"}) {
        const RunResult ended = run(QString::fromLatin1(text));
        EXPECT_EQ(ended.status, 2) << text;
        EXPECT_THAT(ended.errors, HasSubstr("looks like a hexadecimal address")) << text;
    }
    const RunResult listed = check(header + "speed,9,0x10,,1,uint16\n");
    EXPECT_EQ(listed.status, 2);
    EXPECT_THAT(listed.errors, HasSubstr("line 2: \"0x10\" looks like a hexadecimal address"));
    EXPECT_EQ(controller.requests(), 0U);
    EXPECT_EQ(run(QStringLiteral("write 9:00x2=7,8")).status, 0);
    EXPECT_EQ(controller.memory().holdingRegister(1, 1), 8);
}

TEST_F(HostileList, AZeroByteDoesNotCutAField)
{
    const RunResult ended = check(header + QByteArray("speed,9,10\0"
                                                      "5,,1,uint16\n",
                                                      23));
    EXPECT_EQ(ended.status, 2);
    EXPECT_THAT(ended.errors, HasSubstr("line 2: character 11 is a control character (0x00)"));
    EXPECT_EQ(controller.requests(), 0U);
}

TEST_F(HostileList, ThatHasNoEndIsRefusedSoon)
{
    QElapsedTimer clock;
    clock.start();
    for (const char* command : {"watch", "check"}) {
        const RunResult ended = run(QString::fromLatin1(command) + QStringLiteral(" --vars /dev/zero"));
        EXPECT_EQ(ended.status, 2);
        EXPECT_THAT(ended.errors, HasSubstr("/dev/zero: it is longer than 64 MiB"));
    }
    EXPECT_LT(clock.elapsed(), soonMs);
}

TEST_F(HostileList, OfManyMegabytesIsRefusedSoon)
{
    QElapsedTimer clock;
    clock.start();
    EXPECT_THAT(check(header + QByteArray("a\n").repeated(7000000)).errors, HasSubstr("more wrong lines"));
    EXPECT_LT(clock.elapsed(), soonMs);
}

/// \return a file of \a bytes zero bytes, none of which is on the disk
std::unique_ptr<QTemporaryFile> hollowFile(qint64 bytes)
{
    auto file = std::make_unique<QTemporaryFile>();
    EXPECT_TRUE(file->open() && file->resize(bytes));
    file->close();
    return file;
}

TEST_F(HostileList, OfAGigabyteTakesNeitherTimeNorMemory)
{
    if (areProgramsEmulated())
        GTEST_SKIP() << "an emulator takes more room for itself than the program may have";
    const std::unique_ptr<QTemporaryFile> gigabyte = hollowFile(1 << 30);
    const std::unique_ptr<QTemporaryFile> oneLine = hollowFile(50 * 1024 * 1024);
    const RunResult tooLong = checkInLittleRoom(gigabyte->fileName());
    const RunResult inOneLine = checkInLittleRoom(oneLine->fileName());
    EXPECT_EQ(tooLong.status, 2);
    EXPECT_THAT(tooLong.errors, HasSubstr("longer than 64 MiB; a list of variables is expected"));
    EXPECT_EQ(inOneLine.status, 2);
    EXPECT_THAT(inOneLine.errors, HasSubstr("line 1: it has 52428800 bytes; 2000 are allowed"));
}

TEST_F(HostileList, IsAnsweredInFewWordsHoweverMuchIsWrong)
{
    const RunResult lines = check(header + QByteArray("nonsense\n").repeated(1000));
    EXPECT_EQ(lines.status, 2);
    EXPECT_LT(std::count(lines.errors.begin(), lines.errors.end(), '\n'), 50);
    EXPECT_THAT(lines.errors, HasSubstr("and 980 more wrong lines"));
    const RunResult name = check(header + QByteArray(5000000, 'n') + ",9,1,,1,uint16\n");
    EXPECT_EQ(name.status, 2);
    EXPECT_LT(name.errors.size(), 1000U);
}

TEST_F(HostileList, ValuesAreTypedInJson)
{
    controller.memory().setHoldingRegister(1, 0xF700, 0x2065);
    controller.memory().setHoldingRegister(1, 0xF701, 0x47F1);
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write(header + "level,14,200,,1,float32\n");
    file.close();
    const RunResult ended = run(QStringLiteral("watch --once --json --vars ") + file.fileName());
    const QJsonObject line = QJsonDocument::fromJson(QByteArray::fromStdString(ended.out)).object();
    EXPECT_EQ(line[QStringLiteral("value")], QJsonValue(123456.79)) << ended.out;
    EXPECT_EQ(line[QStringLiteral("text")], QStringLiteral("123456.79"));
    EXPECT_EQ(line[QStringLiteral("values")].toArray().size(), 1);
}

TEST_F(HostileList, OfManyRefusedVariablesIsCheckedUntilASignalEndsIt)
{
    simulator::Settings settings;
    settings.refused = {{0, 65535}};
    simulator::SimulatedController refusing(settings);
    refusing.start();
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write(header);
    for (int line = 0; line < 60000; ++line)
        file.write("v" + QByteArray::number(line) + ",9," + QByteArray::number(line) + ",,1,uint16\n");
    file.close();
    test::Plcpanel check(QStringList{QStringLiteral("check"), QStringLiteral("--vars"), file.fileName(),
                                     QStringLiteral("--controller"),
                                     QStringLiteral("127.0.0.1:%1").arg(refusing.port())});
    QElapsedTimer clock;
    clock.start();
    while (refusing.requests() < 100 && clock.elapsed() < 6 * soonMs) // it reads the list first
        QThread::msleep(5);
    ASSERT_GE(refusing.requests(), 100U);
    clock.start();
    EXPECT_THAT(check.endBy(SIGTERM).out, HasSubstr("ended before"));
    EXPECT_LT(clock.elapsed(), soonMs / 2);
}

} // namespace
