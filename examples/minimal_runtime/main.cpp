// SPDX-License-Identifier: MIT
// The smallest runtime to start your own from: one station, one thread, Modbus TCP.
//     minimal_runtime HOST PORT [LIBRARY]
// writes a word and reads it again and again, until the controller has confirmed the write and a later read
// has brought the value back. Real runtimes go on for ever.
#include <plcdriver/plcdriver.h>

#include <dlfcn.h>
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <thread>

using Clock = std::chrono::steady_clock;

namespace
{

const timeval linkTimeout = {0, 500000}; // microseconds: to connect, for the header of a reply, for its rest
const std::chrono::milliseconds reconnectPause(1000); // a controller that starts is not stormed
const std::chrono::milliseconds pollPause(100);

const int wordArea = 9;
const int writeKey = 12; // this runtime's name for its write: up to 11 they change the result codes, cyclic reads have 0
const int writtenValue = 1234;

/// The entry points that this runtime needs; the others of the header are looked up the same way.
struct Driver {
    decltype(&::SetComInfo) SetComInfo;
    decltype(&::ReCreatReadVarList) ReCreatReadVarList;
    decltype(&::SetRegisterData) SetRegisterData;
    decltype(&::GetRegisterData) GetRegisterData;
    decltype(&::ComCommunication) ComCommunication;
    decltype(&::DataCom) DataCom;
};

/// \return false when it is no driver, and says why; else the library stays loaded until the program ends
bool load(const char* path, Driver* driver)
{
    void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
#define FOUND(name) ((driver->name = reinterpret_cast<decltype(&::name)>(dlsym(library, #name))) != nullptr)
    if (library != nullptr && FOUND(SetComInfo) && FOUND(ReCreatReadVarList) && FOUND(SetRegisterData) &&
        FOUND(GetRegisterData) && FOUND(ComCommunication) && FOUND(DataCom))
        return true;
#undef FOUND
    std::fprintf(stderr, "minimal_runtime: %s\n", dlerror());
    return false;
}

int wordOf(char high, char low)
{
    return static_cast<unsigned char>(high) << 8 | static_cast<unsigned char>(low);
}

/// The connection, and the part of Modbus TCP that is the runtime's: the driver numbers no frame and judges a
/// reply by its length alone, so nothing but the reply to the frame just sent may reach it.
class Link
{
public:
    Link(const char* host, const char* port) : m_host(host), m_port(port) {}

    /// \return the reply, with the driver's number 0; empty without a connection or without a reply in time
    QByteArray exchange(QByteArray frame)
    {
        if (m_socket < 0 && !connect())
            return QByteArray();
        m_number = m_number % 0xFFFF + 1; // never 0, which a device that echoes no number sends
        frame[0] = static_cast<char>(m_number >> 8);
        frame[1] = static_cast<char>(m_number & 0xFF);
        if (send(m_socket, frame.constData(), size_t(frame.size()), MSG_NOSIGNAL) != frame.size())
            return drop("sending failed");
        QByteArray reply = receive();
        for (; !reply.isEmpty() && !answers(reply, frame); reply = receive())
            std::puts("dropped: a reply to another frame");
        if (reply.isEmpty())
            return reply;
        if (!isGood(reply, frame))
            return QByteArray(1, '\0'); // no reply has one byte, so the driver refuses it
        return reply.replace(0, 2, QByteArray(2, '\0'));
    }

private:
    bool connect()
    {
        std::this_thread::sleep_until(m_nextAttempt);
        addrinfo hints = addrinfo(), *found = nullptr;
        hints.ai_socktype = SOCK_STREAM;
        if (getaddrinfo(m_host, m_port, &hints, &found) == 0) {
            m_socket = socket(found->ai_family, found->ai_socktype | SOCK_CLOEXEC, found->ai_protocol);
            setsockopt(m_socket, SOL_SOCKET, SO_SNDTIMEO, &linkTimeout, sizeof linkTimeout);
            setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &linkTimeout, sizeof linkTimeout);
            if (::connect(m_socket, found->ai_addr, found->ai_addrlen) != 0)
                drop("the controller cannot be reached");
            freeaddrinfo(found);
        }
        m_nextAttempt = Clock::now() + reconnectPause;
        return m_socket >= 0;
    }

    QByteArray drop(const char* why)
    {
        std::printf("no connection: %s\n", why);
        close(m_socket);
        m_socket = -1;
        return QByteArray();
    }

