// SPDX-License-Identifier: MIT
// What bash offers for plcpanel and plcsim, compared with what their help tells.

#include "history/sample_store.h"
#include "panel/commands/command_help.h"
#include "simulator/faults.h"
#include "support/application.h"
#include "support/built_files.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace
{

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

using Words = std::vector<std::string>;

Words sortedWords(const QStringList& list)
{
    Words words;
    for (const QString& word : list)
        words.push_back(word.toStdString());
    std::sort(words.begin(), words.end());
    return words;
}

/// \return what is offered for the last of \a words, which follow the program's name, in alphabetical order
Words offered(const char* program, const QStringList& words, const QString& folder = QStringLiteral("/"))
{
    test::needApplication();
    const QString script =
        QStringLiteral("source '%2/../panel/completion/%1.bash' && COMP_WORDS=(\"$@\") && "
                       "COMP_CWORD=$(($# - 1)) && _%1 && printf '%s\\n' \"${COMPREPLY[@]}\"")
            .arg(QLatin1String(program), QString::fromUtf8(testsDirectory()));
    QProcess bash;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PATH"), QFileInfo(QString::fromUtf8(builtPlcpanel())).path() +
                                                   QLatin1Char(':') +
                                                   environment.value(QStringLiteral("PATH")));
    bash.setProcessEnvironment(environment);
    bash.setWorkingDirectory(folder);
    bash.start(QStringLiteral("bash"),
               QStringList{QStringLiteral("-c"), script, QStringLiteral("bash"), QLatin1String(program)} +
                   words);
    EXPECT_TRUE(bash.waitForFinished(60000));
    EXPECT_EQ(bash.readAllStandardError().toStdString(), "");
    return sortedWords(
        QString::fromLocal8Bit(bash.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts));
}

Words offered(const char* program, const char* words)
{
    return offered(program, QString::fromLatin1(words).split(QLatin1Char(' ')));
}

enum class Takes { Value, Nothing, Either };

/// \return the long options that a help explains
QStringList optionsWith(Takes takes, const QString& help)
{
    const QLatin1String ending(takes == Takes::Value ? " <" : takes == Takes::Nothing ? "(?! <|[a-z-])" : "");
    QStringList options;
    const QRegularExpression option(QLatin1String("^  (?:-[a-z], )?(--[a-z-]+)") + ending,
                                    QRegularExpression::MultilineOption);
    for (auto match = option.globalMatch(help.mid(help.indexOf(QLatin1String("Options:")))); match.hasNext();)
        options << match.next().captured(1);
    return options;
}

Words optionsIn(const QString& help)
{
    return sortedWords(optionsWith(Takes::Either, help));
}

QStringList commands()
{
    return plc::commandNames().replace(QLatin1String(" or "), QLatin1String(", ")).split(QLatin1String(", "));
}

TEST(CompletionOfPlcpanel, OffersEveryOptionOfEachCommandAndNoOther)
{
    test::needApplication();
    for (const QString& name : commands()) {
        const auto command = plc::commandNamed(name);
        ASSERT_TRUE(command) << name.toStdString();
        EXPECT_EQ(offered("plcpanel", {name, QStringLiteral("--")}), optionsIn(plc::helpText(command)))
            << name.toStdString();
    }
}

TEST(CompletionOfPlcpanel, OffersTheCommands)
{
    EXPECT_EQ(offered("plcpanel", ""), sortedWords(commands()));
    EXPECT_THAT(offered("plcpanel", "re"), ElementsAre("read", "replay"));
    EXPECT_THAT(offered("plcpanel", "--timeout 50 w"), ElementsAre("watch", "where", "write"));
    EXPECT_THAT(offered("plcpanel", "--controller 127.0.0.1 : 502 c"), ElementsAre("check"));
}

TEST(CompletionOfPlcpanel, OffersNothingWhereAValueIsExpectedThatItCannotKnow)
{
    EXPECT_THAT(offered("plcpanel", "read --timeout "), IsEmpty());
    EXPECT_THAT(offered("plcpanel", "read 9"), IsEmpty());
}

