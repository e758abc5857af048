// SPDX-License-Identifier: MIT
// How many requests plcsim answers, beside a server of libmodbus's own functions under the same load.
//
//     server_bench [--rounds N] [--apart]    9 rounds
//
// Each is a process of its own. A load is 1, 8 or 64 connections; each has one request under way and sends the
// next as soon as the reply is there. A round gives each server its turn under each load; the best turn of all
// rounds counts, for the others were disturbed by something else on the machine. Load and servers share one
// processor, see whole_way_bench.cpp; with --apart the load has another one to itself. Fields are separated by
// tabs: requests per second, clients, plcsim, libmodbus, ratio; and the processor time that the server spends on a
// request in microseconds, in the same order.

#include "bench/client_load.h"
#include "bench/loopback_controller.h"
#include "bench/processors.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <limits>
#include <map>
#include <stdexcept>

namespace
{

const int turnMs = 100;
const int loads[] = {1, 8, 64};

/// The best that one server showed under one load.
struct Best {
    double rate = 0; // requests a second
    double microseconds = std::numeric_limits<double>::max();

    void take(const bench::LoadFigures& figures)
    {
        rate = std::max(rate, figures.requests / figures.seconds);
        microseconds = std::min(microseconds, figures.serverSeconds * 1e6 / figures.requests);
    }
};

using Bests = std::map<int, Best>; // by the number of clients

void takeTurns(const bench::LoopbackController& server, Bests& bests)
{
    for (const int clients : loads)
        bests[clients].take(bench::loadServer(server, clients, turnMs));
}

void print(Bests& plcsim, Bests& libmodbus)
{
    for (const int clients : loads)
        std::printf("requests per second\t%d\t%.0f\t%.0f\t%.2f\n", clients, plcsim[clients].rate,
                    libmodbus[clients].rate, plcsim[clients].rate / libmodbus[clients].rate);
    for (const int clients : loads)
        std::printf("processor us per request\t%d\t%.2f\t%.2f\t%.2f\n", clients, plcsim[clients].microseconds,
                    libmodbus[clients].microseconds,
                    plcsim[clients].microseconds / libmodbus[clients].microseconds);
}

void run(int rounds, bool apart)
{
    bench::stayOnOneProcessor(); // the servers inherit it
    const bench::LoopbackController plcsim;
    const bench::LoopbackController libmodbus(QStringLiteral(LIBMODBUS_SERVER_PROGRAM), {});
    if (apart)
        bench::moveToAnotherProcessor();
    Bests ofPlcsim;
    Bests ofLibmodbus;
    for (int round = 0; round < rounds; ++round) {
        takeTurns(plcsim, ofPlcsim);
        takeTurns(libmodbus, ofLibmodbus);
    }
    print(ofPlcsim, ofLibmodbus);
}

} // namespace

int main(int argc, char* argv[])
try {
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({QStringLiteral("rounds"), QStringLiteral("How many rounds."), QStringLiteral("N"),
                      QStringLiteral("9")});
    parser.addOption({QStringLiteral("apart"), QStringLiteral("The load has a processor to itself.")});
    parser.process(application);
    const int rounds = parser.value(QStringLiteral("rounds")).toInt();
    if (rounds < 1)
        throw std::runtime_error("--rounds: give a number from 1 on");
    run(rounds, parser.isSet(QStringLiteral("apart")));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "server_bench: %s\n", error.what());
    return 1;
}
