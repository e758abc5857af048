// SPDX-License-Identifier: MIT
// The program plcsim, run as a user runs it.

#include "simulator/loopback_client.h"
#include "support/built_files.h"

#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <memory>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <vector>

namespace
{

using simulator::FileDescriptor;
using test::LoopbackClient;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const char* const write2000 = "00 01 00 00 00 06 01 06 20 00 12 34";

/// A running plcsim whose output is read.
class Plcsim
{
public:
    explicit Plcsim(const std::vector<std::string>& arguments)
    {
        int out[2];
        int err[2];
        if (pipe2(out, O_CLOEXEC) != 0 || pipe2(err, O_CLOEXEC) != 0)
            throw std::runtime_error("no pipes");
        m_process = fork();
        if (m_process == 0)
            become(arguments, out[1], err[1]);
        close(out[1]);
        close(err[1]);
        m_output = std::make_unique<FileDescriptor>(out[0]);
        m_errors = std::make_unique<FileDescriptor>(err[0]);
    }
    ~Plcsim()
    {
        if (m_process > 0 && !m_isOver) {
            kill(m_process, SIGKILL);
            waitpid(m_process, nullptr, 0);
        }
    }
    Plcsim(const Plcsim&) = delete;
    Plcsim& operator=(const Plcsim&) = delete;

    /// The first line of the output, without its end; what there is, if it does not come.
    std::string firstLine()
    {
        std::string line;
        char character = 0;
        while (readSome(*m_output, &character, 1) == 1 && character != '\n')
            line += character;
        return line;
    }

    /// The port that the first line names.
    int port()
    {
        const std::string line = firstLine();
        return std::atoi(line.substr(line.rfind(':') + 1).c_str());
    }

    /// Sends the signal, then waits for the end; the exit status, or minus the signal that killed it.
    int endBy(int signal)
    {
        kill(m_process, signal);
        return end();
    }