TEST(CompletionOfPlcpanel, OffersTheCommandsBehindASwitchButNotBehindAnOptionThatTakesAValue)
{
    test::needApplication();
    const QTemporaryDir nothing;
    const QString help = plc::helpText(std::nullopt);
    for (const QString& option : optionsWith(Takes::Nothing, help))
        EXPECT_THAT(offered("plcpanel", {option, QString()}, nothing.path()), Contains("watch"))
            << option.toStdString();
    for (const QString& option : optionsWith(Takes::Value, help))
        EXPECT_THAT(offered("plcpanel", {option, QString()}, nothing.path()), Not(Contains("watch")))
            << option.toStdString();
}

TEST(CompletionOfPlcpanel, OffersFilesOfTheRightKind)
{
    const QTemporaryDir folder;
    for (const char* name :
         {"a.csv", "b.pcap", "c.jsonl", "d.txt", "e.pcapng", "libplcdriver.so", "f.sqlite"}) {
        QFile file(folder.filePath(QLatin1String(name)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    const auto files = [&folder](const char* words) {
        return offered("plcpanel", QString::fromLatin1(words).split(QLatin1Char(' ')), folder.path());
    };
    EXPECT_THAT(files("watch --vars "), ElementsAre("a.csv"));
    EXPECT_THAT(files("read --capture "), ElementsAre("b.pcap", "c.jsonl"));
    EXPECT_THAT(files("replay "), UnorderedElementsAre("b.pcap", "c.jsonl", "e.pcapng"));
    EXPECT_THAT(files("replay b.pcap "), IsEmpty());
    EXPECT_THAT(files("log --to "), ElementsAre("a.csv", "f.sqlite"));
    EXPECT_THAT(files("history "), ElementsAre("f.sqlite"));
    EXPECT_THAT(files("history f.sqlite --to "), IsEmpty());
    EXPECT_THAT(files("read --driver "), ElementsAre("libplcdriver.so"));
}

/// A list in a folder, and what is offered with it.
class CompletionOfNames : public testing::Test
{
protected:
    CompletionOfNames()
    {
        QFile file(folder.filePath(QStringLiteral("my list.csv")));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(
            "name,area,address,type\n"
            "drive speed,9,1,int16\ndrive status,9,2,hex\npump,2,1,bit\nx=1:2,9,3,hex\n[odd],9,4,hex\n");
    }

    /// \param words behind --vars and the list
    Words with(const QStringList& words, const char* command = "read") const
    {
        return offered(
            "plcpanel",
            QStringList{QLatin1String(command), QStringLiteral("--vars"), QStringLiteral("my\\ list.csv")} +
                words,
            folder.path());
    }

    const QTemporaryDir folder;
};

TEST_F(CompletionOfNames, OffersThemWithTheirBlanksEscaped)
{
    EXPECT_THAT(with({QString()}),
                UnorderedElementsAre("drive\\ speed", "drive\\ status", "pump", "x\\=1\\:2", "\\[odd\\]"));
    EXPECT_THAT(with({QStringLiteral("drive\\ sp")}), ElementsAre("drive\\ speed"));
    EXPECT_THAT(with({QStringLiteral("pump"), QStringLiteral("dr")}),
                ElementsAre("drive\\ speed", "drive\\ status"));
    for (const char* command : {"watch", "check", "where"})
        EXPECT_THAT(with({QStringLiteral("p")}, command), ElementsAre("pump")) << command;
}

TEST_F(CompletionOfNames, LeavesThemAsTheyAreInQuotes)
{
    EXPECT_THAT(with({QStringLiteral("'drive sp")}), ElementsAre("drive speed"));
    EXPECT_THAT(with({QStringLiteral("\"drive st")}), ElementsAre("drive status"));
}

TEST_F(CompletionOfNames, PutsTheSignBehindThemThatAWriteNeeds)
{
    EXPECT_THAT(with({QStringLiteral("pu")}, "write"), ElementsAre("pump="));
    EXPECT_THAT(with({QStringLiteral("pump"), QStringLiteral("=")}, "write"), IsEmpty());
    EXPECT_THAT(with({QStringLiteral("pump"), QStringLiteral("="), QStringLiteral("d")}, "write"), IsEmpty());
}

TEST_F(CompletionOfNames, ShowsWhatAPatternMeans)
{
    EXPECT_THAT(with({QStringLiteral("'drive *")}), ElementsAre("1: drive speed", "2: drive status"));
    EXPECT_THAT(with({QStringLiteral("*eed")}), ElementsAre("drive\\ speed"));
    EXPECT_THAT(with({QStringLiteral("[*")}), ElementsAre("\\[odd\\]"));
}

TEST_F(CompletionOfNames, OffersThoseOfALog)
{
    plc::makeSampleStore(folder.filePath(QStringLiteral("log.sqlite")), {})
        ->open({{QStringLiteral("drive speed"), {}, {}, -1}});
    EXPECT_THAT(offered("plcpanel",
                        {QStringLiteral("history"), QStringLiteral("log.sqlite"), QStringLiteral("dr")},
                        folder.path()),
                ElementsAre("drive\\ speed"));
}

TEST_F(CompletionOfNames, FindsTheListWhereverItStands)
{
    const auto all = [this](const QStringList& words) {
        return offered("plcpanel", words, folder.path()).size();
    };
    EXPECT_EQ(all({QStringLiteral("--vars"), QStringLiteral("="), QStringLiteral("'my list.csv'"),
                   QStringLiteral("read"), QString()}),
              5u);
    EXPECT_EQ(all({QStringLiteral("read"), QStringLiteral("--controller"), QStringLiteral("h"),
                   QStringLiteral(":"), QStringLiteral("502"), QStringLiteral("--vars"),
                   folder.filePath(QStringLiteral("my\\ list.csv")), QString()}),
              5u);
}

TEST_F(CompletionOfNames, OffersNoneWithoutAListThatCanBeRead)
{
    EXPECT_THAT(offered("plcpanel", "read --vars nowhere.csv "), IsEmpty());
    EXPECT_THAT(offered("plcpanel", "read "), IsEmpty());
    QFile file(folder.filePath(QStringLiteral("my list.csv")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("no list\n");
    file.close();
    EXPECT_THAT(with({QString()}), IsEmpty());
}

TEST_F(CompletionOfNames, RunsNothingThatStandsInAWord)
{
    with({QStringLiteral("$(touch ran)")});
    offered("plcpanel",
            {QStringLiteral("read"), QStringLiteral("--vars"), QStringLiteral("\"$(touch ran)\""), QString()},
            folder.path());
    EXPECT_FALSE(QFile::exists(folder.filePath(QStringLiteral("ran"))));
}

/// \return what the program that was built beside plcpanel prints
QString helpOfPlcsim()
{
    test::needApplication();
    QProcess plcsim;
    plcsim.start(QFileInfo(QString::fromUtf8(builtPlcpanel())).dir().filePath(QStringLiteral("plcsim")),
                 {QStringLiteral("--help")});
    EXPECT_TRUE(plcsim.waitForFinished(60000));
    return QString::fromLocal8Bit(plcsim.readAllStandardOutput());
}

TEST(CompletionOfPlcsim, OffersEveryOptionAndNoOther)
{
    EXPECT_EQ(offered("plcsim", "--"), optionsIn(helpOfPlcsim()));
}

TEST(CompletionOfPlcsim, OffersOptionsBehindASwitchButNotBehindAnOptionThatTakesAValue)
{
    const QTemporaryDir nothing;
    const QString help = helpOfPlcsim();
    for (const QString& option : optionsWith(Takes::Nothing, help))
        EXPECT_THAT(offered("plcsim", {option, QString()}, nothing.path()), Contains("--port"))
            << option.toStdString();
    for (const QString& option : optionsWith(Takes::Value, help))
        EXPECT_THAT(offered("plcsim", {option, QString()}, nothing.path()), Not(Contains("--port")))
            << option.toStdString();
}

TEST(CompletionOfPlcsim, OffersEveryFault)
{
    QStringList faults;
    for (const simulator::FaultKind& kind : simulator::faultList())
        faults << QLatin1String(kind.name) + QLatin1Char('=');
    EXPECT_EQ(offered("plcsim", "--fault "), sortedWords(faults));
}

} // namespace
