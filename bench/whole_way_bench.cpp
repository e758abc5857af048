// How fast a list is refreshed over loopback, by the panel and by others in the same run.
//
//     whole_way_bench [--rounds N] [LIST]    9 rounds; LIST is examples/thousand.csv
//
// A round gives each of them its turn. What is compared is compared within the round; the line shows the
// median over all rounds. Fields are separated by tabs.

#include "bench/loopback_controller.h"
#include "bench/panel_refresh.h"
#include "bench/peers.h"
#include "panel/variable_list.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <stdexcept>

namespace
{

const int turnMs = 150;

using Rounds = std::vector<double>;

double median(Rounds values)
{
    std::sort(values.begin(), values.end());
    const std::size_t half = values.size() / 2;
    return values.size() % 2 == 1 ? values[half] : (values[half - 1] + values[half]) / 2;
}

bench::Variables variablesOf(const QString& path)
{
    const panel::VariableList list = panel::readVariableList(path);
    if (!list.errors.isEmpty())
        throw std::runtime_error(list.errors.first().toStdString());
    bench::Variables variables;
    for (const panel::ListedVariable& listed : list.variables)
        variables.push_back(listed.elements);
    return variables;
}

/// \return how often \a refresh goes in a second
double refreshesPerSecond(const std::function<void()>& refresh)
{
    refresh();
    int refreshes = 0;
    QElapsedTimer clock;
    clock.start();
    for (; clock.elapsed() < turnMs; ++refreshes)
        refresh();
    return refreshes * 1e9 / static_cast<double>(clock.nsecsElapsed());
}

struct Contender {
    const char* name;
    std::function<double()> turn; // its refreshes a second
    Rounds rounds = {};
};

void printShare(const panel::PassCost& cost)
{
    const auto percent = [](long unused, long read) {
        return read == 0 ? 0.0 : 100.0 * static_cast<double>(unused) / static_cast<double>(read);
    };
    std::printf("requests per refresh\t%d\n", cost.requests);
    std::printf("registers read\t%ld\n", cost.registers);
    std::printf("percent of registers nobody asked for\t%.1f\n",
                percent(cost.registersUnused, cost.registers));
    std::printf("bits read\t%ld\n", cost.bits);
    std::printf("percent of bits nobody asked for\t%.1f\n", percent(cost.bitsUnused, cost.bits));
}

/// How much faster the panel, which is the first, is than \a other; the median over the rounds.
double ratio(const Contender& panel, const Contender& other)
{
    Rounds ratios;
    for (std::size_t round = 0; round < panel.rounds.size(); ++round)
        ratios.push_back(panel.rounds[round] / other.rounds[round]);
    return median(ratios);
}

void run(const QString& path, int rounds)
{
    const bench::Variables variables = variablesOf(path);
    const bench::LoopbackController controller;
    const int port = controller.port();
    const bench::Pass pass = bench::recordPass(port, variables);
    const int requests = static_cast<int>(pass.frames.size());

    bench::BareSocket bare(port, pass.frames);
    bench::LibModbus single(port, bench::blocksOf(variables));
    bench::LibModbus blocks(port, bench::blocksOf(pass.frames));
    bench::SerialBus serialBus(port, bench::blocksOf(pass.frames), 1);
    bench::SerialBus pipelined(port, bench::blocksOf(pass.frames), requests);
    Rounds wholeCost;
    Rounds driverCost;
    Rounds linkCost;
    Rounds bareCost;
    std::vector<Contender> contenders = {
        {"panel",
         [&] {
             const bench::LoopCost cost = bench::runLoop(port, variables, requests, turnMs);
             wholeCost.push_back(cost.microsecondsPerRequest);
             return cost.refreshesPerSecond;
         }},
        {"bare socket", [&] { return refreshesPerSecond([&] { bare.refresh(); }); }},
        {"libmodbus, each variable by itself", [&] { return refreshesPerSecond([&] { single.refresh(); }); }},
        {"libmodbus, the same blocks", [&] { return refreshesPerSecond([&] { blocks.refresh(); }); }},
        {"Qt SerialBus, the same blocks", [&] { return refreshesPerSecond([&] { serialBus.refresh(); }); }},
        {"Qt SerialBus, all blocks at once",
         [&] { return refreshesPerSecond([&] { pipelined.refresh(); }); }},
    };
    for (int round = 0; round < rounds; ++round) {
        for (Contender& contender : contenders)
            contender.rounds.push_back(contender.turn());
        driverCost.push_back(bench::driverMicroseconds(variables, pass, turnMs / 3));
        linkCost.push_back(bench::linkMicroseconds(port, pass, turnMs));
        bareCost.push_back(bench::microsecondsPerRequest(requests, turnMs, [&] { bare.refresh(); }));
    }

    for (const Contender& contender : contenders)
        std::printf("refreshes per second\t%s\t%.1f\t%.2f\n", contender.name, median(contender.rounds),
                    ratio(contenders.front(), contender));
    printShare(pass.cost);
    std::printf("processor us per request\twhole loop\t%.2f\n", median(wholeCost));
    std::printf("processor us per request\tdriver\t%.2f\n", median(driverCost));
    std::printf("processor us per request\tlink\t%.2f\n", median(linkCost));
    std::printf("processor us per request\tbare socket\t%.2f\n", median(bareCost));
}

} // namespace

int main(int argc, char* argv[])
try {
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOption({QStringLiteral("rounds"), QStringLiteral("How many rounds."), QStringLiteral("N"),
                      QStringLiteral("9")});
    parser.addPositionalArgument(QStringLiteral("list"), QStringLiteral("List of variables."));
    parser.process(application);
    const int rounds = parser.value(QStringLiteral("rounds")).toInt();
    if (rounds < 1)
        throw std::runtime_error("--rounds: give a number from 1 on");
    const QStringList lists = parser.positionalArguments();
    run(lists.isEmpty() ? QStringLiteral(PLC_EXAMPLES_DIR "/thousand.csv") : lists.first(), rounds);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "whole_way_bench: %s\n", error.what());
    return 1;
}
