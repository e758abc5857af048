// SPDX-License-Identifier: MIT
#include "panel/commands/watch_reports.h"

#include "panel/watch/watch_rows.h"

namespace plc
{

void addCyclic(const Options& options, Runtime* runtime)
{
    for (const Variable& variable : options.variables)
        runtime->addCyclic(variable);
    for (const ListedVariable& listed : options.listed)
        runtime->addCyclic(listed.elements);
}

WatchReport reportOfLink(const Options& options, const Runtime& runtime)
{
    WatchReport report;
    report.view.controller = QStringLiteral("%1:%2").arg(options.settings.host).arg(options.settings.port);
    report.view.station = options.settings.station;
    report.view.link = runtime.linkState();
    if (options.settings.multiStation)
        report.view.stations = runtime.stations();
    if (options.statistics)
        report.statistics = runtime.statistics();
    return report;
}

WatchReport reportOf(const Options& options, const Runtime& runtime)
{
    WatchReport report;
    report.view.rows = emptyRows(options.variables, options.listed);
    lookAgain(options, runtime, &report);
    return report;
}

void lookAgain(const Options& options, const Runtime& runtime, WatchReport* report)
{
    std::vector<WatchRow> rows = std::move(report->view.rows);
    *report = reportOfLink(options, runtime);
    report->view.rows = std::move(rows);
    int index = 0;
    for (WatchRow& row : report->view.rows)
        row.value = runtime.value(index++);
}

} // namespace plc
