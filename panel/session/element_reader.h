// SPDX-License-Identifier: MIT
/// \file
/// \brief Reading elements one request at a time, to learn what the controller says to each.
#ifndef PANEL_SESSION_ELEMENT_READER_H
#define PANEL_SESSION_ELEMENT_READER_H

#include "panel/session/read_answer.h"
#include "panel/session/session.h"
#include "panel/terminal/progress_line.h"

namespace plc
{

/// Reads through the driver, and never writes. Signals are to be blocked before (WatchSignals::block()).
class ElementReader
{
public:
    /// \param progress lives longer
    ElementReader(const Settings& settings, const Listeners& listeners, ProgressLine* progress);

    /// \return true when a signal came that ends a program: nothing more is read
    bool isEnded() const { return m_session.isEnded(); }

    bool neverConnected() const { return m_session.neverConnected(); }

    /// Tries again where no usable answer came: a refusal is one.
    /// \param elements that one request reads
    ReadAnswer read(const Variable& elements);

    /// What the progress line says meanwhile.
    void tell(const QString& text) { m_text = text; }

private:
    ReadAnswer tryToRead(const Variable& elements);

    const int m_retries;
    ProgressLine* const m_progress;
    QString m_text;
    Session m_session;
};

} // namespace plc

#endif
