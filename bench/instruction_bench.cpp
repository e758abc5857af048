// SPDX-License-Identifier: MIT
// Does the work of so many refreshes of a list, for somebody who counts the instructions of this process:
//
//     instruction_bench PART REFRESHES PORT
//
// PART is one of driver, link and panel, which is the whole loop. PORT is where a simulated controller listens on
// this machine: it is another process, for what it does is not to be counted. Prints how many requests a refresh has.
//
// Making ready costs the same however many refreshes follow, so two runs of different length tell what one costs.

#include "bench/panel_refresh.h"

#include <cstdio>
#include <stdexcept>
#include <string>

namespace
{

int numberOf(const char* text)
{
    const int number = std::stoi(text);
    if (number < 1)
        throw std::runtime_error("give numbers from 1 on");
    return number;
}

void run(const std::string& part, int refreshes, int port)
{
    const bench::Variables variables = bench::variablesOf(QStringLiteral(PLC_EXAMPLES_DIR "/thousand.csv"));
    const bench::Pass pass = bench::recordPass(port, variables);
    const int requests = static_cast<int>(pass.frames.size());
    const auto repeat = [refreshes](const bench::Refresh& refresh) {
        for (int n = 0; n < refreshes; ++n)
            refresh();
    };
    if (part == "driver")
        bench::withDriver(variables, pass, repeat);
    else if (part == "link")
        bench::withLink(port, pass, repeat);
    else if (part == "panel")
        bench::runLoopPasses(port, variables, requests, refreshes);
    else
        throw std::runtime_error("no such part: " + part);
    std::printf("%d\n", requests);
}

} // namespace

int main(int argc, char* argv[])
try {
    if (argc != 4)
        throw std::runtime_error("usage: instruction_bench driver|link|panel REFRESHES PORT");
    run(argv[1], numberOf(argv[2]), numberOf(argv[3]));
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "instruction_bench: %s\n", error.what());
    return 1;
}
