// SPDX-License-Identifier: MIT
// plcsoak: panels and misbehaving controllers, for a million requests.

#include "runtime/host/driver_path.h"
#include "soak/pair.h"
#include "soak/report.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QThread>

#include <csignal>
#include <cstdio>
#include <new>
#include <stdexcept>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{

using namespace soak;

enum ExitStatus { AllRight = 0, SomethingWrong = 1, WrongInput = 2 };

const unsigned long pollMs = 100;
const qint64 progressMs = 10000;

/// One pair in a process of its own.
struct Child {
    Figures* figures = nullptr; ///< shared with it
    pid_t process = -1;
    bool isOver = false;
};

Figures* sharedFigures()
{
    void* const memory =
        mmap(nullptr, sizeof(Figures), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED)
        throw std::runtime_error("there is no memory to share");
    return new (memory) Figures;
}

/// In the new process. It ends with the one that started it.
[[noreturn]] void playPair(const Options& options, int number, Figures& figures)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    int argc = 1;
    char name[] = "plcsoak";
    char* argv[] = {name, nullptr};
    int status = SomethingWrong;
    try {
        const QCoreApplication application(argc, argv);
        runPair(options, number, figures);
        status = figures.wrong == 0 ? AllRight : SomethingWrong;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "plcsoak: pair %d: %s\n", number, error.what());
    }
    _exit(status);
}

Child startPair(const Options& options, int number)
{
    Child child;
    child.figures = sharedFigures();
    child.process = fork();
    if (child.process < 0)
        throw std::runtime_error("no process can be started");
    if (child.process == 0)
        playPair(options, number, *child.figures);
    return child;
}

/// \return false when it has ended and something was wrong
bool check(Child* child, int number)
{
    int status = 0;
    if (child->isOver || waitpid(child->process, &status, WNOHANG) == 0)
        return true;
    child->isOver = true;
    if (WIFEXITED(status) && WEXITSTATUS(status) == AllRight)
        return true;
    if (WIFSIGNALED(status))
        std::fprintf(stderr, "plcsoak: WRONG: pair %d was ended by signal %d\n", number, WTERMSIG(status));
    else
        std::fprintf(stderr, "plcsoak: pair %d ended with status %d\n", number, WEXITSTATUS(status));
    return false;
}

bool areOver(const std::vector<Child>& children)
{
    for (const Child& child : children) {
        if (!child.isOver)
            return false;
    }
    return true;
}

std::vector<const Figures*> figuresOf(const std::vector<Child>& children)
{
    std::vector<const Figures*> all;
    for (const Child& child : children)
        all.push_back(child.figures);
    return all;
}

double secondsOf(const QElapsedTimer& clock)
{
    return static_cast<double>(clock.elapsed()) / 1000;
}

/// \return true when everything was right in every pair
bool waitForAll(const Options& options, std::vector<Child>& children, const QElapsedTimer& clock)
{
    bool right = true;
    QElapsedTimer sinceProgress;
    sinceProgress.start();
    while (!areOver(children)) {
        for (std::size_t number = 0; number < children.size(); ++number)
            right = check(&children[number], static_cast<int>(number)) && right;
        if (sinceProgress.hasExpired(progressMs)) {
            std::fputs(qPrintable(progressLine(options, figuresOf(children), secondsOf(clock))), stderr);
            sinceProgress.restart();
        }
        QThread::msleep(pollMs);
    }
    return right;
}

ExitStatus soakAll(const Options& options)
{
    QElapsedTimer clock;
    clock.start();
    std::vector<Child> children;
    for (int number = 0; number < options.pairs; ++number)
        children.push_back(startPair(options, number));
    const bool right = waitForAll(options, children, clock);
    std::fputs(qPrintable(finalReport(options, figuresOf(children), secondsOf(clock))), stdout);
    std::puts(right ? "everything was right" : "SOMETHING WAS WRONG");
    return right ? AllRight : SomethingWrong;
}

QStringList argumentsOf(int argc, char* argv[])
{
    QStringList arguments;
    for (int index = 0; index < argc; ++index)
        arguments += QString::fromLocal8Bit(argv[index]);
    return arguments;
}

} // namespace

int main(int argc, char* argv[])
{
    const CommandLine line = parseCommandLine(argumentsOf(argc, argv));
    if (line.wish == CommandLine::ShowText) {
        std::fputs(qPrintable(line.text), stdout);
        return AllRight;
    }
    if (line.wish == CommandLine::Refuse) {
        std::fprintf(stderr, "plcsoak: %s\nplcsoak --help explains the options.\n", qPrintable(line.text));
        return WrongInput;
    }
    Options options = line.options;
    try {
        if (options.driverPath.isEmpty())
            options.driverPath = plc::findDriver(QFileInfo(QStringLiteral("/proc/self/exe")).canonicalPath());
        return soakAll(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "plcsoak: %s\n", error.what());
        return WrongInput;
    }
}
