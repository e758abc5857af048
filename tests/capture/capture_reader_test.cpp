// SPDX-License-Identifier: MIT
// What is read out of captures of the panel and of other programs, and what is said of malformed ones.

#include "capture/capture_bytes.h"
#include "capture/tcp_segment.h"
#include "capture/tcp_stream.h"

#include <gmock/gmock.h>

#include <QTemporaryFile>
#include <QtEndian>

#include <pcap/dlt.h>

namespace
{

using namespace plc;
using test::captured;
using test::readTwo;
using test::twoValues;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string request = "> " + readTwo.toHex().toStdString();
const std::string answer = "< " + twoValues.toHex().toStdString();

void exchange(LinkTap* tap)
{
    test::connect(tap);
    tap->sent(readTwo);
    tap->received(twoValues);
    tap->closed(QStringLiteral("enough"));
}

std::string errorOf(const QByteArray& bytes)
{
    return test::read(bytes).end.error.toStdString();
}

// Packets of other programs

const int packetOffset = 24;

quint32 littleAt(const QByteArray& bytes, int offset)
{
    return qFromLittleEndian<quint32>(bytes.constData() + offset);
}

QByteArray little(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

/// \return \a pcap with another link type and \a header in front of every packet
QByteArray withLinkLayer(const QByteArray& pcap, int linkType, const QByteArray& header)
{
    QByteArray changed = pcap.left(20) + little(static_cast<quint32>(linkType));
    for (int at = packetOffset; at < pcap.size();) {
        const int size = static_cast<int>(littleAt(pcap, at + 8));
        const QByteArray newSize = little(static_cast<quint32>(size + header.size()));
        changed += pcap.mid(at, 8) + newSize + newSize + header + pcap.mid(at + 16, size);
        at += 16 + size;
    }
    return changed;
}

void swapAt(QByteArray* bytes, int offset, int size)
{
    std::reverse(bytes->begin() + offset, bytes->begin() + offset + size);
}

/// \return \a pcap as a machine of the other byte order writes it
QByteArray bigEndian(QByteArray pcap)
{
    for (int at = packetOffset; at < pcap.size();) {
        const int size = static_cast<int>(littleAt(pcap, at + 8));
        for (int field = 0; field < 16; field += 4)
            swapAt(&pcap, at + field, 4);
        at += 16 + size;
    }
    for (const int field : {0, 8, 12, 16, 20})
        swapAt(&pcap, field, 4);
    swapAt(&pcap, 4, 2);
    swapAt(&pcap, 6, 2);
    return pcap;
}

/// \return a block of pcapng
QByteArray block(quint32 type, QByteArray body)
{
    body.append(QByteArray((4 - body.size() % 4) % 4, '\0'));
    const QByteArray size = little(static_cast<quint32>(body.size() + 12));
    return little(type) + size + body + size;
}

/// \return the packets of \a pcap as pcapng, times in microseconds
QByteArray pcapng(const QByteArray& pcap, int linkType)
{
    QByteArray changed = block(0x0A0D0D0A, QByteArray::fromHex("4D3C2B1A01000000FFFFFFFFFFFFFFFF")) +
                         block(1, little(static_cast<quint32>(linkType)) + little(65535));
    for (int at = packetOffset; at < pcap.size();) {
        const quint64 time = quint64(littleAt(pcap, at)) * 1000000 + littleAt(pcap, at + 4);
        const quint32 size = littleAt(pcap, at + 8);
        changed += block(6, little(0) + little(static_cast<quint32>(time >> 32)) +
                                little(static_cast<quint32>(time)) + little(size) + little(size) +
                                pcap.mid(at + 16, static_cast<int>(size)));
        at += 16 + static_cast<int>(size);
    }
    return changed;
}

class PcapOf : public testing::TestWithParam<std::pair<int, const char*>>
{
};

TEST_P(PcapOf, ThisLinkTypeIsRead)
{
    const QByteArray pcap = withLinkLayer(captured<PcapCapture>(exchange), GetParam().first,
                                          QByteArray::fromHex(GetParam().second));
    EXPECT_THAT(test::read(pcap).entries, ElementsAre("+", request, answer, "-"));
    EXPECT_THAT(test::read(bigEndian(pcap)).entries, ElementsAre("+", request, answer, "-"));
    EXPECT_THAT(test::read(pcapng(pcap, GetParam().first)).entries, ElementsAre("+", request, answer, "-"));
    EXPECT_EQ(test::read(pcapng(pcap, GetParam().first)).times, test::read(pcap).times);
}

INSTANTIATE_TEST_SUITE_P(LinkTypes, PcapOf,
                         testing::Values(std::make_pair(101, ""),
                                         std::make_pair(1, "0000000000010000000000020800"),
                                         std::make_pair(1, "0000000000010000000000028100000A0800"),
                                         std::make_pair(113, "00000001000600000000000100000800"),
                                         std::make_pair(276, "0800000000000001000100060000000000010000"),
                                         std::make_pair(0, "02000000")));

TEST(PacketCaptureReader, TakesTimesInNanoseconds)
{
    QByteArray pcap = captured<PcapCapture>(exchange);
    pcap.replace(0, 4, little(0xA1B23C4D));
    pcap.replace(packetOffset + 3 * 56 + 4, 4, little(123456789));
    EXPECT_EQ(test::read(pcap).times.at(1), 123456);
}

TEST(PacketCaptureReader, DropsNothingThatBeganBeforeTheCapture)
{
    const QByteArray pcap = captured<PcapCapture>(exchange);
    const QByteArray withoutBeginning = pcap.left(packetOffset) + pcap.mid(packetOffset + 3 * 56);
    PacketReading reading;
    reading.controllerPort = 1502;
    EXPECT_THAT(test::read(withoutBeginning, reading).entries, ElementsAre("+", request, answer, "-"));
}

TEST(PacketCaptureReader, TellsAReplyFromALateOneByTheTimeOut)
{
    const QByteArray pcap = captured<PcapCapture>(exchange);
    PacketReading reading;
    reading.timeoutMs = 1; // as much as is between two looks at the clock
    EXPECT_THAT(test::read(pcap, reading).entries, ElementsAre("+", request, answer, "-"));
    reading.timeoutMs = 0;
    EXPECT_THAT(test::read(pcap, reading).entries, ElementsAre("+", request, "timed out", answer, "-"));
}

TEST(PacketCaptureReader, NamesThePortsThatAreThereWhenTheControllersIsNot)
{
    PacketReading reading;
    reading.controllerPort = 503;
    EXPECT_EQ(
        test::read(captured<PcapCapture>(exchange), reading).end.error.toStdString(),
        "it holds no TCP to or from port 503 (but from ports 1502, 40000); --port names the controller's");
}

TEST(PacketCaptureReader, GoesOnWithTheFirstFrameBehindAGap)
{
    const int frames = 40;
    QByteArray pcap = captured<PcapCapture>([](LinkTap* tap) {
        test::connect(tap);
        for (int sent = 0; sent < frames; ++sent)
            tap->sent(readTwo);
    });
    const int packetSize = 16 + 40 + readTwo.size();
    pcap.remove(pcap.size() - (frames - 1) * packetSize, packetSize); // that of the second frame
    const std::vector<std::string> entries = test::read(pcap).entries;
    EXPECT_EQ(std::count(entries.begin(), entries.end(), request), frames - 1);
}

TEST(PacketCaptureReader, ReadsRemoteFrames)
{
    const QByteArray read = QByteArray::fromHex("16000000010009000000640002000000000000000086");
    const QByteArray reply = QByteArray::fromHex("00000000000701090412340007");
    const QByteArray pcap = captured<PcapCapture>([&](LinkTap* tap) {
        test::connect(tap);
        tap->sent(read);
        tap->received(reply);
    });
    PacketReading reading;
    reading.format = FrameFormat::Remote;
    EXPECT_THAT(test::read(pcap, reading).entries,
                ElementsAre("+", "> " + read.toHex().toStdString(), "< " + reply.toHex().toStdString()));
}

TEST(PacketCaptureReader, LeavesACutPacketOutWithANote)
{
    for (const QByteArray& whole :
         {captured<PcapCapture>(exchange), pcapng(captured<PcapCapture>(exchange), 101)}) {
        const test::Read read = test::read(whole.chopped(1));
        EXPECT_EQ(read.end.error, QString());
        EXPECT_THAT(read.end.notes,
                    ElementsAre(QStringLiteral("its last packet, 8, was cut and is left out")));
        EXPECT_THAT(read.entries, ElementsAre("+", request, answer, "-"));
    }
}

TEST(PacketCaptureReader, LeavesPacketsOutThatWereCapturedInPart)
{
    QByteArray pcap = captured<PcapCapture>(exchange);
    const int requestAt = packetOffset + 3 * 56;
    const int requestSize = static_cast<int>(littleAt(pcap, requestAt + 8));
    pcap.replace(requestAt + 8, 4, little(static_cast<quint32>(requestSize - 5)));
    pcap.remove(requestAt + 16 + requestSize - 5, 5);
    const test::Read read = test::read(pcap);
    EXPECT_EQ(read.end.error, QString());
    EXPECT_EQ(read.end.notes.join(QLatin1Char('|')).toStdString(),
              "packets that were captured in part only are left out: 1, the first of them packet 4; capture "
              "whole packets (tcpdump: -s 0)");
    EXPECT_THAT(read.entries, ElementsAre("+", answer, "-"));
}

TEST(PacketCaptureReader, TellsAtWhichPacketALengthIsImpossible)
{
    QByteArray pcap = captured<PcapCapture>(exchange);
    pcap.replace(packetOffset + 56 + 8, 4, little(0x7FFFFFFF));
    EXPECT_THAT(errorOf(pcap), StartsWith("packet 2: "));
    EXPECT_THAT(errorOf(pcap), HasSubstr("2147483647"));
}

TEST(PacketCaptureReader, TellsALinkTypeThatItDoesNotKnow)
{
    EXPECT_THAT(errorOf(withLinkLayer(captured<PcapCapture>(exchange), 105, QByteArray())),
                StartsWith("byte 20: packets of link type IEEE802_11; Ethernet, raw IP, "));
}

TEST(PacketCaptureReader, TakesThePortOfTheControllerFromACaptureOfThePanel)
{
    const auto toPort = [](int port) {
        return captured<PcapCapture>([port](LinkTap* tap) {
            tap->opened({QStringLiteral("10.0.0.1"), 40000}, {QStringLiteral("10.0.0.2"), port});
            tap->sent(readTwo);
        });
    };
    EXPECT_THAT(test::read(toPort(502)).entries, ElementsAre("+", request));
    EXPECT_THAT(test::read(toPort(1502)).entries, ElementsAre("+", request));
    PacketReading named;
    named.controllerPort = 502;
    EXPECT_THAT(test::read(toPort(1502), named).end.error.toStdString(),
                HasSubstr("(but from ports 1502, 40000)"));
}

TEST(PacketCaptureReader, TakesPort502InCapturesOfOthers)
{
    QByteArray pcap = captured<PcapCapture>(exchange);
    pcap[packetOffset + 16 + 20 + 7] = 0x41; // another first sequence number
    EXPECT_THAT(errorOf(pcap),
                StartsWith("it holds no TCP to or from port 502 (but from ports 1502, 40000)"));
}

TEST(CaptureReader, RefusesCompressedAndUnknownFilesAndTellsWhatToDo)
{
    EXPECT_THAT(errorOf(QByteArray::fromHex("1F8B080000000000")),
                HasSubstr("unpack it (gunzip), or give <(zcat FILE)"));
    EXPECT_THAT(errorOf("hello"),
                StartsWith("byte 0: this is neither packets (pcap or pcapng) nor lines of JSON"));
    EXPECT_THAT(errorOf(QByteArray(100, '\0')), HasSubstr("Save As"));
}

TEST(CaptureReader, TellsAFileWhoseHeaderIsCut)
{
    EXPECT_THAT(errorOf(captured<PcapCapture>(exchange).left(10)),
                StartsWith("byte 0: its header cannot be used: "));
}

TEST(CaptureReader, SaysHowMuchOfAFileWasRead)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write(captured<PcapCapture>(exchange));
    file.close();
    CaptureReader reader(file.fileName());
    reader.read({}, [](const CaptureEntry&) { return true; });
    EXPECT_EQ(reader.percentRead(), 100);
}

TEST(CaptureReader, SurvivesEveryCutAndEveryChangedByte)
{
    for (const QByteArray& good : {captured<PcapCapture>(exchange), captured<JsonCapture>(exchange),
                                   pcapng(captured<PcapCapture>(exchange), 101)}) {
        for (int at = 0; at < good.size(); ++at) {
            test::read(good.left(at));
            for (const char byte : {'\0', '\xFF', '\x22'}) {
                QByteArray bad = good;
                bad[at] = byte;
                EXPECT_LE(test::read(bad).entries.size(), 12u);
            }
        }
    }
}

// TCP

TEST(TcpStream, PutsSegmentsInOrderAndTakesRepeatedOnesOnce)
{
    TcpStream stream;
    stream.begin(0xFFFFFFFE); // sequence numbers begin again at 0
    EXPECT_EQ(stream.add(0xFFFFFFFE, "abcd"), "abcd");
    EXPECT_EQ(stream.add(4, "gh"), "");
    EXPECT_EQ(stream.add(0xFFFFFFFE, "abcd"), "");
    EXPECT_EQ(stream.add(1, "def"), "efgh");
    EXPECT_FALSE(stream.hasJumped());
}

TEST(TcpStream, TakesNothingOfASegmentThatIsFarBehind)
{
    TcpStream stream;
    stream.begin(0x80000000);
    EXPECT_EQ(stream.add(0, "x"), "");
    EXPECT_EQ(stream.add(0x80000000, "y"), "y");
}

TEST(TcpStream, JumpsOverWhatIsMissingForGood)
{
    TcpStream stream;
    stream.begin(0);
    QByteArray taken;
    for (quint32 at = 10; taken.isEmpty() && at < 1000; ++at)
        taken = stream.add(at, "x");
    EXPECT_EQ(taken, QByteArray(32, 'x'));
    EXPECT_TRUE(stream.hasJumped());
    EXPECT_EQ(stream.add(42, "y"), "y");
    EXPECT_FALSE(stream.hasJumped());
}

TEST(TcpSegment, IsNoneInFragmentsOtherProtocolsAndRubbish)
{
    const QByteArray packet = QByteArray::fromHex("450000290000000040060000"
                                                  "0a0000010a000002"
                                                  "9c4001f60000000100000002"
                                                  "5018ffff0000000041");
    ASSERT_TRUE(tcpSegmentOf(DLT_RAW, packet));
    EXPECT_EQ(tcpSegmentOf(DLT_RAW, packet)->bytes, "A");
    const auto with = [&packet](int at, int byte) {
        QByteArray changed = packet;
        changed[at] = static_cast<char>(byte);
        return tcpSegmentOf(DLT_RAW, changed);
    };
    EXPECT_FALSE(with(6, 0x20)) << "more fragments follow";
    EXPECT_FALSE(with(7, 0x01)) << "a later fragment";
    EXPECT_FALSE(with(9, 17)) << "UDP";
    EXPECT_FALSE(with(0, 0x44)) << "a header too short";
    EXPECT_FALSE(with(0, 0x75)) << "no version of IP";
    EXPECT_FALSE(with(3, 0x2A)) << "longer than the packet";
    EXPECT_FALSE(with(32, 0x40)) << "a TCP header too short";
    EXPECT_FALSE(with(32, 0xF0)) << "a TCP header too long";
    EXPECT_FALSE(tcpSegmentOf(DLT_RAW, QByteArray()));
}

TEST(TcpSegment, IsReadFromIpv6)
{
    const QByteArray packet = QByteArray::fromHex("6000000000150640") + QByteArray(15, '\0') + '\1' +
                              QByteArray(15, '\0') + '\1' +
                              QByteArray::fromHex("9c4001f600000001000000025018ffff0000000041");
    ASSERT_TRUE(tcpSegmentOf(DLT_RAW, packet));
    EXPECT_EQ(tcpSegmentOf(DLT_RAW, packet)->bytes, "A");
    EXPECT_EQ(tcpSegmentOf(DLT_RAW, packet)->toPort, 502);
    EXPECT_FALSE(tcpSegmentOf(DLT_RAW, packet.chopped(1)));
}

// Lines

const QByteArray header = R"({"capture":"plcpanel","version":1,"station":3})"
                          "\n";

TEST(JsonCaptureReader, ReadsEventsAndWholeFramesAndSkipsWhatItDoesNotKnow)
{
    const QByteArray json = header + R"({"event":"connected","time":"2026-11-21T14:03:22Z"}

{"event":"a comet","time":"2026-11-21T14:03:22Z"}
{"direction":"request","hex":"0001 000000060103 00640002","time":"2026-11-21T14:03:23Z","mood":1}
{"event":"not sent","hex":"0001 000000060103 00640002","why":"so","time":"2026-11-21T14:03:23Z"}
{"event":"no reply in time","time":"2026-11-21T14:03:24Z"}
{"direction":"reply","hex":"00 01","time":"2026-11-21T14:03:24Z","whole":false}
{"direction":"reply","hex":"0001000000070103040007ffff","time":"2026-11-21T14:03:24Z"}
{"event":"closed","time":"2026-11-21T14:03:24Z"}
)";
    const test::Read read = test::read(json);
    EXPECT_EQ(read.end.error, QString());
    EXPECT_THAT(read.entries, ElementsAre("+", request, "x" + request.substr(1), "timed out", answer, "-"));
    EXPECT_EQ(read.end.settings->station, 3);
}

