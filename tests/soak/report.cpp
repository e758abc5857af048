// SPDX-License-Identifier: MIT
#include "soak/report.h"

#include <algorithm>

namespace soak
{

namespace
{

using All = std::vector<const Figures*>;

long sum(const All& all, Figures::Count Figures::*part)
{
    long sum = 0;
    for (const Figures* figures : all)
        sum += figures->*part;
    return sum;
}

QString line(const char* name, const QString& text)
{
    return QStringLiteral("%1 %2\n").arg(QLatin1String(name), -17).arg(text);
}

QString line(const char* name, long count)
{
    return line(name, QString::number(count));
}

QString faultLines(const All& all)
{
    QString text;
    for (const simulator::FaultKind& kind : simulator::faultList()) {
        long count = 0;
        for (const Figures* figures : all)
            count += figures->faults[static_cast<std::size_t>(kind.fault)];
        text += QStringLiteral("  %1 %2\n").arg(QLatin1String(kind.name), -15).arg(count);
    }
    return text;
}

QString kib(long before, long after)
{
    return QStringLiteral("%1 -> %2 KiB").arg(before / 1024).arg(after / 1024);
}

/// The pair whose memory has grown most, and all together.
QString memoryLines(const All& all)
{
    if (sum(all, &Figures::memoryJudged) < static_cast<long>(all.size()))
        return line("memory", QStringLiteral("not judged: too few requests, or a build that hides it"));
    const auto worst = *std::max_element(all.begin(), all.end(), [](const Figures* a, const Figures* b) {
        return a->heapAtEnd - a->heapAfterTenth < b->heapAtEnd - b->heapAfterTenth;
    });
    return line("memory in use", kib(sum(all, &Figures::heapAfterTenth), sum(all, &Figures::heapAtEnd)) +
                                     QStringLiteral(" from the first tenth to the end; most in one pair: ") +
                                     kib(worst->heapAfterTenth, worst->heapAtEnd)) +
           line("memory resident",
                kib(sum(all, &Figures::residentAfterTenth), sum(all, &Figures::residentAtEnd)));
}

} // namespace

long requestsOf(const All& all)
{
    return sum(all, &Figures::requests);
}

long wrongOf(const All& all)
{
    return sum(all, &Figures::wrong);
}

QString progressLine(const Options& options, const All& all, double seconds)
{
    const auto done = static_cast<double>(requestsOf(all));
    const double rate = seconds > 0 ? done / seconds : 0;
    const double left = rate > 0 ? std::max(0.0, static_cast<double>(options.requests) - done) / rate : 0;
    return QStringLiteral("%1 of %2 requests, %3 a second, %4 s to go, %5 wrong\n")
        .arg(done, 0, 'f', 0)
        .arg(options.requests)
        .arg(rate, 0, 'f', 0)
        .arg(left, 0, 'f', 0)
        .arg(wrongOf(all));
}

QString finalReport(const Options& options, const All& all, double seconds)
{
    const long pairs = static_cast<long>(all.size());
    return line("seconds", QString::number(seconds, 'f', 1)) +
           line("pairs", QStringLiteral("%1, %2").arg(pairs).arg(
                             QLatin1String(options.remote ? "remote frames" : "Modbus TCP"))) +
           line("requests", requestsOf(all)) + line("replies", sum(all, &Figures::replies)) +
           line("faults", QStringLiteral("%1 percent of the replies").arg(options.percent)) +
           faultLines(all) + line("frames sent", sum(all, &Figures::frames)) +
           line("good replies", sum(all, &Figures::good)) +
           line("replies dropped", sum(all, &Figures::dropped)) +
           line("retries", sum(all, &Figures::retried)) + line("given up", sum(all, &Figures::givenUp)) +
           line("lists", sum(all, &Figures::panels)) +
           line("stations switched", sum(all, &Figures::switches)) +
           line("reconnects", sum(all, &Figures::connects) - sum(all, &Figures::panels)) +
           line("  out of step", sum(all, &Figures::untrusted)) +
           line("writes confirmed", sum(all, &Figures::writesConfirmed)) +
           line("writes failed", sum(all, &Figures::writesFailed)) +
           line("reads done", sum(all, &Figures::readsDone)) +
           line("reads failed", sum(all, &Figures::readsFailed)) +
           line("values looked at", QStringLiteral("%1, of these fresh %2")
                                        .arg(sum(all, &Figures::looks))
                                        .arg(sum(all, &Figures::freshLooks))) +
           memoryLines(all) + line("wrong", wrongOf(all));
}

} // namespace soak
