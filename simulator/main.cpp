// SPDX-License-Identifier: MIT
// plcsim: the simulated controller as a program.

#include "simulator/command_line.h"
#include "simulator/memory_text.h"
#include "simulator/output.h"
#include "simulator/simulated_controller.h"

#include <QCoreApplication>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>

namespace
{

using namespace simulator;

enum ExitStatus { Done = 0, Failed = 1, WrongInput = 2, OutputFailed = 3 };

// A file may be a device or a pipe without an end. This is two million values.
constexpr std::size_t longestFile = 64UL * 1024 * 1024;

// Blocked in every thread, since threads inherit it, so that sigwait() gets them.
sigset_t blockEndSignals()
{
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGINT);
    sigaddset(&ends, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &ends, nullptr);
    return ends;
}

const char* nameOf(Fault fault)
{
    for (const FaultKind& kind : faultList())
        if (kind.fault == fault)
            return kind.name;
    return "";
}

void printTrace(const TraceEntry& entry)
{
    std::fprintf(stderr, "%lu %s", entry.connection, entry.isReply ? "->" : "<-");
    for (const std::uint8_t byte : entry.bytes)
        std::fprintf(stderr, " %02X", static_cast<unsigned>(byte));
    if (entry.fault != Fault::None)
        std::fprintf(stderr, " (%s)", nameOf(entry.fault));
    std::fputc('\n', stderr);
}

bool refuseFile(const std::string& what)
{
    std::cerr << "plcsim: " << what << '\n';
    return false;
}

std::string errorWords()
{
    return std::strerror(errno);
}

/// False when it cannot be read or is too long, which a message tells.
bool readFile(const std::string& fileName, std::string& text)
{
    const std::string begin = "--load: cannot read '" + fileName + "': ";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(fileName.c_str(), "re"),
                                                               std::fclose);
    std::vector<char> piece(1024UL * 1024);
    while (file != nullptr && text.size() <= longestFile) {
        const std::size_t size = std::fread(piece.data(), 1, piece.size(), file.get());
        text.append(piece.data(), size);
        if (size == 0 && std::ferror(file.get()) == 0)
            return true;
        if (size == 0)
            break;
    }
    if (text.size() > longestFile)
        return refuseFile(begin + "it is longer than 64 MiB; give a file of values");
    return refuseFile(begin + errorWords() + "; check its name and its rights");
}

bool load(const std::string& fileName, ControllerMemory& memory)
{
    std::string text;
    if (!readFile(fileName, text))
        return false;
    const MemoryText parsed = parseMemoryText(text, fileName);
    for (const std::string& error : parsed.errors)
        std::cerr << "plcsim: " << error << '\n';
    for (const MemoryValue& value : parsed.values)
        memory.set(value);
    for (const MovingPlace& place : parsed.moving)
        memory.move(place);
    return parsed.errors.empty();
}

// Tried before anything is served: what is wrong with the name shall not come out when the values are lost.
bool isWritable(const std::string& fileName)
{
    return std::ofstream(fileName, std::ios::app).is_open() ||
           refuseFile("--dump-file: cannot write '" + fileName + "': " + errorWords() +
                      "; check its name and its rights");
}

bool dump(const Options& options, const ControllerMemory& memory)
{
    const std::string text = formatMemoryText(memory.values());
    const bool printed = !options.dump || print(text);
    return (options.dumpFile.isEmpty() || writeFile("--dump-file", options.dumpFile.toStdString(), text)) &&
           printed;
}

void printSummary(const SimulatedController& controller)
{
    const unsigned long requests = controller.requests();
    std::cerr << "plcsim: " << requests << (requests == 1 ? " request" : " requests");
    if (const unsigned long count = controller.badFrames())
        std::cerr << ", bad frames " << count;
    for (const FaultKind& kind : faultList())
        if (const unsigned long count = controller.injected(kind.fault))
            std::cerr << ", " << kind.name << ' ' << count;
    std::cerr << '\n';
}

ExitStatus serve(const Options& options, SimulatedController& controller, const sigset_t& endSignals)
{
    controller.start();
    if (!print("listening on " + endpointText(options.settings.listenAddress, controller.port()) + '\n'))
        return OutputFailed;
    int signal = 0;
    sigwait(&endSignals, &signal);
    controller.stop();
    if (!options.quiet)
        printSummary(controller);
    return dump(options, controller.memory()) ? Done : OutputFailed;
}

ExitStatus run(Options options, const sigset_t& endSignals)
{
    if (options.trace)
        options.settings.trace = printTrace;
    SimulatedController controller(options.settings);
    if (!options.loadFile.isEmpty() && !load(options.loadFile.toStdString(), controller.memory()))
        return WrongInput;
    if (!options.dumpFile.isEmpty() && !isWritable(options.dumpFile.toStdString()))
        return WrongInput;
    return serve(options, controller, endSignals);
}

} // namespace

int main(int argc, char* argv[])
{
    keepStandardDescriptors();
    const sigset_t endSignals = blockEndSignals();
    const QCoreApplication application(argc, argv);
    const CommandLine line = parseCommandLine(QCoreApplication::arguments());
    if (line.wish == CommandLine::ShowText)
        return print(line.text.toStdString()) ? Done : OutputFailed;
    if (line.wish == CommandLine::Refuse) {
        std::cerr << "plcsim: " << line.text.toStdString() << "\nplcsim --help explains the options.\n";
        return WrongInput;
    }
    try {
        return run(line.options, endSignals);
    } catch (const std::exception& error) {
        std::cerr << "plcsim: " << error.what() << '\n';
        return Failed;
    }
}
