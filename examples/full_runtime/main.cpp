// SPDX-License-Identifier: MIT
// A runtime with every precaution, on the driver alone: two threads, several stations, an account of each write, and
// values that say how good they are.
//     full_runtime HOST PORT SECONDS
// writes to stations 1 to 3 and shows their values, switches station 3 off and on, and says how each write ended.
#include "cycle.h"

#include <cstdio>
#include <cstdlib>

namespace
{

const int stations = 3;
const int shown[] = {100, 200}, shownWords = 8; // read again and again
const int setPoint = 300;                       // read and written
const int firstOwn = 1000;                      // each further write has a word of its own
const std::chrono::milliseconds screen(50);

HOST_VAR words(int station, int address, int count)
{
    HOST_VAR variable = HOST_VAR();
    variable.area = 9;
    variable.station = static_cast<unsigned char>(station);
    variable.address = QString::number(address);
    variable.count = count;
    return variable;
}

QList<HOST_VAR> variables()
{
    QList<HOST_VAR> all;
    for (int station = 1; station <= stations; ++station) {
        all << words(station, setPoint, 1);
        for (const int from : shown)
            all << words(station, from, shownWords);
    }
    return all;
}

void told(int key, End end)
{
    static const char* const words[] = {"done", "failed", "unsent"};
    std::printf("write %d ended: %s\n", key, words[static_cast<int>(end)]);
}

void write(Account& account, int station, int address, int value)
{
    const int key = account.write(station, address, {value});
    if (key == 0)
        std::printf("write refused: station %d word %d\n", station, address);
    else
        std::printf("write %d queued: station %d word %d value %d\n", key, station, address, value);
}

void refreshScreen(Account& account, int round)
{
    for (int station = 1; station <= stations; ++station) {
        if (round % stations == station % stations)
            write(account, station, firstOwn + round, round);
        if (round % 10 == 0)
            write(account, station, setPoint, round);
        for (const int from : shown)
            std::printf("station %d words %d: %s\n", station, from,
                        account.show(station, from, shownWords).c_str());
        std::printf("station %d word %d: %s\n", station, setPoint,
                    account.show(station, setPoint, 1).c_str());
    }
}

} // namespace

int main(int argc, char* argv[])
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    if (argc != 4) {
        std::fputs("usage: full_runtime HOST PORT SECONDS\n", stderr);
        return 2;
    }
    COMINFO settings;
    Account account(settings, told);
    Cycle cycle(settings, account, variables(), argv[1], argv[2]);
    cycle.run();
    const int rounds = std::atoi(argv[3]) * 1000 / static_cast<int>(screen.count());
    for (int round = 1; round <= rounds; ++round) {
        if (round == rounds / 3 || round == rounds * 2 / 3)
            cycle.switchStation(3, round != rounds / 3);
        refreshScreen(account, round);
        std::this_thread::sleep_for(screen);
    }
    cycle.stop();
    std::puts("stopped");
}
