// SPDX-License-Identifier: MIT
/// \file
/// \brief How far something is that takes longer than a second.
#ifndef PANEL_TERMINAL_PROGRESS_LINE_H
#define PANEL_TERMINAL_PROGRESS_LINE_H

#include <QElapsedTimer>
#include <QString>

namespace plc
{

/// A line on standard error that is written over and over, where that is a terminal; elsewhere nothing. What
/// is done within a second has none. One thread.
class ProgressLine
{
public:
    ProgressLine();
    ~ProgressLine(); ///< clears
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;

    void show(const QString& text);

    /// To be called before anything else is printed; the next text is shown anew.
    void clear();

private:
    const bool m_wanted;
    QElapsedTimer m_sinceBegin;
    QElapsedTimer m_sinceShown;
    bool m_isShown = false;
    QString m_shown;
};

} // namespace plc

#endif
