// SPDX-License-Identifier: MIT
#include "gateway/writes/write_gate.h"

#include "gateway/journal/journal.h"

#include <gmock/gmock.h>

namespace
{

using plc::WriteEnd;
using testing::ElementsAre;
using testing::HasSubstr;

class WriteGate : public testing::Test
{
protected:
    WriteGate() : list(1)
    {
        list[0].name = QStringLiteral("speed");
        list[0].type = plc::ValueType::Int16;
        list[0].min = 0;
        list[0].max = 100;
        list[0].access = plc::Access::ReadWrite;
    }

    /// \return how a write of \a value ended, after the controller answered with \a outcome
    plc::WriteReport write(const char* value, const plc::WriteOutcome& outcome = {}, bool isAllowed = true)
    {
        plc::WriteGate gate(
            list, isAllowed,
            [&](std::size_t, const std::vector<quint32>& elements, const plc::WriteDone& done) {
                written = elements;
                done(outcome);
            },
            [] {});
        plc::WriteReport request;
        request.variable = 0;
        request.topic = "p/speed/set";
        request.value = QString::fromUtf8(value);
        request.id = 17;
        gate.request(request);
        const auto ended = gate.takeEnded();
        EXPECT_EQ(ended.size(), 1u);
        EXPECT_EQ(ended.at(0).id, QJsonValue(17));
        return ended.at(0);
    }

    static plc::WriteOutcome failed(plc::FailureKind kind, int exception = 0)
    {
        plc::WriteOutcome outcome;
        outcome.failure.kind = kind;
        outcome.failure.exception = exception;
        return outcome;
    }

    std::vector<plc::ListedVariable> list;
    std::vector<quint32> written;
};

TEST_F(WriteGate, TellsWhatTheControllerConfirmed)
{
    plc::WriteOutcome confirmed;
    confirmed.confirmed = true;
    EXPECT_EQ(write("55", confirmed).end, WriteEnd::Confirmed);
    EXPECT_THAT(written, ElementsAre(55));
}

TEST_F(WriteGate, TellsTheExceptionWithWhichTheControllerRefused)
{
    const auto report = write("55", failed(plc::FailureKind::Exception, 3));
    EXPECT_EQ(report.end, WriteEnd::Refused);
    EXPECT_EQ(report.exception, 3);
    EXPECT_NE(report.reason.toStdString(), "");
}

TEST_F(WriteGate, TellsWhatWentOutFromWhatDidNot)
{
    EXPECT_EQ(write("55", failed(plc::FailureKind::StationOff)).end, WriteEnd::NotSent);
    EXPECT_EQ(write("55", failed(plc::FailureKind::NoReply)).end, WriteEnd::Unconfirmed);
}

TEST_F(WriteGate, OfWhichAPartWasConfirmedIsNotCalledRefused)
{
    plc::WriteOutcome outcome = failed(plc::FailureKind::Exception, 2);
    outcome.requests = 3;
    outcome.requestsConfirmed = 1;
    const auto report = write("55", outcome);
    EXPECT_EQ(report.end, WriteEnd::Unconfirmed);
    EXPECT_EQ(report.exception, 2);
    EXPECT_THAT(report.reason.toStdString(), HasSubstr("exception 2"));
    EXPECT_THAT(report.reason.toStdString(), HasSubstr("1 of its 3 requests were confirmed"));
}

TEST_F(WriteGate, WritesNothingUnlessConfigurationAndListSaySo)
{
    EXPECT_THAT(write("55", {}, false).reason.toStdString(), HasSubstr("allow-writes"));
    list[0].access = plc::Access::Unsaid;
    EXPECT_THAT(write("55").reason.toStdString(), HasSubstr("does not say rw"));
    list[0].access = plc::Access::ReadOnly;
    EXPECT_THAT(write("55").reason.toStdString(), HasSubstr("does not say rw"));
    EXPECT_THAT(written, testing::IsEmpty());
}

TEST_F(WriteGate, HoldsTheLimitsOfTheList)
{
    EXPECT_THAT(write("101").reason.toStdString(), HasSubstr("outside its limits"));
    EXPECT_THAT(write("much").reason.toStdString(), HasSubstr("much"));
    EXPECT_THAT(written, testing::IsEmpty());
}

/// \return what the journal says of a refused request
std::string toldOfRefused(const QByteArray& topic, const char* value)
{
    QString told;
    plc::listenToJournal([&told](plc::Weight, const QString& message) { told = message; });
    const std::vector<plc::ListedVariable> none;
    plc::WriteGate gate(none, true, {}, [] {});
    plc::WriteReport request;
    request.topic = topic;
    request.value = QString::fromUtf8(value);
    request.reason = QStringLiteral("no JSON");
    gate.refuse(request);
    plc::listenToJournal({});
    return told.toStdString();
}

TEST(WriteJournal, NamesTheTopicOfARequestThatCouldNotBeRead)
{
    EXPECT_EQ(toldOfRefused("p/speed/set", ""), "write p/speed/set: not sent: no JSON");
    EXPECT_EQ(toldOfRefused("p/speed/set", "7"), "write p/speed/set = 7: not sent: no JSON");
}

TEST(WriteJournal, ShowsATopicOnOneLineAndCut)
{
    EXPECT_EQ(toldOfRefused("p/a\nb\x1b/set", ""), "write p/a.b./set: not sent: no JSON");
    EXPECT_EQ(toldOfRefused(QByteArray(60000, 'a'), ""),
              "write " + std::string(200, 'a') + "...: not sent: no JSON");
}

} // namespace
