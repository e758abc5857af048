#include "panel/watch_command.h"

#include "panel/output.h"
#include "panel/session.h"
#include "panel/terminal.h"
#include "panel/trace.h"
#include "panel/watch_signals.h"

#include <QElapsedTimer>

#include <algorithm>
#include <memory>

namespace panel
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
    int index = 0;
    for (const Variable& variable : options.variables)
        view.rows.push_back({variable, runtime.value(index++)});
    return view;
}

QString joined(const QStringList& lines)
{
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

/// Shows views, each in its own way.
class Display
{
public:
    virtual ~Display() = default;
    virtual void show(const WatchView& view) = 0;
    virtual bool redraws() const { return false; }
    virtual void resized() {}   ///< the terminal has another size
    virtual void continued() {} ///< the program was suspended
};

/// A table in the terminal, redrawn in place.
class LiveTable : public Display
{
public:
    explicit LiveTable(ValueFormat format) { m_style.format = format; }

    void show(const WatchView& view) override
    {
        const TerminalSize size = terminalSize();
        m_style.columns = size.columns - 1;
        m_style.lines = size.lines - 3; // the last two lines of the table and that of the cursor
        m_style.colours = wantsColours();
        print(
            m_lines.draw(watchTable(view, m_style) + QStringList{QString(), QStringLiteral("Ctrl-C ends.")}));
    }
    bool redraws() const override { return true; }
    void resized() override { print(m_lines.clear()); }
    void continued() override { m_lines.startAnew(); }

private:
    TableStyle m_style;
    RedrawnLines m_lines;
};

/// A table each time that there is something new.
class PrintedTables : public Display
{
public:
    explicit PrintedTables(ValueFormat format)
    {
        m_style.format = format;
        m_style.colours = wantsColours();
    }

    void show(const WatchView& view) override
    {
        if (m_last && sameNews(*m_last, view))
            return;
        print((m_last ? QStringLiteral("\n") : QString()) + joined(watchTable(view, m_style)));
        m_last = std::make_unique<WatchView>(view);
    }

private:
    TableStyle m_style;
    std::unique_ptr<WatchView> m_last;
};

/// A line of JSON for each variable that changed.
class JsonLines : public Display
{
public:
    void show(const WatchView& view) override
    {
        m_last.resize(view.rows.size());
        for (std::size_t index = 0; index < view.rows.size(); ++index) {
            std::unique_ptr<CyclicValue>& last = m_last[index];
            const WatchRow& row = view.rows[index];
            if (last && sameNews(*last, row.value))
                continue;
            print(watchJson(row, view.station, QDateTime::currentDateTimeUtc()) + QLatin1Char('\n'));
            last = std::make_unique<CyclicValue>(row.value);
        }
    }

private:
    std::vector<std::unique_ptr<CyclicValue>> m_last;
};

std::unique_ptr<Display> displayFor(const Options& options)
{
    if (options.format == ValueFormat::Json)
        return std::make_unique<JsonLines>();
    // The lines of a trace on the same terminal would go through a table that is redrawn.
    const bool disturbed = options.trace && errorsGoToTerminal();
    if (isTerminal() && !options.once && !disturbed)
        return std::make_unique<LiveTable>(options.format);
    return std::make_unique<PrintedTables>(options.format);
}

/// A first pass answers or gives up each variable; a controller that was never reached needs none.
bool triedAll(Session* session, const WatchView& view)
{
    const bool failed = std::any_of(view.rows.begin(), view.rows.end(),
                                    [](const WatchRow& row) { return row.value.code != 0; });
    return session->runtime().statistics().passes > 0 || (failed && session->neverConnected());
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
    while (!triedAll(session, viewOf(options, session->runtime()))) {
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
    const WatchView view = viewOf(options, session->runtime());
    display->show(view);
    if (over && session->neverConnected())
        complainOfNoConnection(options.settings);
    return std::all_of(view.rows.begin(), view.rows.end(), wasRead) ? AllGood : ControllerFailed;
}

ExitStatus showLive(const Options& options, Session* session, Display* display)
{
    if (!display->redraws() && waitForFirstPass(options, session, patienceMs) == FirstPass::Ended)
        return AllGood;
    for (;;) {
        display->show(viewOf(options, session->runtime()));
        switch (WatchSignals::wait(options.intervalMs)) {
        case WatchSignals::End:
            return AllGood;
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

} // namespace

ExitStatus runWatch(const Options& options)
{
    WatchSignals::block();
    Settings settings = options.settings;
    if (options.once)
        settings.staleAfterMs = neverStaleMs;
    Session session(settings, options.trace ? traceToStandardError() : ExchangeObserver());
    for (const Variable& variable : options.variables)
        session.runtime().addCyclic(variable);
    session.runtime().start();
    const std::unique_ptr<Display> display = displayFor(options);
    return options.once ? showOnce(options, &session, display.get())
                        : showLive(options, &session, display.get());
}

QString watchJson(const WatchRow& row, int station, const QDateTime& time)
{
    QJsonObject object = jsonOfVariable(row.variable, station);
    object.insert(QStringLiteral("time"), time.toString(Qt::ISODateWithMs));
    object.insert(QStringLiteral("state"), stateWord(row.value));
    if (row.value.ageMs >= 0)
        addValues(&object, row.value.values);
    if (row.value.code != 0) {
        object.insert(QStringLiteral("error"), row.value.reason);
        object.insert(QStringLiteral("code"), row.value.code);
    }
    return jsonLine(object);
}

} // namespace panel
