// SPDX-License-Identifier: MIT
#include "panel/check/check_report.h"

#include "runtime/model/counted.h"
#include "runtime/model/value_text.h"

#include <QJsonArray>

#include <algorithm>

namespace plc
{

namespace
{

const int markWidth = 11;
const std::size_t mostNames = 4; // of a block in the text
const int mostUnchecked = 3;     // blocks, because a controller that is off leaves all of them

struct FindingWords {
    const char* mark;   // in the text
    const char* member; // in JSON
    bool isError;
};

FindingWords wordsOf(Finding::Kind kind)
{
    switch (kind) {
    case Finding::VariableRefused:
        return {"REFUSED", "refused", true};
    case Finding::GapRefused:
        return {"GAP", "gap", true};
    case Finding::TooLong:
        return {"TOO LONG", "too long", true};
    case Finding::NotChecked:
        return {"UNCHECKED", "unchecked", false};
    }
    return {"", "", false};
}

QString marked(const char* mark, bool isError, bool colours)
{
    const QString text = QLatin1String(mark);
    const QString spaces(markWidth - text.size(), QLatin1Char(' '));
    return colours ? QStringLiteral("\x1b[%1m%2\x1b[0m").arg(isError ? 31 : 33).arg(text) + spaces
                   : text + spaces;
}

/// Stations are told where there are several.
QString elementsText(const CheckReport& report, Variable elements)
{
    if (!report.multiStation)
        elements.station = -1;
    return variableText(elements);
}

QString firstElementText(const CheckReport& report, Variable elements)
{
    elements.count = 1;
    return elementsText(report, elements);
}

QStringList namesOf(const CheckReport& report, const std::vector<std::size_t>& variables, std::size_t most)
{
    QStringList names;
    for (std::size_t place = 0; place < std::min(variables.size(), most); ++place)
        names << report.nameOf(variables[place]);
    return names;
}

QString namesText(const CheckReport& report, const std::vector<std::size_t>& variables)
{
    QString text = namesOf(report, variables, mostNames).join(QStringLiteral(", "));
    if (variables.size() > mostNames)
        text += QStringLiteral(" and %1 more").arg(variables.size() - mostNames);
    return text;
}

QString refusedText(const CheckReport& report, const Finding& finding)
{
    QString text = QStringLiteral("%1: %2").arg(namesText(report, finding.variables), finding.words);
    if (finding.culprit.element > finding.elements.element)
        text += QStringLiteral(", from %1 on").arg(firstElementText(report, finding.culprit));
    return text;
}

QString gapText(const CheckReport& report, const Finding& finding)
{
    return QStringLiteral("block %1: %2. Every variable of it is given, but not all at once: the block spans "
                          "addresses that the controller does not have, among %3, between %4 and %5")
        .arg(elementsText(report, finding.elements), finding.words, elementsText(report, finding.culprit),
             report.nameOf(finding.before), report.nameOf(finding.behind));
}

QString tooLongText(const CheckReport& report, const Finding& finding)
{
    return QStringLiteral("block %1: %2. Every variable of it is given, but not all at once, though there is "
                          "nothing between them: %3 elements are too many for the controller, %4 are not")
        .arg(elementsText(report, finding.elements), finding.words)
        .arg(finding.elements.count)
        .arg(finding.given);
}

QString findingText(const CheckReport& report, const Finding& finding)
{
    switch (finding.kind) {
    case Finding::VariableRefused:
        return refusedText(report, finding);
    case Finding::GapRefused:
        return gapText(report, finding);
    case Finding::TooLong:
        return tooLongText(report, finding);
    case Finding::NotChecked:
        return QStringLiteral("block %1: %2: %3")
            .arg(elementsText(report, finding.elements), finding.words, namesText(report, finding.variables));
    }
    return QString();
}

bool isForBlockSize(const Finding& finding)
{
    return finding.kind == Finding::GapRefused || finding.kind == Finding::TooLong;
}

QString remedyText(const CheckReport& report)
{
    if (report.remedy)
        return QStringLiteral("smaller blocks: --max-block %1 reads these variables and leaves out what the "
                              "controller refuses (now %2)")
            .arg(*report.remedy)
            .arg(report.maxBlockCount);
    return QStringLiteral(
        "no --max-block keeps these variables apart, so near each other are they; watch them "
        "by themselves");
}

QString longBlockText(const CheckReport& report, const LongBlock& block)
{
    return QStringLiteral("block %1 reads %2 at once, %3 are allowed: %4")
        .arg(elementsText(report, block.elements))
        .arg(block.quantity)
        .arg(block.allowed)
        .arg(namesText(report, block.variables));
}

QString limitText(const CheckReport& report, bool colours)
{
    if (report.limit.isEmpty())
        return QString();
    QString text = marked("LIMIT", true, colours) +
                   QStringLiteral("--max-block %1: %2\n").arg(report.maxBlockCount).arg(report.limit);
    for (const LongBlock& block : report.longBlocks)
        text += QString(markWidth, QLatin1Char(' ')) + longBlockText(report, block) + QLatin1Char('\n');
    return text;
}

/// \return for each variable whether there is such a finding
std::vector<bool> variablesWith(const CheckReport& report, Finding::Kind kind)
{
    std::vector<bool> isFound(report.variables, false);
    for (const Finding& finding : report.findings) {
        for (const std::size_t variable : finding.variables)
            isFound[variable] = isFound[variable] || finding.kind == kind;
    }
    return isFound;
}

struct Counts {
    std::size_t all = 0;
    std::size_t refused = 0;
    std::size_t unchecked = 0; // and not refused
    std::size_t blocks = 0;    // refused for no variable
};

Counts countsOf(const CheckReport& report)
{
    const std::vector<bool> refused = variablesWith(report, Finding::VariableRefused);
    const std::vector<bool> unchecked = variablesWith(report, Finding::NotChecked);
    Counts counts;
    counts.all = report.variables;
    for (std::size_t variable = 0; variable < report.variables; ++variable) {
        counts.refused += refused[variable] ? 1 : 0;
        counts.unchecked += unchecked[variable] && !refused[variable] ? 1 : 0;
    }
    counts.blocks = static_cast<std::size_t>(
        std::count_if(report.findings.begin(), report.findings.end(), isForBlockSize));
    return counts;
}

QString summaryText(const CheckReport& report)
{
    const Counts counts = countsOf(report);
    QStringList results;
    results << QStringLiteral("%1 can be read").arg(counts.all - counts.refused - counts.unchecked);
    if (counts.refused > 0)
        results << QStringLiteral("%1 refused").arg(counts.refused);
    if (counts.unchecked > 0)
        results << QStringLiteral("%1 not checked").arg(counts.unchecked);
    if (counts.blocks > 0)
        results << counted(static_cast<qint64>(counts.blocks), "block refused for no variable of it",
                           "blocks refused for no variable of them");
    return QStringLiteral("%1 in %2, checked with %3: %4\n")
        .arg(counted(static_cast<qint64>(counts.all), "variable"),
             counted(static_cast<qint64>(report.blocks), "block"), counted(report.reads, "read"),
             results.join(QStringLiteral(", ")));
}

QJsonArray jsonOfNames(const CheckReport& report, const std::vector<std::size_t>& variables)
{
    return QJsonArray::fromStringList(namesOf(report, variables, variables.size()));
}

QJsonObject jsonOfFinding(const CheckReport& report, const Finding& finding)
{
    QJsonObject object{{QStringLiteral("finding"), QLatin1String(wordsOf(finding.kind).member)},
                       {QStringLiteral("elements"), elementsText(report, finding.elements)},
                       {QStringLiteral("words"), finding.words},
                       {QStringLiteral("variables"), jsonOfNames(report, finding.variables)}};
    if (finding.kind == Finding::VariableRefused)
        object.insert(QStringLiteral("from"), firstElementText(report, finding.culprit));
    if (finding.kind == Finding::GapRefused)
        object.insert(QStringLiteral("gap"), elementsText(report, finding.culprit));
    if (finding.kind == Finding::TooLong)
        object.insert(QStringLiteral("given"), finding.given);
    return object;
}

QJsonObject jsonOfLimit(const CheckReport& report)
{
    QJsonArray blocks;
    for (const LongBlock& block : report.longBlocks)
        blocks.append(QJsonObject{{QStringLiteral("elements"), elementsText(report, block.elements)},
                                  {QStringLiteral("quantity"), block.quantity},
                                  {QStringLiteral("allowed"), block.allowed},
                                  {QStringLiteral("variables"), jsonOfNames(report, block.variables)}});
    return {{QStringLiteral("finding"), QStringLiteral("limit")},
            {QStringLiteral("words"), report.limit},
            {QStringLiteral("maxBlock"), report.maxBlockCount},
            {QStringLiteral("blocks"), blocks}};
}

QJsonObject jsonOfSummary(const CheckReport& report)
{
    const Counts counts = countsOf(report);
    QJsonObject object{{QStringLiteral("variables"), static_cast<qint64>(counts.all)},
                       {QStringLiteral("refused"), static_cast<qint64>(counts.refused)},
                       {QStringLiteral("unchecked"), static_cast<qint64>(counts.unchecked)},
                       {QStringLiteral("blocks"), static_cast<qint64>(report.blocks)},
                       {QStringLiteral("blocksRefused"), static_cast<qint64>(counts.blocks)},
                       {QStringLiteral("reads"), static_cast<qint64>(report.reads)},
                       {QStringLiteral("maxBlock"), report.maxBlockCount}};
    if (report.remedy)
        object.insert(QStringLiteral("remedyMaxBlock"), *report.remedy);
    return {{QStringLiteral("summary"), object}};
}

} // namespace

QString checkText(const CheckReport& report, bool colours)
{
    QString text = limitText(report, colours);
    int unchecked = 0;
    for (const Finding& finding : report.findings) {
        if (finding.kind == Finding::NotChecked && ++unchecked > mostUnchecked)
            continue;
        const FindingWords words = wordsOf(finding.kind);
        text += marked(words.mark, words.isError, colours) + findingText(report, finding) + QLatin1Char('\n');
    }
    if (unchecked > mostUnchecked)
        text += marked("UNCHECKED", false, colours) +
                QStringLiteral("and %1 more\n").arg(counted(unchecked - mostUnchecked, "block"));
    if (needsRemedy(report))
        text += marked("REMEDY", false, colours) + remedyText(report) + QLatin1Char('\n');
    return report.limit.isEmpty() ? text + summaryText(report) : text;
}

QString checkJson(const CheckReport& report)
{
    QString text;
    if (!report.limit.isEmpty())
        text += jsonLine(jsonOfLimit(report)) + QLatin1Char('\n');
    for (const Finding& finding : report.findings)
        text += jsonLine(jsonOfFinding(report, finding)) + QLatin1Char('\n');
    return text + jsonLine(jsonOfSummary(report)) + QLatin1Char('\n');
}

std::size_t refusedVariables(const CheckReport& report)
{
    return countsOf(report).refused;
}

bool needsRemedy(const CheckReport& report)
{
    return std::any_of(report.findings.begin(), report.findings.end(), isForBlockSize);
}

bool isRefused(const CheckReport& report)
{
    return refusedVariables(report) > 0 || needsRemedy(report);
}

bool isIncomplete(const CheckReport& report)
{
    return countsOf(report).unchecked > 0;
}

} // namespace plc
