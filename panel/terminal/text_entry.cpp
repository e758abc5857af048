// SPDX-License-Identifier: MIT
#include "panel/terminal/text_entry.h"

namespace plc
{

namespace
{

const int longestEntry = 500;

/// One that lies outside the first plane takes two.
void chopCharacter(QString* text)
{
    const bool isPair = text->size() > 1 && text->at(text->size() - 1).isLowSurrogate();
    text->chop(isPair ? 2 : 1);
}

} // namespace

TextEntry::Result TextEntry::press(const Key& key)
{
    switch (key.kind) {
    case Key::Enter:
        return Done;
    case Key::Escape:
        return Cancelled;
    case Key::Backspace:
        if (m_text.isEmpty())
            return Cancelled;
        chopCharacter(&m_text);
        return Going;
    case Key::EraseLine:
        m_text.clear();
        return Going;
    case Key::Character:
        if (m_text.size() < longestEntry)
            m_text += key.text;
        return Going;
    default:
        return Going;
    }
}

} // namespace plc
