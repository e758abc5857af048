// SPDX-License-Identifier: MIT
#include "panel/commands/named_variables.h"

#include <QRegularExpression>

#include <algorithm>

namespace plc
{

namespace
{

QRegularExpression expressionOf(const QString& pattern)
{
    QString expression = QRegularExpression::escape(pattern);
    expression.replace(QLatin1String("\\*"), QLatin1String(".*"));
    expression.replace(QLatin1String("\\?"), QLatin1String("."));
    return QRegularExpression(QRegularExpression::anchoredPattern(expression));
}

std::vector<ListedVariable>::const_iterator find(const std::vector<ListedVariable>& list, const QString& name)
{
    return std::find_if(list.begin(), list.end(),
                        [&name](const ListedVariable& variable) { return variable.name == name; });
}

} // namespace

bool looksLikeAddress(const QString& text)
{
    static const QRegularExpression address(QStringLiteral("^[0-9]+:[0-9]"));
    return address.match(text).hasMatch();
}

bool isPattern(const QString& text)
{
    return text.contains(QLatin1Char('*')) || text.contains(QLatin1Char('?'));
}

bool fitsPattern(const QString& name, const QString& pattern)
{
    return isPattern(pattern) && expressionOf(pattern).match(name).hasMatch();
}

std::vector<ListedVariable> variablesNamed(const std::vector<ListedVariable>& list, const QString& text)
{
    const auto exact = find(list, text);
    if (exact != list.end())
        return {*exact};
    std::vector<ListedVariable> fitting;
    if (!isPattern(text))
        return fitting;
    const QRegularExpression expression = expressionOf(text);
    std::copy_if(
        list.begin(), list.end(), std::back_inserter(fitting),
        [&expression](const ListedVariable& variable) { return expression.match(variable.name).hasMatch(); });
    return fitting;
}

std::optional<NamedValue> namedValue(const std::vector<ListedVariable>& list, const QString& text)
{
    for (int sign = text.indexOf(QLatin1Char('=')); sign >= 0;
         sign = text.indexOf(QLatin1Char('='), sign + 1)) {
        const auto found = find(list, text.left(sign).trimmed()); // a name may have a = of its own
        if (found != list.end())
            return NamedValue{*found, text.mid(sign + 1)};
    }
    return std::nullopt;
}

} // namespace plc
