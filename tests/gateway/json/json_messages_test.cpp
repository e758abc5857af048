// SPDX-License-Identifier: MIT
#include "gateway/json/json_messages.h"

#include "gateway/json/json_topics.h"

#include <gmock/gmock.h>

namespace
{

using plc::Sample;
using plc::SampleQuality;

std::string json(const plc::SampleValue& value, SampleQuality quality = SampleQuality::Good,
                 const char* unit = "")
{
    plc::ListedVariable variable;
    variable.unit = QString::fromUtf8(unit);
    return plc::jsonOfSample(Sample{0, 1700000000000, value, quality}, variable, false).toStdString();
}

TEST(JsonMessages, HaveValueTimeQualityAndUnit)
{
    EXPECT_EQ(json(21.5, SampleQuality::Good, "°C"),
              "{\"value\":21.5,\"at\":1700000000000,\"quality\":\"good\",\"unit\":\"°C\"}");
    EXPECT_EQ(json(qint64(-5), SampleQuality::Stale),
              "{\"value\":-5,\"at\":1700000000000,\"quality\":\"stale\"}");
    EXPECT_EQ(json(QStringLiteral("a\"b")),
              "{\"value\":\"a\\\"b\",\"at\":1700000000000,\"quality\":\"good\"}");
    EXPECT_EQ(json(true), "{\"value\":true,\"at\":1700000000000,\"quality\":\"good\"}");
}

TEST(JsonMessages, HaveNullWhereThereIsNoValue)
{
    const QByteArray text = plc::jsonOfSample(Sample{0, -1, {}, SampleQuality::Bad}, {}, false);
    EXPECT_EQ(text.toStdString(), "{\"value\":null,\"at\":null,\"quality\":\"bad\"}");
}

TEST(JsonMessages, HaveAnArrayWhereTheVariableHasSeveralValues)
{
    plc::ListedVariable several;
    several.type = plc::ValueType::Uint16;
    several.count = 3;
    const Sample sample{0, 7, QStringLiteral("[330,500,750]"), SampleQuality::Good};
    EXPECT_EQ(plc::jsonOfSample(sample, several, false).toStdString(),
              "{\"value\":[330,500,750],\"at\":7,\"quality\":\"good\"}");
    several.type = plc::ValueType::Text;
    EXPECT_EQ(plc::jsonOfSample(sample, several, false).toStdString(),
              "{\"value\":\"[330,500,750]\",\"at\":7,\"quality\":\"good\"}");
}

TEST(JsonMessages, HaveTextsOfNumbersThatReadersWouldRound)
{
    EXPECT_EQ(json(qint64(9007199254740993)),
              "{\"value\":\"9007199254740993\",\"at\":1700000000000,\"quality\":\"good\"}");
    EXPECT_EQ(json(quint64(18446744073709551615u)),
              "{\"value\":\"18446744073709551615\",\"at\":1700000000000,\"quality\":\"good\"}");
}

TEST(JsonMessages, MarkWhatMayHaveGoneOutBefore)
{
    EXPECT_EQ(plc::jsonOfSample(Sample{0, 7, true, SampleQuality::Good}, {}, true).toStdString(),
              "{\"value\":true,\"at\":7,\"quality\":\"good\",\"again\":true}");
}

TEST(JsonMessages, AskForAValueWithAnIdentifierOrAlone)
{
    EXPECT_EQ(plc::parseSetRequest("{\"value\":21.5,\"id\":\"a7\"}").text.toStdString(), "21.5");
    EXPECT_EQ(plc::parseSetRequest("{\"value\":21.5,\"id\":\"a7\"}").id.toString().toStdString(), "a7");
    EXPECT_EQ(plc::parseSetRequest("{\"value\":1,\"id\":7}").id.toInt(), 7);
    EXPECT_EQ(plc::parseSetRequest("100000").text.toStdString(), "100000");
    EXPECT_EQ(plc::parseSetRequest(" true ").text.toStdString(), "1");
    EXPECT_EQ(plc::parseSetRequest("\"on\"").text.toStdString(), "on");
    EXPECT_EQ(plc::parseSetRequest("[1,2,3]").text.toStdString(), "1,2,3");
    EXPECT_TRUE(plc::parseSetRequest("5").id.isUndefined());
}

TEST(JsonMessages, DoNotAskForAWholeNumberThatJsonMayHaveRounded)
{
    EXPECT_EQ(plc::parseSetRequest("9007199254740991").text.toStdString(), "9007199254740991");
    EXPECT_EQ(plc::parseSetRequest("9007199254740993").text.toStdString(), "9.007199254740992e+15");
    EXPECT_EQ(plc::parseSetRequest("[-9007199254740993]").text.toStdString(), "-9.007199254740992e+15");
    EXPECT_EQ(plc::parseSetRequest("18446744073709551615").text.toStdString(), "1.8446744073709552e+19");
    EXPECT_EQ(plc::parseSetRequest("\"9007199254740993\"").text.toStdString(), "9007199254740993");
}

TEST(JsonMessages, SayWhatIsWrongWithARequest)
{
    for (const char* wrong : {"", "x", "{\"value\":", "{}", "{\"value\":null}", "null", "[]", "1,2", "[[1]]",
                              "{\"value\":{}}", "\xFF"})
        EXPECT_NE(plc::parseSetRequest(wrong).error.toStdString(), "") << wrong;
    EXPECT_NE(plc::parseSetRequest(QByteArray(5000, '1')).error.toStdString(), "");
}

TEST(JsonTopics, HaveOneLevelForEachName)
{
    const auto level = [](const char* name) {
        return plc::topicLevel(QString::fromUtf8(name)).toStdString();
    };
    EXPECT_EQ(level("speed 1"), "speed 1");
    EXPECT_EQ(level("temp/in"), "temp%2Fin");
    EXPECT_EQ(level("a+b#c"), "a%2Bb%23c");
    EXPECT_EQ(level("100 %"), "100 %25");
    EXPECT_EQ(level("$state"), "%24state");
    EXPECT_EQ(level("cost $"), "cost $");
    EXPECT_EQ(level("Öl"), "Öl");
}

TEST(JsonTopics, FindTheVariableThatIsToBeWritten)
{
    std::vector<plc::ListedVariable> list(2);
    list[0].name = QStringLiteral("a/b");
    list[1].name = QStringLiteral("c");
    const plc::JsonTopics topics(QStringLiteral("plant/x"), list);
    EXPECT_EQ(topics.setVariable("plant/x/a%2Fb/set"), 0u);
    EXPECT_EQ(topics.setVariable("plant/x/c/set"), 1u);
    for (const char* other :
         {"plant/x/a/b/set", "plant/x/c", "plant/x//set", "plant/y/c/set", "plant/x/set", "", "/set"})
        EXPECT_FALSE(topics.setVariable(other)) << other;
}

} // namespace
