// SPDX-License-Identifier: MIT
/// \file
/// \brief Typing a value for a variable, and being asked before it is written.
#ifndef PANEL_WATCH_WRITE_ENTRY_H
#define PANEL_WATCH_WRITE_ENTRY_H

#include "panel/terminal/text_entry.h"
#include "panel/watch/watch_view.h"
#include "runtime/model/value_text.h"

#include <functional>

namespace plc
{

/// Says what is against a write that list and area allow; an empty text when nothing is.
using WriteCheck = std::function<QString(const Variable& variable, const std::vector<quint32>& values)>;

class WriteEntry
{
public:
    enum Result {
        Going,
        Cancelled,
        Agreed ///< values() are to be written
    };

    /// \return why nothing can be written to the variable, whatever is typed; empty when something can
    static QString refusal(const WatchRow& row);

    /// \param row with the value that it has now, which the question names
    WriteEntry(const WatchRow& row, ValueFormat format, const WriteCheck& check);

    Result press(const Key& key);

    /// \return a line about it: what the variable is, what is against what was typed, or the question
    QString headline() const;
    bool hasError() const { return !m_error.isEmpty(); }

    /// \return below it words before what is typed, and what is typed
    QString prompt() const;
    QString typed() const { return m_isAsking ? QString() : m_entry.text(); }

    const std::vector<quint32>& values() const { return m_values; }
    QString valueText() const; ///< values() as they are shown, with their unit

private:
    bool parse();

    WatchRow m_row;
    ValueFormat m_format;
    WriteCheck m_check;
    TextEntry m_entry;
    bool m_isAsking = false;
    QString m_error;
    std::vector<quint32> m_values;
};

} // namespace plc

#endif
