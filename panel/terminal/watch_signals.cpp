// SPDX-License-Identifier: MIT
#include "panel/terminal/watch_signals.h"

#include <csignal>
#include <ctime>
#include <initializer_list>

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace plc
{

namespace
{

sigset_t setOf(std::initializer_list<int> signals)
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals)
        sigaddset(&set, signal);
    return set;
}

sigset_t watchedSignals()
{
    return setOf({SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGWINCH, SIGTSTP, SIGCONT});
}

WatchSignals::Kind kindOfSignal(int signal)
{
    switch (signal) {
    case SIGINT:
    case SIGTERM:
    case SIGHUP:
    case SIGQUIT:
        return WatchSignals::End;
    case SIGWINCH:
        return WatchSignals::Resized;
    case SIGTSTP:
        return WatchSignals::Suspended;
    case SIGCONT:
        return WatchSignals::Continued;
    default:
        return WatchSignals::None;
    }
}

/// Takes a signal of the set that is there. \return its number, -1 when there is none
int pendingOf(const sigset_t& set)
{
    const timespec noTime = {0, 0};
    return sigtimedwait(&set, nullptr, &noTime);
}

/// Readable while one of the signals is there. One for the whole program.
int signalDescriptor()
{
    static const int descriptor = [] {
        const sigset_t set = watchedSignals();
        return signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
    }();
    return descriptor;
}

} // namespace

void WatchSignals::block()
{
    const sigset_t set = watchedSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

WatchSignals::Kind WatchSignals::wait(int milliseconds, int input)
{
    pollfd descriptors[] = {{signalDescriptor(), POLLIN, 0}, {input, POLLIN, 0}};
    if (poll(descriptors, 2, milliseconds) <= 0)
        return None;
    const Kind kind = kindOfSignal(pendingOf(watchedSignals()));
    if (kind != None || descriptors[1].revents == 0)
        return kind;
    return Input;
}

void WatchSignals::suspend()
{
    const sigset_t set = setOf({SIGTSTP});
    raise(SIGTSTP);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr); // here it stops
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    pendingOf(setOf({SIGCONT}));
}

} // namespace plc
