// SPDX-License-Identifier: MIT
// What --capture writes, byte by byte and line by line.

#include "capture/capture.h"
#include "capture/capture_bytes.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace
{

using namespace plc;
using test::captured;
using test::readTwo;
using test::refusedTwo;
using test::twoValues;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

std::string jsonOf(const std::function<void(LinkTap*)>& play)
{
    return captured<JsonCapture>(play).toStdString();
}

TEST(JsonCapture, BeginsWithTheSettingsThatAReplayNeeds)
{
    EXPECT_EQ(
        jsonOf([](LinkTap*) {}),
        R"({"capture":"plcpanel","controller":"127.0.0.1:502","maxBlock":63,"multiStation":false,)"
        R"("remote":false,"retries":3,"station":1,"time":"2026-11-21T14:03:22.001000Z","timeoutMs":300,)"
        R"("version":1})"
        "\n");
}

TEST(JsonCapture, TellsEveryFrameWithTimeDirectionBytesAndMeaning)
{
    const std::string json = jsonOf([](LinkTap* tap) {
        test::connect(tap);
        tap->sent(readTwo);
        tap->received(twoValues);
        tap->closed(QStringLiteral("enough"));
    });
    EXPECT_THAT(json,
                HasSubstr(R"({"controller":"10.0.0.2:1502","event":"connected","panel":"10.0.0.1:40000",)"
                          R"("time":"2026-11-21T14:03:22.002000Z"}
{"direction":"request","hex":"00 01 00 00 00 06 01 03 00 64 00 02","time":"2026-11-21T14:03:22.003000Z",)"
                          R"("words":"unit 1: read 2 registers from 100"}
{"direction":"reply","hex":"00 01 00 00 00 07 01 03 04 00 07 FF FF","time":"2026-11-21T14:03:22.004000Z",)"
                          R"("words":"unit 1: registers 7 65535"}
{"event":"closed","time":"2026-11-21T14:03:22.005000Z","why":"enough"}
)"));
}

TEST(JsonCapture, PutsRepliesTogetherHoweverTheyArrive)
{
    const QByteArray json = captured<JsonCapture>([](LinkTap* tap) {
        test::connect(tap);
        tap->sent(readTwo);
        tap->received(twoValues.left(3));
        tap->received(twoValues.mid(3) + twoValues);
    });
    const std::string reply = "< " + twoValues.toHex().toStdString();
    EXPECT_THAT(test::read(json).entries,
                ElementsAre("+", "> " + readTwo.toHex().toStdString(), reply, reply));
}

TEST(JsonCapture, ExplainsALateReplyByItsRequest)
{
    const std::string json = jsonOf([](LinkTap* tap) {
        test::connect(tap);
        tap->sent(readTwo);
        tap->timedOut();
        tap->sent(QByteArray::fromHex("000200000006010300C80001"));
        tap->received(twoValues);
    });
    EXPECT_THAT(json, HasSubstr(R"("event":"no reply in time")"));
    EXPECT_THAT(json, HasSubstr(R"("words":"to an earlier request: unit 1: registers 7 65535")"));
}

/// Two requests and their replies, while somebody sets the time of day back, forth, and beyond 31 bits of seconds.
template <class Capture>
std::vector<std::string> readWhenTheTimeOfDayLeaps()
{
    std::vector<qint64> times;
    for (const qint64 seconds :
         {1795269802LL, 1795269803LL, 1795266203LL, 1795269804LL, 2147483647LL, 2147483649LL})
        times.push_back(seconds * 1000000);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("capture"));
    {
        auto file = std::make_unique<CaptureFile>(path, [](const QString&) {});
        std::size_t next = 0;
        const CaptureClock clock = [&] { return times.at(std::min(next++, times.size() - 1)); };
        std::unique_ptr<LinkTap> tap;
        if constexpr (std::is_same_v<Capture, JsonCapture>)
            tap = std::make_unique<Capture>(std::move(file), Settings(), clock);
        else
            tap = std::make_unique<Capture>(std::move(file), clock);
        test::connect(tap.get());
        for (int i = 0; i < 2; ++i) {
            tap->sent(readTwo);
            tap->received(twoValues);
        }
    }
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    const test::Read read = test::read(file.readAll());
    EXPECT_EQ(read.end.error, QString());
    return read.entries;
}

TEST(JsonCapture, KeepsItsOrderWhenTheTimeOfDayLeaps)
{
    const std::string request = "> " + readTwo.toHex().toStdString();
    const std::string reply = "< " + twoValues.toHex().toStdString();
    EXPECT_THAT(readWhenTheTimeOfDayLeaps<JsonCapture>(), ElementsAre("+", request, reply, request, reply));
}

TEST(PcapCapture, KeepsItsOrderWhenTheTimeOfDayLeaps)
{
    const std::string request = "> " + readTwo.toHex().toStdString();
    const std::string reply = "< " + twoValues.toHex().toStdString();
    std::vector<std::string> entries = readWhenTheTimeOfDayLeaps<PcapCapture>();
    // Of packets a time-out is known by the time between them alone.
    entries.erase(std::remove(entries.begin(), entries.end(), "timed out"), entries.end());
    EXPECT_THAT(entries, ElementsAre("+", request, reply, request, reply));
}

TEST(JsonCapture, LosesNoByteThatBelongsToNoReply)
{
    const std::string json = jsonOf([](LinkTap* tap) {
        test::connect(tap);
        tap->sent(readTwo);
        tap->received(twoValues.left(5));
        tap->closed(QStringLiteral("cut"));
        test::connect(tap);
        tap->received("garbage");
        tap->received(twoValues.left(7));
    });
    EXPECT_THAT(json,
                HasSubstr(R"("hex":"00 01 00 00 00","time":"2026-11-21T14:03:22.004000Z","whole":false)"));
    EXPECT_THAT(json, HasSubstr(R"("hex":"67 61 72 62 61 67 65")"));
    EXPECT_THAT(json, HasSubstr(R"("hex":"00 01 00 00 00 07 01")"));
}

TEST(PcapCapture, BeginsWithAHeaderForRawIp)
{
    EXPECT_EQ(captured<PcapCapture>([](LinkTap*) {}).toHex().toStdString(), "d4c3b2a1"
                                                                            "02000400"
                                                                            "00000000"
                                                                            "00000000"
                                                                            "ffff0000"
                                                                            "65000000");
}

TEST(PcapCapture, WritesAFrameAsATcpSegmentToThePortOfTheLink)
{
    const QByteArray pcap = captured<PcapCapture>([](LinkTap* tap) {
        test::connect(tap);
        tap->sent(readTwo);
    });
    // After three packets of 16 + 40 bytes for the connection. Both checksums worked out by another program.
    EXPECT_EQ(pcap.mid(24 + 3 * 56).toHex().toStdString(), "aaa4016b"
                                                           "a00f0000"
                                                           "34000000"
                                                           "34000000"
                                                           "45000034000340004006"
                                                           "26bf"
                                                           "0a000001"
                                                           "0a000002"
                                                           "9c4005de"
                                                           "000f4241"
                                                           "000f4241"
                                                           "5018ffff"
                                                           "738f"
                                                           "0000"
                                                           "000100000006010300640002");
}

std::string firstPacketOf(const char* panel, const char* controller)
{
    return captured<PcapCapture>([&](LinkTap* tap) {
               tap->opened({QString::fromLatin1(panel), 40000}, {QString::fromLatin1(controller), 1502});
           })
        .mid(24 + 16)
        .toHex()
        .toStdString();
}

TEST(PcapCapture, WritesAddressesOfIpv6)
{
    EXPECT_THAT(firstPacketOf("2001:db8::1", "2001:db8::2"), StartsWith("60000000"
                                                                        "00140640"
                                                                        "20010db8000000000000000000000001"
                                                                        "20010db8000000000000000000000002"
                                                                        "9c4005de"));
    EXPECT_THAT(firstPacketOf("fe80::1%eth0", "fe80::2%eth0"),
                HasSubstr("fe800000000000000000000000000001fe80"));
}

TEST(PcapCapture, MakesUpAnAddressWhereThereIsNone)
{
    EXPECT_THAT(firstPacketOf("", ""), HasSubstr("c0000201c0000202"));
    EXPECT_THAT(firstPacketOf("", "::1"), HasSubstr("00000000000000000000ffffc0000201"));
}

TEST(PcapCapture, ReadBackIsWhatWentOverTheLink)
{
    const QByteArray pcap = captured<PcapCapture>([](LinkTap* tap) {
        test::connect(tap);
        tap->sent(readTwo);
        tap->received(twoValues.left(3));
        tap->received(twoValues.mid(3));
        tap->closed(QStringLiteral("enough"));
        test::connect(tap); // from the same port: another stream all the same
        tap->sent(readTwo);
        tap->received(refusedTwo);
    });
    const test::Read read = test::read(pcap);
    EXPECT_EQ(read.end.error, QString());
    const std::string request = "> " + readTwo.toHex().toStdString();
    EXPECT_THAT(read.entries, ElementsAre("+", request, "< " + twoValues.toHex().toStdString(), "-", "+",
                                          request, "< " + refusedTwo.toHex().toStdString()));
    EXPECT_EQ(read.times[1], 4000);
}

TEST(PcapCapture, CutsAFloodIntoPackets)
{
    const QByteArray pcap = captured<PcapCapture>([](LinkTap* tap) {
        test::connect(tap);
        tap->received(QByteArray(100000, 'x'));
    });
    EXPECT_GT(pcap.size(), 100000 + 71 * 56);
    EXPECT_THAT(test::read(pcap).end.notes.join(QLatin1Char(' ')).toStdString(), HasSubstr("out of step"));
}

TEST(CaptureFile, TellsAnErrorAtOnceAndAgainAtTheEndAndGoesOn)
{
    std::vector<std::string> said;
    {
        CaptureFile file(QStringLiteral("/dev/full"),
                         [&said](const QString& words) { said.push_back(words.toStdString()); });
        file.write("one");
        EXPECT_EQ(said.size(), 1u);
        file.write("two");
        EXPECT_EQ(said.size(), 1u);
    }
    EXPECT_THAT(said,
                ElementsAre("--capture /dev/full: No space left on device; the exchange goes on without",
                            "--capture /dev/full: not everything was captured: No space left on device"));
}

TEST(CaptureRefusal, KnowsTwoEndings)
{
    EXPECT_EQ(captureRefusal(QStringLiteral("a.pcap")), QString());
    EXPECT_EQ(captureRefusal(QStringLiteral("b.JSONL")), QString());
    EXPECT_THAT(captureRefusal(QStringLiteral("c.pcapng")).toStdString(), HasSubstr("this has neither"));
    EXPECT_THAT(captureRefusal(QString()).toStdString(), HasSubstr("this has neither"));
}

TEST(CaptureTime, IsReadAsItIsWritten)
{
    for (const qint64 time : {qint64(0), test::captureBegin + 123456, qint64(4294967295) * 1000000 + 999999})
        EXPECT_EQ(parseCaptureTime(captureTimeText(time)), time);
    EXPECT_EQ(parseCaptureTime(QStringLiteral("1970-01-01T00:00:01Z")), 1000000);
    EXPECT_EQ(parseCaptureTime(QStringLiteral("1970-01-01T00:00:00.5Z")), 500000);
}

TEST(CaptureTime, IsRefusedWhenItIsNone)
{
    for (const char* text :
         {"", "Z", "yesterday", "2026-11-21T14:03:22", "2026-11-21T14:03:22.Z",
          "2026-11-21T14:03:22.1234567Z", "2026-11-21T14:03:22.-1Z", "2026-13-21T14:03:22Z",
          "1969-12-31T23:59:59Z", "2106-02-07T06:28:16Z", "2026-11-21T14:03:22+1Z"})
        EXPECT_FALSE(parseCaptureTime(QString::fromLatin1(text))) << text;
}

} // namespace