TEST(JsonCaptureReader, TakesALastLineWithoutALineEnd)
{
    const test::Read read = test::read(header + R"({"event":"closed","time":"2026-11-21T14:03:24Z"})");
    EXPECT_EQ(read.end.error, QString());
    EXPECT_THAT(read.entries, ElementsAre("-"));
}

TEST(JsonCaptureReader, LeavesACutLastLineOutWithANote)
{
    const test::Read read = test::read(captured<JsonCapture>(exchange).chopped(9));
    EXPECT_EQ(read.end.error, QString());
    EXPECT_THAT(read.end.notes, ElementsAre(QStringLiteral("its last line, 5, was cut and is left out")));
    EXPECT_THAT(read.entries, ElementsAre("+", request, answer));
}

TEST(JsonCaptureReader, TellsTheLineThatIsWrongAndWhatIsExpected)
{
    const auto error = [](const char* line) { return errorOf(header + "\n" + line + "\n"); };
    EXPECT_THAT(error("hello"), StartsWith("line 3: it is no JSON: "));
    EXPECT_THAT(error("hello"), HasSubstr(": hello"));
    EXPECT_THAT(error("[1]"), StartsWith("line 3: a JSON object is expected"));
    EXPECT_THAT(error("{}"), HasSubstr("\"time\" is missing or no text"));
    EXPECT_THAT(error(R"({"time":"noon"})"), HasSubstr("\"noon\" is no time such as "));
    EXPECT_THAT(error(R"({"time":"2026-11-21T14:03:24Z","direction":"up"})"),
                HasSubstr("\"up\" is no direction"));
    const QByteArray frame = R"({"time":"2026-11-21T14:03:24Z","direction":"reply","hex":)";
    EXPECT_THAT(error(frame + R"("0"})"), HasSubstr("\"hex\" must hold bytes, two digits each"));
    EXPECT_THAT(error(frame + R"("0 0"})"), HasSubstr("no byte in two hexadecimal digits"));
    EXPECT_THAT(error(frame + R"("0G"})"), HasSubstr("no byte in two hexadecimal digits"));
    EXPECT_THAT(error(frame + R"(""})"), HasSubstr("\"hex\" must hold bytes"));
    EXPECT_THAT(error(frame + "7}"), HasSubstr("\"hex\" is missing or no text"));
}

TEST(JsonCaptureReader, QuotesNothingThatATerminalWouldActOn)
{
    const std::string error = errorOf(header + R"({"time":"\u001b[2J"})" + "\n");
    EXPECT_THAT(error, StartsWith("line 2: \".[2J\" is no time"));
}

TEST(JsonCaptureReader, RefusesWhatIsNoCapture)
{
    EXPECT_EQ(errorOf(""), "it holds no capture: there is no line in it");
    EXPECT_THAT(errorOf("{}\n"), HasSubstr("this is no capture of plcpanel"));
    EXPECT_THAT(errorOf(R"({"capture":"plcpanel","version":2})"), HasSubstr("the capture has version 2"));
    EXPECT_THAT(errorOf(R"({"capture":"plcpanel","version":1,"timeoutMs":0})"),
                HasSubstr("time-out (ms): 0"));
    EXPECT_THAT(errorOf("{" + QByteArray(200, '\xE4')), StartsWith("line 1: it is no JSON: "));
    EXPECT_THAT(errorOf("hello"), StartsWith("byte 0: this is neither packets (pcap or pcapng) nor lines"));
}

} // namespace
