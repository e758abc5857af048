// SPDX-License-Identifier: MIT
// A library to be put in front of the C library: looking up a name takes as long as a name server that is silent.

#include <netdb.h>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) int getaddrinfo(const char*, const char*, const addrinfo*,
                                                                  addrinfo**)
{
    const unsigned int silentSeconds = 30;
    sleep(silentSeconds);
    return EAI_AGAIN;
}
