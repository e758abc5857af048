// SPDX-License-Identifier: MIT
// What stations say of themselves, byte by byte.

#include "runtime/modbus/identity.h"

#include <gmock/gmock.h>

#include <deque>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class AnsweringStation
{
public:
    /// \param replies one behind the other; then none
    explicit AnsweringStation(std::initializer_list<const char*> replies)
    {
        for (const char* hex : replies)
            m_replies.push_back(QByteArray::fromHex(hex));
    }

    plc::Identity identity(int station = 1)
    {
        return plc::askIdentity(station, [this](const QByteArray& request) {
            m_requests.push_back(request.toHex(' ').toStdString());
            if (m_replies.empty())
                return QByteArray();
            const QByteArray reply = m_replies.front();
            m_replies.pop_front();
            return reply;
        });
    }

    const std::vector<std::string>& requests() const { return m_requests; }

private:
    std::deque<QByteArray> m_replies;
    std::vector<std::string> m_requests;
};

std::string textOf(const plc::Identity& identity)
{
    return plc::identityText(identity).toStdString();
}

// Objects 0 "ACME", 1 "P1", 2 "2.0".
const char* const acme = "0000 0000 0017 07 2B 0E 01 01 00 00 03 00 04 41434D45 01 02 5031 02 03 322E30";
const char* const refused43 = "0000 0000 0003 07 AB 01";

TEST(Identity, IsAskedForByFunction43First)
{
    AnsweringStation station({acme});
    const plc::Identity identity = station.identity(7);
    EXPECT_THAT(station.requests(), ElementsAre("00 00 00 00 00 05 07 2b 0e 01 00"));
    EXPECT_EQ(identity.function, 43);
    EXPECT_THAT(identity.fields,
                ElementsAre(Pair(QStringLiteral("VendorName"), QStringLiteral("ACME")),
                            Pair(QStringLiteral("ProductCode"), QStringLiteral("P1")),
                            Pair(QStringLiteral("MajorMinorRevision"), QStringLiteral("2.0"))));
    EXPECT_EQ(textOf(identity), "ACME, P1, 2.0 (function 43)");
}

TEST(Identity, GoesOnWhereMoreFollows)
{
    AnsweringStation station({"0000 0000 000E 01 2B 0E 01 01 FF 01 01 00 04 41434D45",
                              "0000 0000 000C 01 2B 0E 01 01 00 00 01 01 02 5031"});
    EXPECT_EQ(textOf(station.identity()), "ACME, P1 (function 43)");
    EXPECT_THAT(station.requests(),
                ElementsAre("00 00 00 00 00 05 01 2b 0e 01 00", "00 00 00 00 00 05 01 2b 0e 01 01"));
}

TEST(Identity, IsAllThereWhereNothingFollows)
{
    AnsweringStation station({"0000 0000 000E 01 2B 0E 01 01 00 01 01 00 04 41434D45"});
    EXPECT_EQ(textOf(station.identity()), "ACME (function 43)");
    EXPECT_EQ(station.requests().size(), 1u);
}

TEST(Identity, IsAskedForInSoManyRequestsOnly)
{
    AnsweringStation station(
        {"0000 0000 000B 01 2B 0E 01 01 FF 01 01 00 01 41", "0000 0000 000B 01 2B 0E 01 01 FF 02 01 01 01 42",
         "0000 0000 000B 01 2B 0E 01 01 FF 03 01 02 01 43", "0000 0000 000B 01 2B 0E 01 01 FF 04 01 03 01 44",
         "0000 0000 000B 01 2B 0E 01 01 FF 05 01 04 01 45"});
    EXPECT_EQ(textOf(station.identity()), "A, B, C, D (function 43)");
}

TEST(Identity, DoesNotGoRoundInCircles)
{
    const char* const again = "0000 0000 000E 01 2B 0E 01 01 FF 00 01 00 04 41434D45";
    AnsweringStation station({again, again, again, again, again, again});
    EXPECT_EQ(textOf(station.identity()), "ACME (function 43)");
    EXPECT_EQ(station.requests().size(), 1u);
}

