// SPDX-License-Identifier: MIT
#include "panel/commands/watch_command.h"

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

WatchView viewOf(const Options& options, const Runtime& runtime)
{
    WatchView view;
    view.controller = QStringLiteral("%1:%2").arg(options.settings.host).arg(options.settings.port);
    view.station = options.settings.station;
    view.link = runtime.linkState();
    if (options.settings.multiStation)
        view.stations = runtime.stations();
    view.rows = emptyRows(options.variables, options.listed);
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
                       [](const WatchRow& row) { return hasFailed(row.value.failure); });
}

bool wasRead(const WatchRow& row)
{
    return row.value.ageMs >= 0 && !hasFailed(row.value.failure);
}

enum class FirstPass { Over, NotYet, Ended };

/// \return Ended when a signal asked for the end; NotYet after \a milliseconds, if not negative
FirstPass waitForFirstPass(const Options& options, Session* session, int milliseconds)
{
    QElapsedTimer clock;
    clock.start();
    ProgressLine progress;
    while (!triedAll(options, session)) {
        if (milliseconds < 0)
            progress.show(progressText(QStringLiteral("first refresh"), session->runtime()));
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

/// A display that goes on until a signal or the user ends it.
class LiveWatch
{
public:
    LiveWatch(const Options& options, Session* session, Display* display)
        : m_options(options), m_session(session), m_display(display), m_keyboard(display->redraws())
    {
    }

    void run()
    {
        if (!m_display->redraws() && waitForFirstPass(m_options, m_session, patienceMs) == FirstPass::Ended)
            return;
        do {
            WatchReport report = reportOf(m_options, m_session->runtime());
            report.prompt = prompt();
            m_display->show(report);
        } while (!outputFailed() && !readerIsGone() &&
                 goOn(WatchSignals::wait(m_options.intervalMs, m_keyboard.descriptor())));
    }

private:
    /// \return false for the end
    bool goOn(WatchSignals::Kind kind)
    {
        switch (kind) {
        case WatchSignals::End:
            return false;
        case WatchSignals::Resized:
            m_display->resized();
            return true;
        case WatchSignals::Suspended:
            m_keyboard.release();
            WatchSignals::suspend();
            [[fallthrough]]; // before anything is drawn over what the shell wrote meanwhile
        case WatchSignals::Continued:
            m_keyboard.take();
            m_display->continued();
            return true;
        case WatchSignals::Input:
            return takeKeys(m_keyboard.read());
        case WatchSignals::None:
            return true;
        }
        return true;
    }

    bool takeKeys(const QByteArray& keys)
    {
        for (const char key : keys) {
            m_news.clear();
            if (m_line.press(key, m_keyboard.hasTerminal()) && !obey(parseWatchOrder(m_line.take())))
                return false;
        }
        return true;
    }

    bool obey(const WatchOrder& order)
    {
        const bool on = order.kind == WatchOrder::SwitchOn;
        if (order.kind == WatchOrder::Wrong)
            tell(order.error);
        if (on || order.kind == WatchOrder::SwitchOff) {
            m_session->runtime().setStation(order.station, on);
            m_news = QStringLiteral("station %1 is switched %2")
                         .arg(order.station)
                         .arg(on ? QStringLiteral("on") : QStringLiteral("off"));
        }
        return order.kind != WatchOrder::End;
    }

    void tell(const QString& error)
    {
        m_news = error;
        if (!m_display->redraws())
            complain(error);
    }

    QString prompt() const
    {
        if (!m_line.text().isEmpty())
            return QStringLiteral("> ") + m_line.text();
        if (!m_news.isEmpty())
            return m_news;
        if (!m_keyboard.hasTerminal())
            return QStringLiteral("Ctrl-C ends.");
        return m_options.settings.multiStation
                   ? QStringLiteral("o3 Enter: station 3 off, i3 Enter: on, q or Ctrl-C ends.")
                   : QStringLiteral("q or Ctrl-C ends.");
    }

    const Options& m_options;
    Session* m_session;
    Display* m_display;
    Keyboard m_keyboard;
    TypedLine m_line;
    QString m_news; // what the last line brought
};

ExitStatus showLive(const Options& options, Session* session, Display* display)
{
    LiveWatch(options, session, display).run();
    display->end(reportOf(options, session->runtime()));
    return AllGood;
}

/// \return \a all with the variables of its part alone
Options onlyPart(const Options& all)
{
    if (all.part.parts == 1)
        return all;
    std::vector<Variable> variables;
    const std::vector<WatchRow> rows = emptyRows(all.variables, all.listed);
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

} // namespace

ExitStatus runWatch(const Options& all)
{
    WatchSignals::block();
    const Options options = onlyPart(all);
    Settings settings = options.settings;
    if (options.once)
        settings.staleAfterMs = neverStaleMs;
    Session session(settings, listenersFor(options.trace, options.captureTo, options.settings));
    for (const WatchRow& row :
         emptyRows(options.variables, options.listed)) // the runtime counts them in the same order
        session.runtime().addCyclic(row.variable);
    session.runtime().start();
    const std::unique_ptr<Display> display = displayFor({options.format, options.once, options.trace});
    return options.once ? showOnce(options, &session, display.get())
                        : showLive(options, &session, display.get());
}

} // namespace plc
