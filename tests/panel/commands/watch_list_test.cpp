// SPDX-License-Identifier: MIT
// plcpanel watch --vars as a process: the lists of examples/ against a simulated controller.

#include "panel/commands/listed_values.h"
#include "panel/plcpanel_run.h"
#include "simulator/memory_text.h"
#include "support/runtime_fixture.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryFile>
#include <QThread>

#include <atomic>
#include <csignal>
#include <map>
#include <mutex>
#include <thread>

namespace
{

using test::exampleFile;
using test::ListedLine;
using test::Plcpanel;
using test::plcpanel;
using test::RunResult;
using testing::HasSubstr;
using testing::IsEmpty;

QByteArray contents(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

QJsonObject json(const QString& line)
{
    return QJsonDocument::fromJson(line.toUtf8()).object();
}

QStringList linesOf(const std::string& text)
{
    return QString::fromStdString(text).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

std::string textIn(const QJsonObject& object, const char* member)
{
    return object[QLatin1String(member)].toString().toStdString();
}

class WatchList : public testing::Test
{
protected:
    WatchList() { controller.start(); }

    QStringList line(const QString& list, const char* options) const
    {
        return QString::fromLatin1(options).split(QLatin1Char(' ')) +
               QStringList{
                   QStringLiteral("--vars"),       list,
                   QStringLiteral("--timeout"),    QStringLiteral("3000"),
                   QStringLiteral("--controller"), QStringLiteral("127.0.0.1:%1").arg(controller.port())};
    }

    RunResult run(const QString& list, const char* options) const { return plcpanel(line(list, options)); }

    std::string rightText(const ListedLine& variable)
    {
        return expectedText(variable, elementsInController(controller, variable));
    }

    simulator::SimulatedController controller;
};

TEST(Examples, TheScriptPrintsTheListOfAThousandByteForByte)
{
    QProcess script;
    script.start(exampleFile("make-thousand"), QStringList());
    ASSERT_TRUE(script.waitForFinished());
    EXPECT_EQ(script.exitCode(), 0);
    EXPECT_TRUE(script.readAllStandardOutput() == contents(exampleFile("thousand.csv")));
}

TEST(Examples, TheThousandCoverEveryAreaAndTypeInNoOrder)
{
    const std::vector<ListedLine> lines = test::linesOfThousand();
    std::map<int, int> areas;
    std::map<std::string, int> types;
    int steps = 0; // from one line to the next with a higher address in the same area
    for (std::size_t i = 0; i < lines.size(); ++i) {
        ++areas[lines[i].area];
        ++types[lines[i].type];
        steps += i > 0 && lines[i].area == lines[i - 1].area && lines[i].element > lines[i - 1].element;
    }
    EXPECT_EQ(lines.size(), 1000U);
    EXPECT_EQ(areas.size(), 15U);
    EXPECT_EQ(types.size(), 8U);
    EXPECT_LT(steps, 20);
}

TEST_F(WatchList, ShowsTheMachineAsTheReadmeHasIt)
{
    const auto memory =
        simulator::parseMemoryText(contents(exampleFile("machine.memory")).toStdString(), "machine.memory");
    ASSERT_THAT(memory.errors, IsEmpty());
    for (const simulator::MemoryValue& value : memory.values)
        controller.memory().set(value);
    const RunResult watch = run(exampleFile("machine.csv"), "watch --once");
    EXPECT_EQ(watch.status, 0);
    QStringList shown = linesOf(watch.out);
    shown.removeFirst(); // the link
    ASSERT_EQ(shown.size(), 1 + 18);
    // How old the values are, is up to the machine.
    const QRegularExpression age(QStringLiteral("\\d\\.\\d s"));
    const QString readme = QString::fromUtf8(contents(exampleFile("README.md")));
    for (QString& row : shown)
        EXPECT_TRUE(readme.contains(QStringLiteral("\n    ") + row.replace(age, QStringLiteral("0.0 s")) +
                                    QLatin1Char('\n')))
            << row.toStdString();
}

TEST_F(WatchList, OncePrintsEachOfTheThousandAsTheControllerHasIt)
{
    const std::vector<ListedLine> lines = test::linesOfThousand();
    std::mt19937 random(1);
    for (const ListedLine& each : lines)
        changeInController(controller, each, &random);
    const RunResult watch = run(exampleFile("thousand.csv"), "watch --once --json");
    EXPECT_EQ(watch.status, 0);
    EXPECT_THAT(watch.errors, IsEmpty());
    const QStringList shown = linesOf(watch.out);
    ASSERT_EQ(shown.size(), static_cast<int>(lines.size()));
    for (int i = 0; i < shown.size(); ++i) {
        const ListedLine& right = lines[static_cast<std::size_t>(i)];
        const QJsonObject object = json(shown[i]);
        const std::vector<quint32> elements = elementsInController(controller, right);
        QJsonArray values;
        for (const quint32 element : elements)
            values.append(static_cast<qint64>(element));
        EXPECT_EQ(textIn(object, "name"), right.name);
        EXPECT_EQ(textIn(object, "type"), right.type);
        EXPECT_EQ(textIn(object, "state"), "fresh") << right.name;
        EXPECT_EQ(textIn(object, "text"), expectedText(right, elements)) << right.name;
        EXPECT_TRUE(object[QStringLiteral("values")].toArray() == values) << shown[i].toStdString();
    }
}

TEST_F(WatchList, AWrongListIsToldWholeAndNothingIsPolled)
{
    QTemporaryFile list;
    ASSERT_TRUE(list.open());
    list.write("name,area,address,station,count,type\n"
               "good,9,1,,,int16\n"
               "a,9,100,,,int17\n"
               "b,15,100,,,int16\n"
               "c,0,18,,,bit\n"
               "d,9,0,3,,int16\n");
    list.close();
    const RunResult watch = run(list.fileName(), "watch --once");
    EXPECT_EQ(watch.status, 2);
    EXPECT_THAT(watch.out, IsEmpty());
    const std::string path = list.fileName().toStdString();
    for (const char* said :
         {": line 3: \"int17\" is no type of area 9", ": line 4: \"15\" is no area; 0 to 14 is expected",
          ": line 5: \"18\"", ": line 6: station 3 is not served"})
        EXPECT_THAT(watch.errors, HasSubstr('\n' + path + said));
    EXPECT_EQ(controller.requests(), 0U);
}

TEST_F(WatchList, StatisticsStandBelowTheTable)
{
    const RunResult watch = run(exampleFile("thousand.csv"), "watch --once --stats");
    EXPECT_THAT(watch.out,
                testing::ContainsRegex("\n\nREFRESHES  1; the last took ([0-9]+) requests in [0-9]+ frames\n"
                                       "READ       [0-9]+ registers \\([0-9.]+ % of them for no variable\\), "
                                       "[0-9]+ bits \\([0-9.]+ % of them for no variable\\)\n"
                                       "TROUBLE    0 retries, 0 failures\n"
                                       "ANSWERS    [0-9]+ replies in [0-9.]+ to [0-9.]+ ms, "));
}

TEST_F(WatchList, StatisticsAreTheLastLineOfJson)
{
    Plcpanel watch(line(exampleFile("machine.csv"), "watch --json --stats --interval 20"));
    ASSERT_TRUE(watch.eventually([](const std::string& out) { return linesOf(out).size() >= 18; }));
    const RunResult end = watch.endBy(SIGINT);
    EXPECT_EQ(end.status, 0);
    const QJsonObject statistics = json(linesOf(end.out).last())[QStringLiteral("statistics")].toObject();
    EXPECT_GE(statistics[QStringLiteral("refreshes")].toInt(), 1);
    EXPECT_EQ(statistics[QStringLiteral("failed")].toInt(-1), 0);
    EXPECT_EQ(linesOf(end.out).filter(QStringLiteral("\"statistics\"")).size(), 1);
}

/// What a running watch --json has last said of each variable.
class LastSaid
{
public:
    void take(const std::string& out)
    {
        for (std::size_t end; (end = out.find('\n', m_read)) != std::string::npos; m_read = end + 1) {
            const QJsonObject object = json(QString::fromStdString(out.substr(m_read, end - m_read)));
            m_objects[textIn(object, "name")] = object;
        }
    }

    bool isFresh(const std::string& name, const std::string& text) const
    {
        const auto found = m_objects.find(name);
        return found != m_objects.end() && textIn(found->second, "state") == "fresh" &&
               textIn(found->second, "text") == text;
    }

private:
    std::size_t m_read = 0;
    std::map<std::string, QJsonObject> m_objects;
};

/// Changes the controller's memory on a thread of its own, batch after batch of variables, a few ahead of
/// what was seen. The batch that is looked for is left alone; meanwhile the newest one keeps changing.
class Changer
{
public:
    Changer(simulator::SimulatedController* controller, const std::vector<ListedLine>& lines, int batches)
        : m_controller(controller), m_lines(lines), m_batches(batches), m_thread([this] { change(); })
    {
    }
    ~Changer() { stop(); }

    /// Waits until the change of \a batch is made known. \return its variables
    std::vector<ListedLine> changed(int batch)
    {
        EXPECT_TRUE(eventually([&] { return m_known > batch; }));
        return batchOf(batch);
    }
    void seen(int batch) { m_seen = batch + 1; }
    long changesSoFar() const { return m_changes; }

    void stop()
    {
        m_stopping = true;
        if (m_thread.joinable())
            m_thread.join();
    }

private:
    static const int ahead = 5;

    std::vector<ListedLine> batchOf(int batch) const
    {
        std::vector<ListedLine> variables;
        for (std::size_t i = static_cast<std::size_t>(batch); i < m_lines.size();
             i += static_cast<std::size_t>(m_batches))
            variables.push_back(m_lines[i]);
        return variables;
    }

    void change()
    {
        std::mt19937 random(2);
        while (!m_stopping) {
            const int next = m_known;
            const bool waits = next >= m_batches || next >= m_seen + ahead;
            const int batch = waits ? next - 1 : next;
            if (!waits || batch > m_seen) {
                for (const ListedLine& variable : batchOf(batch))
                    changeInController(*m_controller, variable, &random);
                ++m_changes;
            }
            if (!waits)
                ++m_known;
            QThread::msleep(3);
        }
    }

    simulator::SimulatedController* const m_controller;
    const std::vector<ListedLine> m_lines;
    const int m_batches;
    std::atomic<int> m_known{0}; // batches changed for the first time
    std::atomic<int> m_seen{0};
    std::atomic<long> m_changes{0};
    std::atomic<bool> m_stopping{false};
    std::thread m_thread;
};

TEST_F(WatchList, FollowsTheThousandWhileTheControllersMemoryIsChanging)
{
    const int batches = 25;
    const std::vector<ListedLine> lines = test::linesOfThousand();
    Plcpanel watch(line(exampleFile("thousand.csv"), "watch --json --interval 20"));
    LastSaid said;
    const auto becomesRight = [&](const std::vector<ListedLine>& variables) {
        return watch.eventually([&](const std::string& out) {
            said.take(out);
            return std::all_of(variables.begin(), variables.end(), [&](const ListedLine& each) {
                return said.isFresh(each.name, rightText(each));
            });
        });
    };
    ASSERT_TRUE(becomesRight(lines)) << "before any change";

    Changer changer(&controller, lines, batches);
    for (int batch = 0; batch < batches; ++batch) {
        ASSERT_TRUE(becomesRight(changer.changed(batch))) << "batch " << batch;
        changer.seen(batch);
    }
    changer.stop();
    EXPECT_GT(changer.changesSoFar(), batches) << "the memory did not change while values were compared";
    ASSERT_TRUE(becomesRight(lines)) << "at rest";
    EXPECT_EQ(watch.endBy(SIGINT).status, 0);
}

} // namespace
