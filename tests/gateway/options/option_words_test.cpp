// SPDX-License-Identifier: MIT
// The options in the manual and in the completion are those of the table.

#include "gateway/options/option_table.h"
#include "support/application.h"
#include "support/built_files.h"

#include <gmock/gmock.h>

#include <QFile>
#include <QProcess>

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;

QString root()
{
    return QString::fromUtf8(testsDirectory()) + QStringLiteral("/../");
}

/// \return what bash offers behind \a words
std::vector<std::string> offered(const QStringList& words)
{
    test::needApplication();
    QProcess bash;
    bash.start(QStringLiteral("bash"),
               QStringList{QStringLiteral("-c"),
                           QStringLiteral(
                               "source '%1gateway/completion/plcgateway.bash' && COMP_WORDS=(\"$@\") && "
                               "COMP_CWORD=$(($# - 1)) && _plcgateway && printf '%s\\n' \"${COMPREPLY[@]}\"")
                               .arg(root()),
                           QStringLiteral("bash"), QStringLiteral("plcgateway")} +
                   words);
    EXPECT_TRUE(bash.waitForFinished());
    std::vector<std::string> result;
    for (const QByteArray& word : bash.readAllStandardOutput().trimmed().split('\n'))
        result.push_back(word.toStdString());
    return result;
}

TEST(OptionWords, AreOfferedByTheCompletion)
{
    std::vector<std::string> expected = {"--help", "--version"};
    for (const plc::GatewayOptionRow& row : plc::gatewayOptionRows())
        expected.push_back(std::string("--") + row.name);
    EXPECT_THAT(offered({QStringLiteral("--")}), testing::UnorderedElementsAreArray(expected));
    EXPECT_THAT(offered({QStringLiteral("--format"), QString()}), ElementsAre("json", "sparkplug"));
    EXPECT_THAT(offered({QStringLiteral("--poll"), QString()}), ElementsAre(""));
}

TEST(OptionWords, HaveAnExampleEachInTheManual)
{
    QFile file(root() + QStringLiteral("docs/man/plcgateway.1"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const std::string manual = file.readAll().replace("\\-", "-").toStdString();
    for (const plc::GatewayOptionRow& row : plc::gatewayOptionRows()) {
        const std::string value = row.value ? std::string(" ") + row.example : std::string();
        EXPECT_THAT(manual, HasSubstr("For example \\fB--" + (row.name + value) + "\\fP"));
        if (!row.onlyOnLine) {
            EXPECT_THAT(manual, HasSubstr("\\fB" + std::string(row.name) + " = " + row.example + "\\fP"));
        }
    }
}

} // namespace
