// SPDX-License-Identifier: MIT
#include "panel/session/element_reader.h"

namespace plc
{

namespace
{

const int betweenLooksMs = 10; // between two looks for an answer or a signal

Settings withoutRetries(Settings settings)
{
    settings.retryLimit = 0; // the driver would try refused requests again as well
    settings.stationPauseMs = 0;
    return settings;
}

} // namespace

ElementReader::ElementReader(const Settings& settings, const Listeners& listeners, ProgressLine* progress)
    : m_retries(settings.retryLimit), m_progress(progress), m_session(withoutRetries(settings), listeners)
{
    m_session.runtime().start();
}

ReadAnswer ElementReader::read(const Variable& elements)
{
    ReadAnswer answer = tryToRead(elements);
    for (int retry = 0; retry < m_retries && answer.mayComeYet; ++retry)
        answer = tryToRead(elements);
    return answer;
}

ReadAnswer ElementReader::tryToRead(const Variable& elements)
{
    const Pending<ReadOutcome> pending = m_session.runtime().read(elements);
    bool isThere = false;
    do {
        isThere = pending.wait(betweenLooksMs);
        m_progress->show(m_text);
        m_session.heedSignals();
        if (m_session.isEnded())
            return {ReadAnswer::Interrupted, QStringLiteral("it was ended before")};
    } while (!isThere);
    m_session.settle();
    return answerOf(pending.get());
}

} // namespace plc
