#include "panel/watch_signals.h"

#include <csignal>
#include <ctime>
#include <initializer_list>

namespace panel
{

namespace
{

sigset_t watchedSignals()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGWINCH, SIGCONT})
        sigaddset(&set, signal);
    return set;
}

} // namespace

void WatchSignals::block()
{
    const sigset_t set = watchedSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

WatchSignals::Kind WatchSignals::wait(int milliseconds)
{
    const sigset_t set = watchedSignals();
    const timespec time = {milliseconds / 1000, milliseconds % 1000 * 1000000L};
    switch (sigtimedwait(&set, nullptr, &time)) {
    case SIGINT:
    case SIGTERM:
    case SIGHUP:
        return End;
    case SIGWINCH:
        return Resized;
    case SIGCONT:
        return Continued;
    default:
        return None;
    }
}

} // namespace panel
