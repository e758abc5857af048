// SPDX-License-Identifier: MIT
// A server as libmodbus means it to be written: its own functions receive and answer, select() says whose turn
// it is. Prints where it listens, like plcsim, and serves until it is ended.

#include <modbus/modbus.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace
{

const int waitingClients = 64;
const int elements = 65536;

int portOf(int listener)
{
    sockaddr_in address = {};
    socklen_t size = sizeof address;
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

void answer(modbus_t* modbus, modbus_mapping_t* mapping, int client, fd_set* open)
{
    std::uint8_t request[MODBUS_TCP_MAX_ADU_LENGTH];
    modbus_set_socket(modbus, client);
    const int size = modbus_receive(modbus, request);
    if (size > 0) {
        modbus_reply(modbus, request, size, mapping);
    } else if (size < 0) {
        close(client);
        FD_CLR(client, open);
    }
}

[[noreturn]] void serve(modbus_t* modbus, modbus_mapping_t* mapping, int listener)
{
    fd_set open;
    FD_ZERO(&open);
    FD_SET(listener, &open);
    int last = listener;
    for (;;) {
        fd_set ready = open;
        select(last + 1, &ready, nullptr, nullptr, nullptr);
        for (int socket = 0; socket <= last; ++socket) {
            if (!FD_ISSET(socket, &ready))
                continue;
            if (socket != listener) {
                answer(modbus, mapping, socket, &open);
                continue;
            }
            const int client = accept(listener, nullptr, nullptr);
            FD_SET(client, &open);
            last = std::max(last, client);
        }
    }
}

} // namespace

int main()
{
    modbus_t* const modbus = modbus_new_tcp("127.0.0.1", 0);
    modbus_mapping_t* const mapping = modbus_mapping_new(elements, elements, elements, elements);
    const int listener = modbus_tcp_listen(modbus, waitingClients);
    if (!mapping || listener < 0) {
        std::fputs("libmodbus_server: cannot listen\n", stderr);
        return 1;
    }
    std::printf("listening on 127.0.0.1:%d\n", portOf(listener));
    std::fflush(stdout);
    serve(modbus, mapping, listener);
}