    /// Waits for the end.
    int end()
    {
        restOfOutput = readAll(*m_output);
        restOfErrors = readAll(*m_errors);
        int status = 0;
        waitpid(m_process, &status, 0);
        m_isOver = true;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

    std::string restOfOutput; ///< after the first line, known after the end
    std::string restOfErrors;

private:
    [[noreturn]] static void become(const std::vector<std::string>& arguments, int out, int err)
    {
        std::vector<std::string> words = {builtPlcsim()};
        words.insert(words.end(), arguments.begin(), arguments.end());
        std::vector<char*> pointers;
        for (std::string& word : words)
            pointers.push_back(word.data());
        pointers.push_back(nullptr);
        dup2(out, STDOUT_FILENO);
        dup2(err, STDERR_FILENO);
        execv(builtPlcsim(), pointers.data());
        _exit(127);
    }

    static ssize_t readSome(const FileDescriptor& file, char* text, std::size_t most)
    {
        pollfd entry{file.number(), POLLIN, 0};
        return poll(&entry, 1, 20000) > 0 ? read(file.number(), text, most) : -1;
    }

    static std::string readAll(const FileDescriptor& file)
    {
        std::string all;
        char text[4096];
        for (ssize_t size; (size = readSome(file, text, sizeof text)) > 0;)
            all.append(text, static_cast<std::size_t>(size));
        return all;
    }

    pid_t m_process = -1;
    bool m_isOver = false;
    std::unique_ptr<FileDescriptor> m_output;
    std::unique_ptr<FileDescriptor> m_errors;
};

/// A file of its own that is gone after the test.
class TemporaryFile
{
public:
    explicit TemporaryFile(const std::string& content = "") : name(testing::TempDir() + "plcsim_test_XXXXXX")
    {
        close(mkstemp(name.data()));
        std::ofstream(name) << content;
    }
    ~TemporaryFile() { std::remove(name.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    std::string content() const
    {
        std::ostringstream text;
        text << std::ifstream(name).rdbuf();
        return text.str();
    }

    std::string name;
};

TEST(Plcsim, PrintsWhereItListensAndServesThere)
{
    Plcsim plcsim({});
    const std::string line = plcsim.firstLine();
    ASSERT_THAT(line, StartsWith("listening on 127.0.0.1:"));
    LoopbackClient client(std::atoi(line.substr(line.rfind(':') + 1).c_str()));
    EXPECT_EQ(client.exchange(write2000), write2000);
}

TEST(Plcsim, EndsCleanlyAtCtrlC)
{
    Plcsim plcsim({"--quiet"});
    LoopbackClient client(plcsim.port());
    EXPECT_EQ(plcsim.endBy(SIGINT), 0);
    EXPECT_EQ(plcsim.restOfOutput, "");
    EXPECT_EQ(plcsim.restOfErrors, "");
    EXPECT_EQ(client.receiveUntilClosed(), "");
}

TEST(Plcsim, EndsCleanlyWhenTerminated)
{
    Plcsim plcsim({});
    plcsim.firstLine();
    EXPECT_EQ(plcsim.endBy(SIGTERM), 0);
}

TEST(Plcsim, LoadsValuesAndDumpsThemWithWhatWasWritten)
{
    const TemporaryFile file("# start\nunit 1 coil 0x0010 1\nunit 2 register 8192 7\n");
    Plcsim plcsim({"--load", file.name, "--dump"});
    LoopbackClient client(plcsim.port());
    EXPECT_EQ(client.exchange("00 01 00 00 00 06 02 03 20 00 00 01"), "00 01 00 00 00 05 02 03 02 00 07");
    client.exchange(write2000);
    EXPECT_EQ(plcsim.endBy(SIGINT), 0);
    EXPECT_EQ(plcsim.restOfOutput,
              "unit 1 coil 0x0010 1\nunit 1 register 0x2000 4660\nunit 2 register 0x2000 7\n");
}

TEST(Plcsim, DumpsToAFileThatItCanLoad)
{
    const TemporaryFile file("unit 3 register 1 1\n");
    Plcsim first({"--load", file.name, "--dump-file", file.name});
    {
        LoopbackClient client(first.port());
        client.exchange(write2000);
    }
    EXPECT_EQ(first.endBy(SIGINT), 0);
    EXPECT_EQ(first.restOfOutput, "");
    EXPECT_EQ(file.content(), "unit 1 register 0x2000 4660\nunit 3 register 0x0001 1\n");
    Plcsim second({"--load", file.name, "--dump"});
    second.firstLine();
    EXPECT_EQ(second.endBy(SIGINT), 0);
    EXPECT_EQ(second.restOfOutput, file.content());
}

TEST(Plcsim, ReportsEveryWrongLineOfAFile)
{
    const TemporaryFile file("unit 1 coil 1 1\nunit 1 coil 1 5\nnonsense\n");
    Plcsim plcsim({"--load", file.name});
    EXPECT_EQ(plcsim.end(), 2);
    EXPECT_EQ(plcsim.restOfOutput, "");
    EXPECT_THAT(plcsim.restOfErrors, HasSubstr(file.name + ":2: 'unit 1 coil 1 5': expected"));
    EXPECT_THAT(plcsim.restOfErrors, HasSubstr(file.name + ":3: 'nonsense': expected"));
    EXPECT_THAT(plcsim.restOfErrors, Not(HasSubstr(file.name + ":1:")));
}

/// What a line of the shell prints.
std::string outputOf(const std::string& line)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> shell(popen(line.c_str(), "re"), pclose);
    std::string all;
    char text[4096];
    for (std::size_t size; (size = std::fread(text, 1, sizeof text, shell.get())) > 0;)
        all.append(text, size);
    return all;
}

TEST(Plcsim, ReportsFilesThatItCannotReadOrWrite)
{
    for (const std::string option : {"--load", "--dump-file"}) {
        for (const std::string name : {"/nonexistent/values.txt", "/"}) {
            Plcsim plcsim({option, name});
            EXPECT_EQ(plcsim.end(), 2);
            EXPECT_EQ(plcsim.restOfOutput, "");
            EXPECT_THAT(plcsim.restOfErrors, HasSubstr(option + ": cannot"));
            EXPECT_THAT(plcsim.restOfErrors, HasSubstr("'" + name + "'"));
        }
    }
}

TEST(Plcsim, SaysWhyAFileCannotBeReadOrWritten)
{
    Plcsim missing({"--load", "/nonexistent"});
    EXPECT_EQ(missing.end(), 2);
    EXPECT_THAT(missing.restOfErrors, HasSubstr("No such file or directory"));
    Plcsim full({"--dump-file", "/dev/full"});
    full.firstLine();
    EXPECT_EQ(full.endBy(SIGINT), 0); // there is nothing to be written
    const TemporaryFile file("unit 1 register 1 1\n");
    Plcsim written({"--load", file.name, "--dump-file", "/dev/full"});
    written.firstLine();
    EXPECT_EQ(written.endBy(SIGINT), 3);
    EXPECT_THAT(written.restOfErrors, HasSubstr("cannot write '/dev/full': No space left on device"));
}

TEST(Plcsim, EndsWithAFileThatHasNoEnd)
{
    Plcsim plcsim({"--load", "/dev/zero"});
    EXPECT_EQ(plcsim.end(), 2);
    EXPECT_THAT(plcsim.restOfErrors, HasSubstr("'/dev/zero': it is longer than 64 MiB"));
}

TEST(Plcsim, SaysThatItsOutputCannotBeWritten)
{
    for (const char* option : {"", "--help", "--version"}) {
        const std::string line = std::string(builtPlcsim()) + " " + option + " 2>&1 >/dev/full; echo $?";
        EXPECT_EQ(outputOf(line), "plcsim: cannot write the output: No space left on device\n3\n");
    }
    EXPECT_EQ(outputOf(std::string(builtPlcsim()) + " 2>&1 >&-; echo $?"),
              "plcsim: cannot write the output: Bad file descriptor\n3\n");
}

TEST(Plcsim, LoadsAnEmptyFile)
{
    const TemporaryFile file;
    Plcsim plcsim({"--load", file.name, "--dump"});
    EXPECT_GT(plcsim.port(), 0);
    EXPECT_EQ(plcsim.endBy(SIGINT), 0);
    EXPECT_EQ(plcsim.restOfOutput, "");
}

TEST(Plcsim, SaysThatAPortIsInUseAndWhatToDo)
{
    Plcsim first({});
    const int port = first.port();
    Plcsim second({"--port", std::to_string(port)});
    EXPECT_EQ(second.end(), 1);
    EXPECT_EQ(second.restOfOutput, "");
    EXPECT_THAT(second.restOfErrors, HasSubstr("port " + std::to_string(port)));
    EXPECT_THAT(second.restOfErrors, HasSubstr("already in use: stop the program"));
}

TEST(Plcsim, RefusesAddresses)
{
    Plcsim plcsim({"--refuse", "0x2000-8200", "--refuse", "5-5"});
    LoopbackClient client(plcsim.port());
    EXPECT_EQ(client.exchange(write2000), "00 01 00 00 00 03 01 86 02");
    EXPECT_EQ(client.exchange("00 01 00 00 00 06 01 03 00 05 00 01"), "00 01 00 00 00 03 01 83 02");
    EXPECT_EQ(client.exchange("00 01 00 00 00 06 01 03 00 06 00 01"), "00 01 00 00 00 05 01 03 02 00 00");
}

TEST(Plcsim, InjectsFaultsAndCountsThemAtTheEnd)
{
    Plcsim plcsim({"--fault", "late=0", "--fault", "wrong-unit=1", "--seed", "0x7", "--late-ms", "10"});
    LoopbackClient client(plcsim.port());
    EXPECT_EQ(client.exchange(write2000), "00 01 00 00 00 06 02 06 20 00 12 34");
    EXPECT_EQ(plcsim.endBy(SIGINT), 0);
    EXPECT_EQ(plcsim.restOfErrors, "plcsim: 1 request, wrong-unit 1\n");
}

TEST(Plcsim, DelaysLateRepliesAsLongAsItIsTold)
{
    Plcsim plcsim({"--fault", "late=1", "--late-ms", "20"});
    LoopbackClient client(plcsim.port());
    EXPECT_EQ(client.exchange(write2000), write2000);
}

TEST(Plcsim, TracesRequestsAndRepliesInHex)
{
    Plcsim plcsim({"--trace", "--quiet", "--fault", "exception=1"});
    LoopbackClient client(plcsim.port());
    client.exchange(write2000);
    EXPECT_EQ(plcsim.endBy(SIGINT), 0);
    EXPECT_EQ(plcsim.restOfErrors,
              "1 <- 00 01 00 00 00 06 01 06 20 00 12 34\n1 -> 00 01 00 00 00 03 01 86 04 (exception)\n");
}

TEST(Plcsim, LeavesHolesPerUnitAndKind)
{
    Plcsim plcsim({"--refuse", "3:5-9", "--refuse", "coils:20-20", "--refuse", "4:registers:0x1E-30"});
    LoopbackClient client(plcsim.port());
    EXPECT_EQ(client.exchange("00 01 00 00 00 06 03 03 00 05 00 01"), "00 01 00 00 00 03 03 83 02");
    EXPECT_EQ(client.exchange("00 01 00 00 00 06 01 03 00 05 00 01"), "00 01 00 00 00 05 01 03 02 00 00");
    EXPECT_EQ(client.exchange("00 01 00 00 00 06 01 01 00 14 00 01"), "00 01 00 00 00 03 01 81 02");
    EXPECT_EQ(client.exchange("00 01 00 00 00 06 01 03 00 14 00 01"), "00 01 00 00 00 05 01 03 02 00 00");
    EXPECT_EQ(client.exchange("00 01 00 00 00 06 04 03 00 1E 00 01"), "00 01 00 00 00 03 04 83 02");
    EXPECT_EQ(client.exchange("00 01 00 00 00 06 04 01 00 1E 00 01"), "00 01 00 00 00 04 04 01 01 00");
}

TEST(Plcsim, KeepsUnitsSilent)
{
    Plcsim plcsim({"--silent", "3,7-9", "--silent", "255"});
    LoopbackClient client(plcsim.port());
    for (const char* unit : {"03", "07", "08", "09", "FF"})
        client.send(std::string("00 01 00 00 00 06 ") + unit + " 03 00 05 00 01");
    EXPECT_EQ(client.exchange("00 02 00 00 00 06 06 03 00 05 00 01"), "00 02 00 00 00 05 06 03 02 00 00");
}

TEST(Plcsim, DelaysEveryReply)
{
    Plcsim plcsim({"--delay", "60"});
    LoopbackClient client(plcsim.port());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.exchange(write2000), write2000);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
}

TEST(Plcsim, DelaysRepliesByAFault)
{
    Plcsim plcsim({"--fault", "delay=1", "--delay-ms", "60-70"});
    LoopbackClient client(plcsim.port());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(client.exchange(write2000), write2000);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
    EXPECT_EQ(plcsim.endBy(SIGINT), 0);
    EXPECT_EQ(plcsim.restOfErrors, "plcsim: 1 request, delay 1\n");
}

TEST(Plcsim, LoadsValuesThatMove)
{
    const TemporaryFile file(
        "unit 1 register32 10 counter 5..9 period 1\nunit 1 register 8192 sine 7..7 period 5\n");
    Plcsim plcsim({"--load", file.name});
    LoopbackClient client(plcsim.port());
    const char* const read10 = "00 01 00 00 00 06 01 03 00 0A 00 02";
    const std::string first = client.exchange(read10);
    EXPECT_TRUE(test::eventually([&] { return client.exchange(read10) != first; }));
    EXPECT_EQ(client.exchange("00 01 00 00 00 06 01 04 20 00 00 01"), "00 01 00 00 00 05 01 04 02 00 07");
    EXPECT_EQ(client.exchange(write2000), write2000);
    EXPECT_EQ(client.exchange("00 01 00 00 00 06 01 03 20 00 00 01"), "00 01 00 00 00 05 01 03 02 12 34");
}

TEST(Plcsim, ListensOnAnotherAddress)
{
    Plcsim plcsim({"--listen", "0.0.0.0"});
    const std::string line = plcsim.firstLine();
    ASSERT_THAT(line, StartsWith("listening on 0.0.0.0:"));
    LoopbackClient client(std::atoi(line.substr(line.rfind(':') + 1).c_str()));
    EXPECT_EQ(client.exchange(write2000), write2000);
}

TEST(Plcsim, RefusesToListenOnWhatIsNoAddress)
{
    Plcsim plcsim({"--listen", "localhost"});
    EXPECT_EQ(plcsim.end(), 1);
    EXPECT_EQ(plcsim.restOfOutput, "");
    EXPECT_THAT(plcsim.restOfErrors, HasSubstr("'localhost' is no address to listen on: give one in digits"));
}

TEST(Plcsim, ClosesTheConnectionBehindEachReply)
{
    Plcsim plcsim({"--fault", "close-after-reply=1"});
    const int port = plcsim.port();
    for (int i = 0; i < 3; ++i) {
        LoopbackClient client(port);
        client.send(write2000);
        EXPECT_EQ(client.receiveUntilClosed(), write2000);
    }
    EXPECT_EQ(plcsim.endBy(SIGTERM), 0);
    EXPECT_EQ(plcsim.restOfErrors, "plcsim: 3 requests, close-after-reply 3\n");
}

TEST(Plcsim, AnswersRemoteFramesAndCountsBadOnes)
{
    Plcsim plcsim({"--remote"});
    LoopbackClient client(plcsim.port());
    client.send("16 00 00 00 01 00 09 00 00 00 64 00 01 00 00 00 00 00 00 00 00 85");
    EXPECT_EQ(client.receiveFrame(), "00 00 00 00 00 05 01 09 02 00 00");
    client.send("16 00 00 00 01 00 09 00 00 00 64 00 01 00 00 00 00 00 00 00 00 00");
    std::this_thread::sleep_for(std::chrono::milliseconds(600)); // three times the silence behind a bad frame
    EXPECT_EQ(plcsim.endBy(SIGINT), 0);
    EXPECT_THAT(plcsim.restOfErrors, HasSubstr("1 request, bad frames 1"));
}

TEST(Plcsim, ExplainsEveryOption)
{
    Plcsim plcsim({"--help"});
    EXPECT_EQ(plcsim.end(), 0);
    for (const char* word : {"--port",      "--load",
                             "--dump",      "--dump-file",
                             "--refuse",    "--fault",
                             "--late-ms",   "--seed",
                             "--trace",     "--quiet",
                             "no-reply",    "wrong-unit",
                             "unit 1 coil", "--listen",
                             "--silent",    "--delay",
                             "--delay-ms",  "padded-exception",
                             "wrong-echo",  "close-after-reply",
                             "SIGTERM",     "ramp 0..1000 period"})
        EXPECT_THAT(plcsim.restOfOutput, HasSubstr(word));
}

TEST(Plcsim, TellsItsVersion)
{
    Plcsim plcsim({"--version"});
    EXPECT_EQ(plcsim.end(), 0);
    EXPECT_THAT(plcsim.restOfOutput, StartsWith("plcsim "));
}

struct WrongArguments {
    std::vector<std::string> arguments;
    const char* message;
};

class WrongCommandLine : public testing::TestWithParam<WrongArguments>
{
};

TEST_P(WrongCommandLine, IsRefusedWithAMessageThatSaysWhatToDo)
{
    Plcsim plcsim(GetParam().arguments);
    EXPECT_EQ(plcsim.end(), 2);
    EXPECT_EQ(plcsim.restOfOutput, "");
    EXPECT_THAT(plcsim.restOfErrors, HasSubstr(GetParam().message));
    EXPECT_THAT(plcsim.restOfErrors, HasSubstr("--help"));
}

INSTANTIATE_TEST_SUITE_P(
    Plcsim, WrongCommandLine,
    testing::Values(WrongArguments{{"--port", "65536"}, "--port 65536: give a number from 0 to 65535"},
                    WrongArguments{{"--port", "http"}, "--port http: give a number"},
                    WrongArguments{{"--fault", "slow=1"},
                                   "there is no fault 'slow'; choose among no-reply, late"},
                    WrongArguments{{"--fault", "late"}, "--fault late: give a probability from 0 to 1"},
                    WrongArguments{{"--fault", "late=often"}, "for example --fault late=0.1"},
                    WrongArguments{{"--fault", "late=1.5"}, "'late' must be from 0 to 1"},
                    WrongArguments{{"--fault", "late=nan"}, "'late' must be from 0 to 1"},
                    WrongArguments{{"--fault", "late=0.6", "--fault", "cut=0.6"}, "add up to 1 at most"},
                    WrongArguments{{"--refuse", "5"}, "--refuse 5: give the first and the last address"},
                    WrongArguments{{"--refuse", "9-5"}, "--refuse 9-5: give"},
                    WrongArguments{{"--refuse", "0-65536"}, "for example --refuse 100-199"},
                    WrongArguments{{"--refuse", "0:5-9"}, "--refuse 0:5-9: give"},
                    WrongArguments{{"--refuse", "inputs:5-9"}, "for example --refuse 3:coils:100-199"},
                    WrongArguments{{"--refuse", "1:2:5-9"}, "--refuse 1:2:5-9: give"},
                    WrongArguments{{"--refuse", "coils:1:5-9"}, "--refuse coils:1:5-9: give"},
                    WrongArguments{{"--silent", "0"}, "--silent 0: give units from 1 to 255"},
                    WrongArguments{{"--silent", "3,"}, "for example --silent 3,7-9"},
                    WrongArguments{{"--silent", "9-7"}, "--silent 9-7: give units"},
                    WrongArguments{{"--delay", "600001"}, "--delay 600001: give a number from 0 to 600000"},
                    WrongArguments{{"--delay-ms", "5"}, "for example --delay-ms 10-100"},
                    WrongArguments{{"--delay-ms", "9-5"}, "--delay-ms 9-5: give"},
                    WrongArguments{{"--late-ms", "-1"}, "--late-ms -1: give a number"},
                    WrongArguments{{"--seed", "4294967296"}, "--seed 4294967296: give a number"},
                    WrongArguments{{"--load", ""}, "--load has no value; give the name of a file"},
                    WrongArguments{{"--dump-file", ""}, "--dump-file has no value; give the name of a file"},
                    WrongArguments{{"--bogus"}, "Unknown option 'bogus'"},
                    WrongArguments{{"values.txt"}, "Unexpected argument 'values.txt'"}));

} // namespace
