// SPDX-License-Identifier: MIT
#include "panel/terminal/display_width.h"

#include <QVector>

#include <algorithm>

#include <locale.h>
#include <wchar.h>

namespace plc
{

namespace
{

/// The locale of the environment may know ASCII alone; what is printed is UTF-8 all the same.
class Utf8Characters
{
public:
    Utf8Characters() : m_before(uselocale(utf8())) {}
    ~Utf8Characters() { uselocale(m_before); }
    Utf8Characters(const Utf8Characters&) = delete;
    Utf8Characters& operator=(const Utf8Characters&) = delete;

private:
    static locale_t utf8()
    {
        static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
        return locale; // null where the system lacks it: then uselocale() changes nothing
    }

    const locale_t m_before;
};

int columnsOfCharacter(uint character)
{
    return std::max(wcwidth(static_cast<wchar_t>(character)), 0);
}

bool isAscii(const QString& text)
{
    return std::all_of(text.begin(), text.end(), [](QChar character) { return character.unicode() < 0x80; });
}

} // namespace

int columnsOf(const QString& text)
{
    if (isAscii(text)) // which most texts are
        return text.size();
    const Utf8Characters characters;
    int columns = 0;
    for (const uint character : text.toUcs4())
        columns += columnsOfCharacter(character);
    return columns;
}

QString leftColumns(const QString& text, int columns)
{
    if (isAscii(text))
        return text.left(columns);
    const Utf8Characters characters;
    QString shown;
    for (const uint character : text.toUcs4()) {
        columns -= columnsOfCharacter(character);
        if (columns < 0)
            break;
        shown += QString::fromUcs4(&character, 1);
    }
    return shown;
}

QString padded(const QString& text, int columns)
{
    return text + QString(std::max(columns - columnsOf(text), 0), QLatin1Char(' '));
}

} // namespace plc
