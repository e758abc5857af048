// SPDX-License-Identifier: MIT
#include "gateway/writes/write_gate.h"

#include "gateway/journal/journal.h"
#include "runtime/modbus/failure_words.h"
#include "runtime/model/listed_value.h"
#include "runtime/model/printable.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace plc
{

namespace
{

const int mostUnderWay = 1000; // a broker's clients may ask faster than any controller answers
const int longestTopic = 200;  // of which the journal shows more than of a value: it tells who asked

/// \return why a write was not confirmed, and how much of it was all the same
QString reasonOf(const WriteOutcome& outcome)
{
    const QString words = failureWords(outcome);
    if (outcome.requestsConfirmed == 0)
        return words;
    return words + QStringLiteral("; %1 of its %2 requests were confirmed")
                       .arg(outcome.requestsConfirmed)
                       .arg(outcome.requests);
}

void judge(const WriteOutcome& outcome, WriteReport* report)
{
    report->reason = outcome.confirmed ? QString() : reasonOf(outcome);
    if (outcome.confirmed)
        report->end = WriteEnd::Confirmed;
    else if (outcome.failure.kind == FailureKind::Exception && outcome.requestsConfirmed == 0)
        report->end = WriteEnd::Refused;
    else if (isUnsent(outcome.failure.kind) && outcome.requestsConfirmed == 0)
        report->end = WriteEnd::NotSent;
    else
        report->end = WriteEnd::Unconfirmed;
    report->exception = outcome.failure.exception;
}

void log(const WriteReport& report)
{
    // Of a request that could not be read there is no value.
    const QString value = report.value.isEmpty() ? QString() : QStringLiteral(" = ") + excerpt(report.value);
    QString text =
        QStringLiteral("write %1%2: %3")
            .arg(excerpt(QString::fromUtf8(report.topic), longestTopic), value, writeEndWord(report.end));
    if (!report.reason.isEmpty())
        text += QStringLiteral(": ") + report.reason;
    tell(report.end == WriteEnd::Confirmed ? Weight::Notice : Weight::Warning, text);
}

} // namespace

struct WriteGate::Ended {
    std::mutex mutex;
    std::vector<WriteReport> reports;
    int underWay = 0;
    std::function<void()> wake;

    void add(const WriteReport& report)
    {
        log(report);
        {
            std::lock_guard<std::mutex> lock(mutex);
            reports.push_back(report);
        }
        wake();
    }
};

QString writeEndWord(WriteEnd end)
{
    switch (end) {
    case WriteEnd::Confirmed:
        return QStringLiteral("confirmed");
    case WriteEnd::Refused:
        return QStringLiteral("refused");
    case WriteEnd::NotSent:
        return QStringLiteral("not sent");
    default:
        return QStringLiteral("unconfirmed");
    }
}

WriteGate::WriteGate(const std::vector<ListedVariable>& variables, bool isAllowed, WriteElements write,
                     std::function<void()> wake)
    : m_variables(variables), m_isAllowed(isAllowed), m_write(std::move(write)),
      m_ended(std::make_shared<Ended>())
{
    m_ended->wake = std::move(wake);
}

bool WriteGate::mayWrite(std::size_t variable) const
{
    return m_isAllowed && m_variables[variable].access == Access::ReadWrite;
}

bool WriteGate::isOpen() const
{
    return m_isAllowed &&
           std::any_of(m_variables.begin(), m_variables.end(),
                       [](const ListedVariable& variable) { return variable.access == Access::ReadWrite; });
}

QString WriteGate::refusal(const WriteReport& request, std::optional<std::vector<quint32>>* elements) const
{
    if (!m_isAllowed)
        return QStringLiteral("this gateway writes nothing (allow-writes)");
    const ListedVariable& variable = m_variables[*request.variable];
    if (variable.access != Access::ReadWrite)
        return QStringLiteral("the list does not say rw of %1").arg(variable.name);
    QString error;
    *elements = parseListed(variable, request.value, &error);
    if (!*elements)
        return error;
    std::lock_guard<std::mutex> lock(m_ended->mutex);
    if (m_ended->underWay >= mostUnderWay)
        return QStringLiteral("%1 writes are under way already").arg(mostUnderWay);
    ++m_ended->underWay;
    return QString();
}

void WriteGate::request(const WriteReport& request)
{
    std::optional<std::vector<quint32>> elements;
    WriteReport report = request;
    report.reason = refusal(request, &elements);
    if (!report.reason.isEmpty())
        return refuse(report);
    m_write(*request.variable, *elements, [ended = m_ended, report](const WriteOutcome& outcome) {
        {
            std::lock_guard<std::mutex> lock(ended->mutex);
            --ended->underWay;
        }
        WriteReport over = report;
        judge(outcome, &over);
        ended->add(over);
    });
}

void WriteGate::refuse(WriteReport request)
{
    request.end = WriteEnd::NotSent;
    m_ended->add(request);
}

std::vector<WriteReport> WriteGate::takeEnded()
{
    std::lock_guard<std::mutex> lock(m_ended->mutex);
    return std::exchange(m_ended->reports, {});
}

} // namespace plc
