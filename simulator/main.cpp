// plcsim: the simulated controller as a program.

#include "simulator/command_line.h"
#include "simulator/memory_text.h"
#include "simulator/simulated_controller.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

namespace
{

using namespace simulator;

enum ExitStatus { Done = 0, Failed = 1, WrongInput = 2 };

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

bool load(const std::string& fileName, ControllerMemory& memory)
{
    std::ifstream file(fileName);
    std::ostringstream text;
    if (file.is_open() && file.peek() != std::ifstream::traits_type::eof())
        text << file.rdbuf();
    if (!file.is_open() || file.bad()) {
        std::cerr << "plcsim: --load: cannot read '" << fileName << "'; check its name and its rights\n";
        return false;
    }
    const MemoryText parsed = parseMemoryText(text.str(), fileName);
    for (const std::string& error : parsed.errors)
        std::cerr << "plcsim: " << error << '\n';
    for (const MemoryValue& value : parsed.values)
        memory.set(value);
    return parsed.errors.empty();
}

// Tried before anything is served: what is wrong with the name shall not come out when the values are lost.
bool isWritable(const std::string& fileName)
{
    if (std::ofstream(fileName, std::ios::app).is_open())
        return true;
    std::cerr << "plcsim: --dump-file: cannot write '" << fileName << "'; check its name and its rights\n";
    return false;
}

bool dump(const Options& options, const ControllerMemory& memory)
{
    const std::string text = formatMemoryText(memory.values());
    if (options.dump)
        std::cout << text << std::flush;
    if (options.dumpFile.isEmpty())
        return bool(std::cout);
    std::ofstream file(options.dumpFile.toStdString(), std::ios::trunc);
    file << text << std::flush;
    if (!file)
        std::cerr << "plcsim: --dump-file: writing '" << options.dumpFile.toStdString() << "' failed\n";
    return file && std::cout;
}

void printSummary(const SimulatedController& controller)
{
    std::cerr << "plcsim: " << controller.requests() << " requests";
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
    std::cout << "listening on 127.0.0.1:" << controller.port() << std::endl;
    int signal = 0;
    sigwait(&endSignals, &signal);
    controller.stop();
    if (!options.quiet)
        printSummary(controller);
    return dump(options, controller.memory()) ? Done : Failed;
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
    const sigset_t endSignals = blockEndSignals();
    const QCoreApplication application(argc, argv);
    const CommandLine line = parseCommandLine(QCoreApplication::arguments());
    if (line.wish == CommandLine::ShowText) {
        std::cout << line.text.toStdString();
        return Done;
    }
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
