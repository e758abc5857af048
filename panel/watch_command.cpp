#include "panel/watch_command.h"

#include "panel/session.h"
#include "panel/trace.h"
#include "panel/watch_display.h"
#include "panel/watch_signals.h"

#include <QElapsedTimer>

#include <algorithm>

namespace panel
{

namespace
{

const int firstLookMs = 20; // between looks until every variable was tried once

// A display that is not redrawn waits so long for values, to begin with more than empty rows.
const int patienceMs = 2000;

// What was read once is not expected to be read again.
const int neverStaleMs = 3600000;

/// What is typed stands above what is listed; the runtime counts them in the same order.
std::vector<WatchRow> emptyRows(const Options& options)
{
    std::vector<WatchRow> rows;
    for (const Variable& variable : options.variables)
        rows.push_back({variable, {}, std::nullopt});
    for (const ListedVariable& listed : options.listed)
        rows.push_back({listed.elements, {}, listed});
    return rows;
}

WatchView viewOf(const Options& options, const Runtime& runtime)
{
    WatchView view;
    view.controller = QStringLiteral("%1:%2").arg(options.settings.host).arg(options.settings.port);
    view.station = options.settings.station;
    view.link = runtime.linkState();
    view.rows = emptyRows(options);
    int index = 0;
    for (WatchRow& row : view.rows)
        row.value = runtime.value(index++);
    return view;
}

WatchReport reportOf(const Options& options, const Runtime& runtime)
{
    WatchReport report;
    report.view = viewOf(options, runtime);
    if (options.statistics)
        report.statistics = runtime.statistics();
    return report;
}

/// A first pass answers or gives up each variable; a controller that was never reached needs none.
bool triedAll(const Options& options, Session* session)
{
    if (session->runtime().statistics().passes > 0)
        return true;
    if (!session->neverConnected())
        return false;
    const WatchView view = viewOf(options, session->runtime());
    return std::any_of(view.rows.begin(), view.rows.end(),
                       [](const WatchRow& row) { return row.value.code != 0; });
}

bool wasRead(const WatchRow& row)
{
    return row.value.ageMs >= 0 && row.value.code == 0;
}

enum class FirstPass { Over, NotYet, Ended };

/// \return Ended when a signal asked for the end; NotYet after \a milliseconds, if not negative
FirstPass waitForFirstPass(const Options& options, Session* session, int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    while (!triedAll(options, session)) {
        if (milliseconds >= 0 && clock.elapsed() >= milliseconds)
            return FirstPass::NotYet;
        if (WatchSignals::wait(firstLookMs) == WatchSignals::End)
            return FirstPass::Ended;
    }
    return FirstPass::Over;
}

ExitStatus showOnce(const Options& options, Session* session, Display* display)
{
    const bool over = waitForFirstPass(options, session, -1) == FirstPass::Over;
    session->settle();
    const WatchReport report = reportOf(options, session->runtime());
    display->end(report);
    if (over && session->neverConnected())
        complainOfNoConnection(options.settings);
    return std::all_of(report.view.rows.begin(), report.view.rows.end(), wasRead) ? AllGood
                                                                                  : ControllerFailed;
}

void showUntilSignalled(const Options& options, Session* session, Display* display)
{
    if (!display->redraws() && waitForFirstPass(options, session, patienceMs) == FirstPass::Ended)
        return;
    for (;;) {
        display->show(reportOf(options, session->runtime()));
        switch (WatchSignals::wait(options.intervalMs)) {
        case WatchSignals::End:
            return;
        case WatchSignals::Resized:
            display->resized();
            break;
        case WatchSignals::Continued:
            display->continued();
            break;
        case WatchSignals::None:
            break;
        }
    }
}

ExitStatus showLive(const Options& options, Session* session, Display* display)
{
    showUntilSignalled(options, session, display);
    display->end(reportOf(options, session->runtime()));
    return AllGood;
}

} // namespace

ExitStatus runWatch(const Options& options)
{
    WatchSignals::block();
    Settings settings = options.settings;
    if (options.once)
        settings.staleAfterMs = neverStaleMs;
    Session session(settings, options.trace ? traceToStandardError() : ExchangeObserver());
    for (const WatchRow& row : emptyRows(options))
        session.runtime().addCyclic(row.variable);
    session.runtime().start();
    const std::unique_ptr<Display> display = displayFor(options);
    return options.once ? showOnce(options, &session, display.get())
                        : showLive(options, &session, display.get());
}

} // namespace panel
