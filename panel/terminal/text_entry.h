// SPDX-License-Identifier: MIT
/// \file
/// \brief A line that is typed key by key, behind words that say what for.
#ifndef PANEL_TERMINAL_TEXT_ENTRY_H
#define PANEL_TERMINAL_TEXT_ENTRY_H

#include "panel/terminal/key.h"

#include <QString>

namespace plc
{

class TextEntry
{
public:
    enum Result {
        Going,    ///< there is more to come
        Done,     ///< text() is whole
        Cancelled ///< by Escape, or by Backspace where nothing is left
    };

    TextEntry() = default;
    explicit TextEntry(const QString& prompt, const QString& text = QString())
        : m_prompt(prompt), m_text(text)
    {
    }

    Result press(const Key& key);

    const QString& prompt() const { return m_prompt; }
    const QString& text() const { return m_text; }

private:
    QString m_prompt;
    QString m_text;
};

} // namespace plc

#endif
