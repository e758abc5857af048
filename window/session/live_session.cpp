// SPDX-License-Identifier: MIT
#include "window/session/live_session.h"

#include "capture/capture.h"
#include "runtime/cycle/runtime.h"
#include "window/session/mailbox.h"

#include <QDateTime>

#include <stdexcept>

namespace plc
{

LiveSession::LiveSession(Watched watched)
    : m_watched(std::move(watched)),
      m_mailbox(std::make_unique<Mailbox>(static_cast<int>(m_watched.variables.size()))),
      m_worker(std::make_unique<QObject>())
{
    m_worker->moveToThread(&m_thread);
    m_thread.setObjectName(QStringLiteral("session"));
    m_thread.start();
}

LiveSession::~LiveSession()
{
    onThread([this] { m_runtime.reset(); });
    m_thread.quit();
    m_thread.wait();
}

void LiveSession::end()
{
    onThread([this] {
        m_runtime.reset();
        Q_EMIT ended();
    });
}

template <class Work>
void LiveSession::onThread(Work work)
{
    QMetaObject::invokeMethod(m_worker.get(), std::move(work), Qt::QueuedConnection);
}

void LiveSession::start()
{
    onThread([this] {
        try {
            startRuntime();
        } catch (const std::exception& error) {
            m_runtime.reset();
            Q_EMIT failed(QString::fromStdString(error.what()));
        }
    });
}

void LiveSession::startRuntime()
{
    m_runtime = std::make_unique<Runtime>(m_watched.settings);
    for (const ListedVariable& variable : m_watched.variables)
        m_runtime->addCyclic(variable.elements);
    Mailbox* const mailbox = m_mailbox.get();
    m_runtime->setValueObserver(
        [mailbox](int index, const CyclicValue& value) { mailbox->putValue(index, value); });
    m_runtime->setObserver([mailbox](const ExchangeRecord& record) { mailbox->putExchange(record); });
    m_runtime->setTap(captureTo(m_watched.captureTo, m_watched.settings,
                                [this](const QString& words) { Q_EMIT failed(words); }));
    m_runtime->start();
}

qint64 LiveSession::nowMs() const
{
    return QDateTime::currentMSecsSinceEpoch();
}

Snapshot LiveSession::take()
{
    return m_mailbox->take();
}

/// Where the runtime is busy the next look waits for the one before, so that none pile up.
void LiveSession::look(const std::vector<int>& indexes)
{
    if (m_isLooking.exchange(true))
        return;
    onThread([this, indexes] {
        if (m_runtime)
            report(indexes);
        m_isLooking = false;
    });
}

void LiveSession::report(const std::vector<int>& indexes)
{
    for (const int index : indexes)
        m_mailbox->putValue(index, m_runtime->value(index));
    m_mailbox->putReport({m_runtime->linkState(), m_runtime->stations(), m_runtime->statistics()});
}

void LiveSession::setRecorded(int index, bool recorded)
{
    m_mailbox->setRecorded(index, recorded);
}

quint64 LiveSession::write(int index, const std::vector<quint32>& values)
{
    const quint64 number = ++m_writes;
    onThread([this, index, values, number] {
        Mailbox* const mailbox = m_mailbox.get();
        const auto ended = [mailbox, index, number](const WriteOutcome& outcome) {
            mailbox->putWrite({index, number, outcome});
        };
        if (m_runtime)
            m_runtime->write(m_watched.variables[static_cast<std::size_t>(index)].elements, values, ended);
        else
            ended({false, false, Failure(FailureKind::NotRunning), 0, 0});
    });
    return number;
}

void LiveSession::setStation(int station, bool on)
{
    onThread([this, station, on] {
        if (m_runtime)
            m_runtime->setStation(station, on);
    });
}

} // namespace plc
