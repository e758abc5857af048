// SPDX-License-Identifier: MIT
#include "panel/commands/where_command.h"

#include "panel/terminal/output.h"
#include "panel/terminal/terminal.h"
#include "panel/where/where_report.h"

namespace plc
{

namespace
{

void printNames(const std::vector<ListedVariable>& variables)
{
    QString text;
    for (const ListedVariable& variable : variables)
        text += variable.name + QLatin1Char('\n');
    print(text);
}

} // namespace

ExitStatus runWhere(const Options& options)
{
    if (options.names) {
        printNames(options.listed);
        return AllGood;
    }
    std::vector<LocatedVariable> variables;
    for (const Variable& variable : options.variables)
        variables.push_back({variable, std::nullopt});
    for (const ListedVariable& listed : options.listed)
        variables.push_back({listed.elements, listed});
    print(options.format == ValueFormat::Json
              ? whereJson(variables)
              : whereText(variables, isTerminal() ? terminalSize().columns : 0));
    return AllGood;
}

} // namespace plc
