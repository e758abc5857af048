// SPDX-License-Identifier: MIT
/// \file
/// \brief What a lock guards, in words that clang checks (-Wthread-safety; scripts/compile-matrix does).
///
/// With any other compiler the words say nothing. Where a rule is broken on purpose, PLC_UNCHECKED or
/// PLC_UNGUARDED stands there with the reason, and nowhere else.
#ifndef DRIVER_THREAD_SAFETY_H
#define DRIVER_THREAD_SAFETY_H

#include <QMutex>

#if defined(__clang__)
#define PLC_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define PLC_THREAD_ATTRIBUTE(attribute)
#endif

/// A type whose objects are held and released.
#define PLC_CAPABILITY(kind) PLC_THREAD_ATTRIBUTE(capability(kind))

/// A class whose objects hold something as long as they live.
#define PLC_SCOPED_CAPABILITY PLC_THREAD_ATTRIBUTE(scoped_lockable)

/// A member that is touched only while the lock is held.
#define PLC_GUARDED_BY(lock) PLC_THREAD_ATTRIBUTE(guarded_by(lock))

/// A lock that may be held while one of the others is taken, never the other way round.
#define PLC_ACQUIRED_BEFORE(...) PLC_THREAD_ATTRIBUTE(acquired_before(__VA_ARGS__))

/// A member that no lock guards, and why that is right.
#define PLC_UNGUARDED(reason)

/// A function that is called with the locks held.
#define PLC_REQUIRES(...) PLC_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))

/// A function that takes the locks itself: calling it with one held would wait for ever.
#define PLC_EXCLUDES(...) PLC_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))

/// A function after which the lock is held, or no longer held.
#define PLC_ACQUIRE(...) PLC_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define PLC_RELEASE(...) PLC_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))

/// A function that the compiler takes on trust, and why.
#define PLC_UNCHECKED(reason) PLC_THREAD_ATTRIBUTE(no_thread_safety_analysis)

/// A QMutex by another name, for attributes can be given to a name.
typedef QMutex DriverMutex PLC_CAPABILITY("mutex");

/// Holds a mutex as long as it lives.
class PLC_SCOPED_CAPABILITY MutexHolder
{
public:
    explicit MutexHolder(DriverMutex& mutex) PLC_ACQUIRE(mutex) PLC_UNCHECKED("QMutex is not annotated")
        : m_mutex(mutex)
    {
        m_mutex.lock();
    }
    ~MutexHolder() PLC_RELEASE() PLC_UNCHECKED("QMutex is not annotated") { m_mutex.unlock(); }

private:
    MutexHolder(const MutexHolder&);
    MutexHolder& operator=(const MutexHolder&);

    DriverMutex& m_mutex;
};

#endif
