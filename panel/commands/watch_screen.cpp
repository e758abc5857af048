// SPDX-License-Identifier: MIT
#include "panel/commands/watch_screen.h"

#include "panel/commands/watch_reports.h"
#include "panel/session/listeners.h"
#include "panel/session/session.h"
#include "panel/terminal/keyboard.h"
#include "panel/terminal/output.h"
#include "panel/terminal/screen.h"
#include "panel/terminal/terminal.h"
#include "panel/terminal/watch_signals.h"
#include "panel/watch/live_table.h"
#include "panel/watch/watch_order.h"
#include "runtime/modbus/request_pieces.h"

#include <QDateTime>

#include <algorithm>
#include <stdexcept>

namespace plc
{

namespace
{

// How a write ends is looked for so often.
const int writeLookMs = 50;

/// The terminal, the table and the runtime, until somebody ends it.
class WatchScreen
{
public:
    WatchScreen(const Options& options, Session* session, const WatchedVariables& variables, SeenValues* seen)
        : m_options(options), m_session(session), m_hasKeys(inputIsTerminal()),
          m_table(sourceOf(variables, seen))
    {
    }

    void run(Screen* screen)
    {
        m_screen = screen;
        do {
            endWrites();
            m_screen->show(m_table.page(reportOfLink(m_options, m_session->runtime()), m_screen->columns(),
                                        m_screen->lines(), QDateTime::currentMSecsSinceEpoch()));
        } while (!readerIsGone() && goOn(waitForAnything()));
    }

private:
    struct Write {
        int row;
        Pending<WriteOutcome> pending;
    };

    TableSource sourceOf(const WatchedVariables& variables, SeenValues* seen)
    {
        return {variables,
                *seen,
                [this](int row) { return m_session->runtime().value(row); },
                [this](const Variable& variable, const std::vector<quint32>& values) {
                    return writeRefusal(withStation(variable, m_options.settings), values,
                                        m_options.settings);
                },
                m_options.format,
                m_hasKeys};
    }

    WatchSignals::Kind waitForAnything()
    {
        const int ms = m_writes.empty() ? m_options.intervalMs : std::min(m_options.intervalMs, writeLookMs);
        return WatchSignals::wait(ms, m_keyboard.descriptor());
    }

    /// \return false for the end
    bool goOn(WatchSignals::Kind kind)
    {
        switch (kind) {
        case WatchSignals::End:
            return false;
        case WatchSignals::Resized:
            m_screen->resized();
            return true;
        case WatchSignals::Suspended:
            m_screen->leave();
            WatchSignals::suspend();
            m_screen->resized(); // the window may have changed meanwhile
            return true;
        case WatchSignals::Continued:
            m_screen->redraw();
            return true;
        case WatchSignals::Input:
            return m_hasKeys ? takeKeys() : takeLines(m_keyboard.read());
        case WatchSignals::None:
            return true;
        }
        return true;
    }

    bool takeKeys()
    {
        const std::vector<Key> keys = m_screen->keys();
        return std::all_of(keys.begin(), keys.end(),
                           [this](const Key& key) { return fulfil(m_table.press(key)); });
    }

    bool takeLines(const QByteArray& characters)
    {
        for (const char character : characters) {
            if (m_line.press(character) && !fulfil(m_table.order(m_line.take())))
                return false;
        }
        return true;
    }

    bool fulfil(const TableWish& wish)
    {
        if (wish.kind == TableWish::Redraw)
            m_screen->redraw();
        if (wish.kind == TableWish::SwitchStation)
            switchStation(wish.station, wish.on);
        if (wish.kind == TableWish::Write)
            m_writes.push_back({wish.row, m_session->runtime().write(wish.variable, wish.values)});
        return wish.kind != TableWish::End;
    }

    void switchStation(int station, bool on)
    {
        m_session->runtime().setStation(station, on);
        m_table.tell(QStringLiteral("station %1 is switched %2")
                         .arg(station)
                         .arg(on ? QStringLiteral("on") : QStringLiteral("off")));
    }

    void endWrites()
    {
        for (auto write = m_writes.begin(); write != m_writes.end();) {
            const bool isOver = write->pending.done(); // asked once: it may come at any time
            if (isOver)
                m_table.writeEnded(write->row, write->pending.get(), QDateTime::currentMSecsSinceEpoch());
            write = isOver ? m_writes.erase(write) : std::next(write);
        }
    }

    const Options& m_options;
    Session* m_session;
    Screen* m_screen = nullptr;
    const bool m_hasKeys;
    LiveTable m_table;
    Keyboard m_keyboard;
    TypedLine m_line;
    std::vector<Write> m_writes;
};

} // namespace

ExitStatus runWatchScreen(const Options& options)
{
    const WatchedVariables variables(options.variables, options.listed);
    SeenValues seen(variables);
    Session session(options.settings, listenersFor(options.trace, options.captureTo, options.settings));
    addCyclic(options, &session.runtime());
    session.runtime().setValueObserver([&seen](int row, const CyclicValue& value) { seen.note(row, value); });
    session.runtime().start();
    {
        const std::unique_ptr<Screen> screen = Screen::open();
        if (!screen)
            throw std::runtime_error(
                "the terminal cannot be drawn on; with TERM=dumb a plain table is printed");
        WatchScreen(options, &session, variables, &seen).run(screen.get());
    }
    printLastTable(reportOf(options, variables, session.runtime()), options.format);
    return AllGood;
}

} // namespace plc
