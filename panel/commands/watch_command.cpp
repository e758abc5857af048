// SPDX-License-Identifier: MIT
#include "panel/commands/watch_command.h"

#include "panel/commands/watch_reports.h"
#include "panel/commands/watch_screen.h"
#include "panel/session/listeners.h"
#include "panel/session/session.h"
#include "panel/session/waiting.h"
#include "panel/terminal/keyboard.h"
#include "panel/terminal/output.h"
#include "panel/terminal/watch_signals.h"
#include "panel/watch/watch_display.h"
#include "panel/watch/watch_order.h"
#include "panel/watch/watch_rows.h"

#include <QElapsedTimer>

#include <algorithm>
#include <stdexcept>

namespace plc
{

namespace
{

const int firstLookMs = 20; // between looks until every variable was tried once

// A display that is not redrawn waits so long for values, to begin with more than empty rows.
const int patienceMs = 2000;

// What was read once is not expected to be read again.
const int neverStaleMs = 3600000;

/// What is watched, while it is.
struct Watch {
    const Options& options;
    const WatchedVariables variables;
    Session session;

    explicit Watch(const Options& all, const Settings& settings)
        : options(all), variables(all.variables, all.listed),
          session(settings, listenersFor(all.trace, all.captureTo, all.settings))
    {
    }

    WatchReport report() { return reportOf(options, variables, session.runtime()); }
};

/// A first pass answers or gives up each variable; a controller that was never reached needs none.
bool triedAll(Watch* watch)
{
    if (watch->session.runtime().statistics().passes > 0)
        return true;
    if (!watch->session.neverConnected())
        return false;
    return !RowWalk().over(watch->report().rows,
                           [](int, const CyclicValue& value) { return !hasFailed(value.failure); });
}

bool wasRead(const CyclicValue& value)
{
    return value.ageMs >= 0 && !hasFailed(value.failure);
}

enum class FirstPass { Over, NotYet, Ended };

/// \return Ended when a signal asked for the end; NotYet after \a milliseconds, if not negative
FirstPass waitForFirstPass(Watch* watch, int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    ProgressLine progress;
    while (!triedAll(watch)) {
        if (milliseconds < 0)
            progress.show(progressText(QStringLiteral("first refresh"), watch->session.runtime()));
        if (milliseconds >= 0 && clock.elapsed() >= milliseconds)
            return FirstPass::NotYet;
        const WatchSignals::Kind kind = WatchSignals::wait(firstLookMs);
        if (kind == WatchSignals::End)
            return FirstPass::Ended;
        if (kind == WatchSignals::Suspended)
            WatchSignals::suspend();
    }
    return FirstPass::Over;
}

/// Whether all was read is told of the values that are shown.
ExitStatus showOnce(Watch* watch, Display* display)
{
    const bool over = waitForFirstPass(watch, -1) == FirstPass::Over;
    watch->session.settle();
    WatchReport report = watch->report();
    bool isAllRead = true;
    report.rows.values = [&isAllRead, shown = report.rows.values](int first,
                                                                  std::vector<CyclicValue>* values) {
        shown(first, values);
        isAllRead = isAllRead && std::all_of(values->begin(), values->end(), wasRead);
    };
    display->end(report);
    if (over && watch->session.neverConnected())
        complainOfNoConnection(watch->options.settings);
    return isAllRead ? AllGood : ControllerFailed;
}

/// A display that goes on until a signal or the user ends it.
class LiveWatch
{
public:
    LiveWatch(Watch* watch, Display* display) : m_watch(watch), m_display(display) {}

    void run()
    {
        if (waitForFirstPass(m_watch, patienceMs) == FirstPass::Ended)
            return;
        do
            m_display->show(m_watch->report());
        while (!outputFailed() && !readerIsGone() &&
               goOn(WatchSignals::wait(m_watch->options.intervalMs, m_keyboard.descriptor())));
    }

private:
    /// \return false for the end
    bool goOn(WatchSignals::Kind kind)
    {
        if (kind == WatchSignals::Suspended)
            WatchSignals::suspend();
        if (kind == WatchSignals::Input)
            return takeLines(m_keyboard.read());
        return kind != WatchSignals::End;
    }

    bool takeLines(const QByteArray& characters)
    {
        for (const char character : characters) {
            if (m_line.press(character) && !obey(parseWatchOrder(m_line.take())))
                return false;
        }
        return true;
    }

    bool obey(const WatchOrder& order)
    {
        const bool on = order.kind == WatchOrder::SwitchOn;
        if (order.kind == WatchOrder::Wrong)
            complain(order.error);
        if (on || order.kind == WatchOrder::SwitchOff)
            m_watch->session.runtime().setStation(order.station, on);
        return order.kind != WatchOrder::End;
    }

    Watch* m_watch;
    Display* m_display;
    Keyboard m_keyboard;
    TypedLine m_line;
};

ExitStatus showLive(Watch* watch, Display* display)
{
    LiveWatch(watch, display).run();
    display->end(watch->report());
    return AllGood;
}

/// \return \a all with the variables of its part alone
Options onlyPart(const Options& all)
{
    const std::vector<WatchRow> rows = emptyRows(all.variables, all.listed);
    std::vector<Variable> variables;
    variables.reserve(rows.size());
    for (const WatchRow& row : rows)
        variables.push_back(row.variable);
    Options options = all;
    options.variables.clear();
    options.listed.clear();
    for (const std::size_t index : variablesOfPart(all.part, variables, all.settings)) {
        if (rows[index].listed)
            options.listed.push_back(*rows[index].listed);
        else
            options.variables.push_back(rows[index].variable);
    }
    if (options.variables.empty() && options.listed.empty())
        throw std::runtime_error(
            "--part: this part is empty, because the list takes fewer block reads than there "
            "are parts; give fewer parts");
    return options;
}

ExitStatus watchAll(const Options& options)
{
    const DisplayWishes wishes = {options.format, options.once, options.trace};
    if (wantsScreen(wishes))
        return runWatchScreen(options);
    Settings settings = options.settings;
    if (options.once)
        settings.staleAfterMs = neverStaleMs;
    Watch watch(options, settings);
    addCyclic(options, &watch.session.runtime());
    watch.session.runtime().start();
    const std::unique_ptr<Display> display = displayFor(wishes);
    return options.once ? showOnce(&watch, display.get()) : showLive(&watch, display.get());
}

} // namespace

ExitStatus runWatch(const Options& options)
{
    WatchSignals::block();
    return options.part.parts == 1 ? watchAll(options) : watchAll(onlyPart(options));
}

} // namespace plc
