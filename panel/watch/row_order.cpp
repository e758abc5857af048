// SPDX-License-Identifier: MIT
#include "panel/watch/row_order.h"

#include <algorithm>
#include <numeric>

namespace plc
{

namespace
{

std::vector<int> rowsUpTo(std::size_t count)
{
    std::vector<int> rows(count);
    std::iota(rows.begin(), rows.end(), 0);
    return rows;
}

/// \return digits from \a at on, without zeros before them; \a at is then behind them
QString takeNumber(const QString& text, int* at)
{
    const int begin = *at;
    while (*at < text.size() && text.at(*at).isDigit())
        ++*at;
    int first = begin;
    while (first + 1 < *at && text.at(first) == QLatin1Char('0'))
        ++first;
    return text.mid(first, *at - first);
}

int compareNumbers(const QString& a, const QString& b)
{
    return a.size() != b.size() ? a.size() - b.size() : a.compare(b);
}

int compareNames(const QString& a, const QString& b)
{
    int inA = 0;
    int inB = 0;
    while (inA < a.size() && inB < b.size()) {
        int difference = 0;
        if (a.at(inA).isDigit() && b.at(inB).isDigit()) {
            const QString number = takeNumber(a, &inA);
            difference = compareNumbers(number, takeNumber(b, &inB));
        } else {
            difference = a.at(inA++).unicode() - b.at(inB++).unicode();
        }
        if (difference != 0)
            return difference;
    }
    return (a.size() - inA) - (b.size() - inB);
}

} // namespace

RowOrder nextOrder(RowOrder order)
{
    return order == RowOrder::Change ? RowOrder::List : static_cast<RowOrder>(static_cast<int>(order) + 1);
}

QString orderText(RowOrder order)
{
    switch (order) {
    case RowOrder::List:
        return QStringLiteral("list order");
    case RowOrder::Name:
        return QStringLiteral("by name");
    case RowOrder::Trouble:
        return QStringLiteral("trouble first");
    case RowOrder::Change:
        return QStringLiteral("last change first");
    }
    return QString();
}

bool isJustChanged(qint64 changedAtMs, qint64 nowMs)
{
    return changedAtMs >= 0 && nowMs - changedAtMs < justChangedMs;
}

bool isNameBefore(const QString& a, const QString& b)
{
    return compareNames(a.toCaseFolded(), b.toCaseFolded()) < 0;
}

std::vector<int> rowsByName(const QStringList& names)
{
    QStringList folded;
    folded.reserve(names.size());
    for (const QString& name : names)
        folded << name.toCaseFolded();
    std::vector<int> rows = rowsUpTo(static_cast<std::size_t>(names.size()));
    std::stable_sort(rows.begin(), rows.end(),
                     [&folded](int a, int b) { return compareNames(folded.at(a), folded.at(b)) < 0; });
    return rows;
}

std::vector<int> rowsByState(RowOrder order, const std::vector<SeenState>& states, qint64 nowMs)
{
    std::vector<int> rows = rowsUpTo(states.size());
    const auto stateOf = [&states](int row) -> const SeenState& {
        return states[static_cast<std::size_t>(row)];
    };
    const auto changeOf = [&stateOf, nowMs](int row) {
        const qint64 changed = stateOf(row).changedAtMs;
        return isJustChanged(changed, nowMs) ? nowMs : changed;
    };
    if (order == RowOrder::Trouble)
        std::stable_sort(rows.begin(), rows.end(),
                         [&](int a, int b) { return stateOf(a).trouble < stateOf(b).trouble; });
    if (order == RowOrder::Change)
        std::stable_sort(rows.begin(), rows.end(), [&](int a, int b) { return changeOf(a) > changeOf(b); });
    return rows;
}

} // namespace plc
