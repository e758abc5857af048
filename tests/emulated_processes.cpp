// SPDX-License-Identifier: MIT
// Lets QProcess start programs where an emulator runs the tests. QtCore asks the kernel whether a process can be waited
// for by a descriptor of it, and takes a yes for a promise that one can also be started so. qemu hands the question on
// to the machine's kernel, which says yes, and refuses to do it. The definition here takes the place of the C library's
// in the test programs and answers no; QtCore then starts processes the old way.
#include <cerrno>
#include <cstdarg>
#include <dlfcn.h>
#include <sys/syscall.h>

extern "C" __attribute__((visibility("default"))) long syscall(long number, ...) noexcept
{
    constexpr int waitsByDescriptor = 3; // P_PIDFD
    long words[6];
    va_list given;
    va_start(given, number);
    for (long& word : words)
        word = va_arg(given, long);
    va_end(given);
    if (number == SYS_waitid && words[0] == waitsByDescriptor) {
        errno = EINVAL;
        return -1;
    }
    using Call = long (*)(long, ...);
    static const Call call = reinterpret_cast<Call>(dlsym(RTLD_NEXT, "syscall"));
    return call(number, words[0], words[1], words[2], words[3], words[4], words[5]);
}
