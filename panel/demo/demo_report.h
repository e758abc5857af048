// SPDX-License-Identifier: MIT
/// \file
/// \brief The demo's table: what was done, what came of it, and whether it is right.
#ifndef PANEL_DEMO_DEMO_REPORT_H
#define PANEL_DEMO_DEMO_REPORT_H

#include "runtime/cycle/exchange_record.h"
#include "runtime/cycle/runtime.h"

#include <QString>

#include <vector>

namespace plc
{

/// One numbered row.
struct DemoStep {
    QString what;       ///< "write 9:100=1,2"
    QString result;     ///< what the panel says: "confirmed", "failed", values read
    QString controller; ///< what the controller's side says
    QString note;       ///< on a line of its own, e.g. why something failed; may be empty
    std::vector<ExchangeRecord> exchanges;
    int right = 0;     ///< things compared that were as they must be
    QStringList wrong; ///< for each that was not: what it is and what it must be
};

class DemoReport
{
public:
    explicit DemoReport(bool colours) : m_colours(colours) {}

    /// Prints a heading and the table's head.
    void chapter(const QString& title);

    /// Prints a sentence between two rows.
    void note(const QString& sentence);

    /// Prints the row, the frames of its exchanges in hex, and what was wrong.
    void add(const DemoStep& step);

    int wrong() const { return m_wrong; }

    /// \return the last line: how much was done and compared, and what came out
    QString summary(long requests, qint64 milliseconds) const;

private:
    QString verdict(const DemoStep& step) const;
    QString coloured(const QString& text, bool good) const;

    const bool m_colours;
    int m_steps = 0;
    int m_right = 0;
    int m_wrong = 0;
};

/// \return the frames and replies of \a exchanges in hex, a line each with the meaning; those that were tried
///         again with the same outcome only once, with their number
QString framesText(const std::vector<ExchangeRecord>& exchanges);

} // namespace plc

#endif
