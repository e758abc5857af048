// SPDX-License-Identifier: MIT
// Lets the thread sanitizer see QMutex. QtCore is not built with it, so without this every datum that a
// QMutex guards looks like a race. The definitions here take the place of QtCore's in the test programs, do
// what those do, and tell the sanitizer; it then also finds locks that are taken in two orders. The same holds for
// assigning texts and bytes: the sanitizer has to see the count that says who frees what several share.
#include <QByteArray>
#include <QMutex>
#include <QString>

#include <dlfcn.h>
#include <sanitizer/tsan_interface.h>

namespace
{

template <typename Function>
Function InQtCore(const char* mangledName)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, mangledName));
}

} // namespace

void QMutex::lock()
{
    static const auto real = InQtCore<void (*)(QMutex*)>("_ZN6QMutex4lockEv");
    __tsan_mutex_pre_lock(this, 0);
    real(this);
    __tsan_mutex_post_lock(this, 0, 0);
}

bool QMutex::tryLock(int timeout)
{
    static const auto real = InQtCore<bool (*)(QMutex*, int)>("_ZN6QMutex7tryLockEi");
    __tsan_mutex_pre_lock(this, __tsan_mutex_try_lock);
    const bool locked = real(this, timeout);
    __tsan_mutex_post_lock(this, __tsan_mutex_try_lock | (locked ? 0u : __tsan_mutex_try_lock_failed), 0);
    return locked;
}

void QMutex::unlock() noexcept
{
    static const auto real = InQtCore<void (*)(QMutex*)>("_ZN6QMutex6unlockEv");
    __tsan_mutex_pre_unlock(this, 0);
    real(this);
    __tsan_mutex_post_unlock(this, 0);
}

QString& QString::operator=(const QString& other) noexcept
{
    other.d->ref.ref();
    if (!d->ref.deref())
        Data::deallocate(d);
    d = other.d;
    return *this;
}

QByteArray& QByteArray::operator=(const QByteArray& other) noexcept
{
    other.d->ref.ref();
    if (!d->ref.deref())
        Data::deallocate(d);
    d = other.d;
    return *this;
}

// Remote replies are filed without imageMutex, on purpose: what they store races with whoever reads or writes
// the same elements. Nothing else is let pass.
extern "C" __attribute__((visibility("default"))) const char* __tsan_default_suppressions()
{
    return "race:DealDataOfRemoteArea\n";
}