TEST(Identity, IsAskedForByFunction17WhereTheOtherIsRefused)
{
    AnsweringStation station({refused43, "0000 0000 0008 07 11 05 B4 FF 4C 4D 42"});
    const plc::Identity identity = station.identity(7);
    EXPECT_EQ(station.requests().at(1), "00 00 00 00 00 02 07 11");
    EXPECT_EQ(textOf(identity), "..LMB (function 17)");
    EXPECT_EQ(identity.fields.at(1).second.toStdString(), "B4 FF 4C 4D 42");
}

TEST(Identity, IsNotTakenFromAnAnswerOfAnotherKind)
{
    AnsweringStation station({"0000 0000 0017 07 2B 0D 01 01 00 00 03 00 04 41434D45 01 02 5031 02 03 322E30",
                              "0000 0000 0004 07 11 01 41"});
    EXPECT_EQ(textOf(station.identity(7)), "A (function 17)");
    AnsweringStation refusing(
        {"0000 0000 0017 07 AB 0E 01 01 00 00 03 00 04 41434D45 01 02 5031 02 03 322E30",
         "0000 0000 0004 07 11 01 41"});
    EXPECT_EQ(textOf(refusing.identity(7)), "A (function 17)");
}

TEST(Identity, MayBeOneByteAndIsNoneWithoutAny)
{
    AnsweringStation brief({refused43, "0000 0000 0004 07 11 01 41"});
    EXPECT_EQ(textOf(brief.identity(7)), "A (function 17)");
    AnsweringStation empty({refused43, "0000 0000 0003 07 11 00"});
    EXPECT_EQ(empty.identity(7).function, 0);
}

TEST(Identity, IsNoneWhereNeitherTellsIt)
{
    AnsweringStation refusing({refused43, "0000 0000 0003 07 91 01"});
    EXPECT_EQ(refusing.identity(7).function, 0);
    AnsweringStation silent({});
    EXPECT_EQ(silent.identity().function, 0);
    EXPECT_EQ(textOf(silent.identity()), "");
}

TEST(Identity, IsAskedForOnceMoreWhereTheRequestBeforeKeptTheStationBusy)
{
    AnsweringStation station({"", "", "0000 0000 0006 01 11 03 41 42 43"});
    EXPECT_EQ(textOf(station.identity()), "ABC (function 17)");
    EXPECT_EQ(station.requests().size(), 3u);
}

TEST(Identity, OfACutReplyIsWhatIsWhole)
{
    // Says that it has three objects, the second one of 200 characters.
    AnsweringStation station({"0000 0000 000F 01 2B 0E 01 01 00 00 03 00 02 4142 01 C8 43"});
    EXPECT_EQ(textOf(station.identity()), "AB (function 43)");
    AnsweringStation shortest({"0000 0000 0002 01 2B", "0000 0000 0003 01 11 09"});
    EXPECT_THAT(shortest.identity().fields, IsEmpty());
}

TEST(Identity, HasAnEmptyObjectAtTheEndOfTheReply)
{
    AnsweringStation station({"0000 0000 000C 01 2B 0E 01 01 00 00 02 00 02 4142 01 00"});
    EXPECT_THAT(station.identity().fields,
                ElementsAre(Pair(QStringLiteral("VendorName"), QStringLiteral("AB")),
                            Pair(QStringLiteral("ProductCode"), QString())));
}

TEST(Identity, HasNoMoreObjectsThanTheReplyAnnounces)
{
    AnsweringStation station({"0000 0000 000E 01 2B 0E 01 01 00 00 01 00 02 4142 01 02 4344"});
    EXPECT_EQ(textOf(station.identity()), "AB (function 43)");
}

TEST(Identity, GivesAnObjectWithoutANameItsNumber)
{
    AnsweringStation station({"0000 0000 000B 01 2B 0E 01 01 00 00 01 03 01 41"});
    EXPECT_THAT(station.identity().fields, ElementsAre(Pair(QStringLiteral("Object3"), QStringLiteral("A"))));
}

TEST(Identity, HasNothingThatATerminalActsOn)
{
    AnsweringStation station({"0000 0000 000F 01 2B 0E 01 01 00 00 01 00 05 1B5B326A41"});
    EXPECT_EQ(textOf(station.identity()), ".[2jA (function 43)");
}

} // namespace
