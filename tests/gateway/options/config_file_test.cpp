// SPDX-License-Identifier: MIT
#include "gateway/options/config_file.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

plc::ConfigFile parse(const char* text)
{
    return plc::parseConfigFile(text, QStringLiteral("/etc/plcgateway"));
}

std::vector<std::string> errorsOf(const plc::ConfigFile& config)
{
    std::vector<std::string> errors;
    for (const QString& error : config.errors)
        errors.push_back(error.toStdString());
    return errors;
}

std::string given(const plc::ConfigFile& config, const char* name)
{
    return config.given.value(QLatin1String(name)).toStdString();
}

TEST(ConfigFile, TakesTheWordsOfTheCommandLine)
{
    const auto config =
        parse("# the line\n[plcgateway]\n\ncontroller = 10.0.0.1:502\npoll=50\nallow-writes = yes\n");
    EXPECT_THAT(errorsOf(config), IsEmpty());
    EXPECT_EQ(given(config, "controller"), "10.0.0.1:502");
    EXPECT_EQ(given(config, "poll"), "50");
    EXPECT_EQ(given(config, "allow-writes"), "yes");
}

TEST(ConfigFile, LooksForFilesBesideItself)
{
    const auto config = parse("vars = line1.csv\nca = /etc/ssl/plant.crt");
    EXPECT_EQ(given(config, "vars"), "/etc/plcgateway/line1.csv");
    EXPECT_EQ(given(config, "ca"), "/etc/ssl/plant.crt");
}

TEST(ConfigFile, RefusesAWrongNameAndTellsTheKnownOnes)
{
    EXPECT_THAT(errorsOf(parse("\nbrokr = x\n")),
                ElementsAre(testing::AllOf(HasSubstr("line 2: there is no \"brokr\""),
                                           HasSubstr("controller, vars"), HasSubstr("broker"))));
}

TEST(ConfigFile, RefusesWhatIsNoLineOfItsOwn)
{
    EXPECT_THAT(
        errorsOf(parse("poll\n[other]\npoll =\nremote = 1\npoll = 1\npoll = 2\nconfig = x\n")),
        ElementsAre(HasSubstr("line 1: \"poll\" is no NAME = VALUE"), HasSubstr("line 2: [other]"),
                    HasSubstr("line 3: \"poll\" has no value"), HasSubstr("line 4: remote = 1: yes or no"),
                    HasSubstr("line 6: \"poll\" is there twice"), HasSubstr("line 7: \"config\" belongs")));
}

} // namespace
