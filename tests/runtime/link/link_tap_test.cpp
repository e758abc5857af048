// SPDX-License-Identifier: MIT
// What a tap is told of, in its order.
#include "runtime/link/link_tap.h"

#include "runtime/link/scripted_link.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace
{

using namespace plc;
using testing::ElementsAre;

const int timeoutMs = 100;
const QByteArray readRegister5 = QByteArray::fromHex("000000000006010300050001");

/// Writes a line for each call.
class Notes : public LinkTap
{
public:
    void opened(const LinkEnd& panel, const LinkEnd& controller) override
    {
        note("opened " + panel.address.toStdString() + " to " + controller.address.toStdString());
    }
    void closed(const QString& why) override { note("closed: " + why.toStdString()); }
    void sent(const QByteArray& frame) override { note("sent " + frame.toHex().toStdString()); }
    void notSent(const QByteArray& frame, const QString& why) override
    {
        note("not sent " + frame.toHex().toStdString() + ": " + why.toStdString());
    }
    void received(const QByteArray& bytes) override { note("received " + bytes.toHex().toStdString()); }
    void timedOut() override { note("timed out"); }

    std::vector<std::string> lines;

private:
    void note(const std::string& line) { lines.push_back(line); }
};

class LinkTapTest : public testing::Test
{
protected:
    LinkTapTest() { scripted.link.setTap(notes); }

    void askWhile(const Script& script)
    {
        scripted.controller().onFrame(script);
        scripted.link.exchange(readRegister5, true);
    }

    ScriptedLink scripted{timeoutMs};
    std::shared_ptr<Notes> notes = std::make_shared<Notes>();
};

TEST_F(LinkTapTest, IsToldOfTheConnectionTheFramesAndTheBytes)
{
    askWhile(Script().send("0001 0000 00").after(30).send("05 01 03 02 1234"));
    scripted.link.close();
    EXPECT_THAT(notes->lines,
                ElementsAre("opened here to there", "sent 000100000006010300050001", "received 0001000000",
                            "received 050103021234", "closed: the panel was stopped"));
}

TEST_F(LinkTapTest, IsToldOfASilence)
{
    askWhile(Script());
    EXPECT_THAT(notes->lines,
                ElementsAre("opened here to there", "sent 000100000006010300050001", "timed out"));
}

TEST_F(LinkTapTest, IsToldOfWhatCouldNotBeSentAndWhy)
{
    scripted.controller().refuseConnections(true);
    askWhile(Script());
    EXPECT_EQ(notes->lines.front(), "closed: refused by the script");
    EXPECT_EQ(notes->lines.back(), "not sent 000000000006010300050001: no connection to script:1 "
                                   "(refused by the script)");
}

TEST_F(LinkTapTest, IsToldThatTheControllerHasClosed)
{
    askWhile(Script().after(5).close());
    EXPECT_THAT(notes->lines, ElementsAre("opened here to there", "sent 000100000006010300050001",
                                          "closed: the controller closed the connection"));
}

TEST_F(LinkTapTest, IsNotToldOfSilenceOrOfFramesLeftWhenTheLinkWasStopped)
{
    askWhile(Script().after(10).act([this] { scripted.link.stop(); }));
    scripted.link.close();
    scripted.controller().refuseConnections(true);
    askWhile(Script());
    for (const std::string& line : notes->lines) {
        EXPECT_NE(line, "timed out");
        EXPECT_NE(line.substr(0, 8), "not sent");
    }
}

TEST_F(LinkTapTest, IsToldOnceThatTheConnectionIsOver)
{
    askWhile(Script().after(5).close());
    scripted.link.close();
    EXPECT_EQ(notes->lines.back(), "closed: the controller closed the connection");
}

} // namespace
