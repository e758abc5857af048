// SPDX-License-Identifier: MIT
#include "panel/watch/table_help.h"

#include "panel/terminal/wrapped_text.h"

#include <algorithm>

namespace plc
{

namespace
{

struct KeyRow {
    const char* keys;
    const char* hint; ///< null: not in the line at the bottom
    const char* help;
};

// In the order of the help. What comes first in the line at the bottom stays there longest.
const KeyRow keyRows[] = {
    {"up, down", nullptr,
     "select a row (also k and j, or the mouse); PgUp, PgDn, Home, End, the wheel scroll"},
    {"Enter", nullptr, "all about the selected variable, long values and failures in full"},
    {"/", "/ find", "finds names and addresses; n finds the next, N the one before"},
    {"s", "s sort", "sorts: list order, by name, trouble first, last change first"},
    {"m", "m min/max", "shows minimum and maximum since the start; r begins them anew"},
    {"w", "w write", "writes the selected variable; you are asked before anything is sent"},
    {"o3, i3", nullptr, "and Enter: switches station 3 off, on"},
    {"Ctrl-L", nullptr, "draws all anew"},
    {"q", nullptr, "ends, as Ctrl-C does; Ctrl-Z stops, and the shell's fg goes on"},
    {">", nullptr, "marks the selected row"},
    {"*", nullptr, "marks a value that changed within the last two seconds"},
    {"!", nullptr, "marks a value outside the limits of the list"},
    {"(5)", nullptr, "a value in parentheses is not as the controller answered just now; its state says why"},
};

const int keysWidth = 10;

} // namespace

QStringList tableHelp(int columns)
{
    QStringList lines;
    for (const KeyRow& row : keyRows) {
        const QStringList words = QString::fromLatin1(row.help).split(QLatin1Char(' '));
        QString label = QLatin1String(row.keys);
        for (const QString& line : wrapped(words, std::max(columns - keysWidth, 1))) {
            lines << label.leftJustified(keysWidth) + line;
            label.clear();
        }
    }
    return lines;
}

QString tableHint(int columns, bool hasStations)
{
    QStringList hints = {QStringLiteral("q ends"), QStringLiteral("? help")};
    for (const KeyRow& row : keyRows) {
        if (row.hint != nullptr)
            hints << QLatin1String(row.hint);
    }
    if (hasStations)
        hints << QStringLiteral("o3 i3 station 3 off, on");
    const QString between = QStringLiteral("   ");
    while (hints.size() > 1 && hints.join(between).size() > columns)
        hints.removeLast();
    return hints.join(between);
}

} // namespace plc