    /// TCP keeps the order of bytes, not their grouping: a reply ends where the length in its header says.
    /// Without a whole reply in time the connection is dropped: of what comes later nobody knows whether it
    /// is a reply's beginning, and a late reply might fill up one that was cut.
    QByteArray receive()
    {
        char bytes[6 + 254]; // the header up to the length, and what may follow
        if (recv(m_socket, bytes, 6, MSG_WAITALL) != 6)
            return drop("no reply in time, or closed by the controller");
        const int length = wordOf(bytes[2], bytes[3]) == 0 ? wordOf(bytes[4], bytes[5]) : 0;
        if (length >= 2 && length <= 254 && recv(m_socket, bytes + 6, size_t(length), MSG_WAITALL) == length)
            return QByteArray(bytes, 6 + length);
        return drop("what came is no whole reply");
    }

    /// Number, station and function must be the frame's. An exception answers, too.
    static bool answers(const QByteArray& reply, const QByteArray& frame)
    {
        return reply.left(2) == frame.left(2) && reply[6] == frame[6] && (reply[7] & 0x7F) == frame[7];
    }

    /// A refusal may be as long as the answer, with bytes behind it that somebody left there; an echo may be that
    /// of another write, and a byte count another than that of the data.
    static bool isGood(const QByteArray& reply, const QByteArray& frame)
    {
        if (reply[7] != frame[7] || reply.size() < 9)
            return false;
        const bool isWrite = frame[7] > 4;
        return isWrite ? reply.mid(8) == frame.mid(8, 4) : wordOf(0, reply[8]) == reply.size() - 9;
    }

    const char *const m_host, *const m_port;
    int m_socket = -1;
    int m_number = 0;
    Clock::time_point m_nextAttempt = Clock::now();
};

void queueWrite(const Driver& driver)
{
    QString name = QStringLiteral("set point"), address = QStringLiteral("100");
    QByteArray value("\xD2\x04", 2); // 1234, low byte first
    driver.SetRegisterData(&name, wordArea, &address, 1, &value, 1, writeKey, 0);
}

/// \return what the driver's memory holds: of a write also what is not confirmed yet
int currentValue(const Driver& driver)
{
    QString address = QStringLiteral("100");
    QByteArray value;
    driver.GetRegisterData(0, wordArea, &address, 1, &value, 1);
    return wordOf(value[1], value[0]);
}

void communicate(const Driver& driver, Link& link)
{
    // The pause is also for a controller that refuses: asked again at once it would be asked without end.
    for (bool confirmed = false, readBack = false; !readBack; std::this_thread::sleep_for(pollPause)) {
        const Protocol* const next = driver.ComCommunication();
        if (next == nullptr) // nothing to send just now
            continue;
        const int key = next->var.hostKey; // taken now: DataCom() ends the record's life
        QByteArray reply = link.exchange(next->frame);
        // No connection is no reply too, so that a write is given up rather than done hours later.
        const int result = driver.DataCom(&reply, reply.size())->result;
        if (result == PLC_RETRYING) {
            std::puts("no good reply; the driver tries again");
        } else if (result != PLC_DONE) {
            std::printf("given up with code %d; the value shown is an old one\n", result);
            if (!confirmed) // what was queued is gone, and nobody knows whether it was done
                queueWrite(driver);
        } else if (key == writeKey) { // a word is one frame, so its one reply ends it
            std::puts("the controller has confirmed the write");
            confirmed = true;
        } else {
            std::printf("word 100 is %d\n", currentValue(driver));
            readBack = confirmed && currentValue(driver) == writtenValue;
        }
    }
}

} // namespace

int main(int argc, char* argv[])
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // each line at once, also into a file
    Driver driver;
    if (argc < 3)
        std::fputs("usage: minimal_runtime HOST PORT [LIBRARY]\n", stderr);
    if (argc < 3 || !load(argc > 3 ? argv[3] : "libplcdriver.so.0", &driver))
        return 2;
    COMINFO info = COMINFO(); // the driver reads it until the end
    info.maxBlockCount = 61; // words in one request: the most that suits every area, reads and writes
    info.defaultStation = 1;
    info.retryLimit = 2;
    info.hostWriteMode = 2; // writes go to the controller, not only to the driver's memory
    driver.SetComInfo(&info);
    HOST_VAR word = HOST_VAR(); // to be read again and again
    word.area = wordArea;
    word.address = QStringLiteral("100");
    word.count = 1;
    QList<HOST_VAR> variables({word});
    driver.ReCreatReadVarList(&variables);
    queueWrite(driver);
    Link link(argv[1], argv[2]);
    communicate(driver, link);
}
