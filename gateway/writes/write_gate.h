// SPDX-License-Identifier: MIT
/// \file
/// \brief Who may write what, and how each write that somebody asked for ended.
#ifndef GATEWAY_WRITES_WRITE_GATE_H
#define GATEWAY_WRITES_WRITE_GATE_H

#include "runtime/model/outcome.h"
#include "runtime/model/variable_list.h"

#include <QByteArray>
#include <QJsonValue>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace plc
{

enum class WriteEnd {
    Confirmed,  ///< by the controller
    Refused,    ///< by the controller, with an exception
    NotSent,    ///< the controller was asked nothing
    Unconfirmed ///< it went out, and nothing says that it was carried out
};

/// \return "confirmed", "refused", "not sent", "unconfirmed"
QString writeEndWord(WriteEnd end);

/// One write that is over.
struct WriteReport {
    std::optional<std::size_t> variable; ///< index in the list
    QByteArray topic;                    ///< the one that asked for it
    QString value;                       ///< as it was asked for
    QJsonValue id = QJsonValue(QJsonValue::Undefined);
    WriteEnd end = WriteEnd::NotSent;
    int exception = 0;
    QString reason; ///< why it is not confirmed
};

/// Writes the elements of the variable of this index, and tells how it ended: once, on any thread.
using WriteElements =
    std::function<void(std::size_t variable, const std::vector<quint32>& elements, const WriteDone& done)>;

/// A variable is written only when the configuration allows writing at all, the list says rw of it, and the value fits
/// it and lies inside its limits. Every request is told in the journal with its topic and how it ended.
class WriteGate
{
public:
    /// \param wake called, on any thread, when takeEnded() has something
    WriteGate(const std::vector<ListedVariable>& variables, bool isAllowed, WriteElements write,
              std::function<void()> wake);

    /// \return true when there is a variable that may be written
    bool isOpen() const;

    /// \return true when the variable may be written
    bool mayWrite(std::size_t variable) const;

    /// \param request topic, value, id and variable filled in
    void request(const WriteReport& request);

    /// For a request that names no variable, or whose payload is wrong: \a request has the reason.
    void refuse(WriteReport request);

    /// \return those that have ended since the last call
    std::vector<WriteReport> takeEnded();

private:
    struct Ended;

    QString refusal(const WriteReport& request, std::optional<std::vector<quint32>>* elements) const;

    const std::vector<ListedVariable>& m_variables;
    const bool m_isAllowed;
    const WriteElements m_write;
    const std::shared_ptr<Ended> m_ended; // outlives this when a write ends late
};

} // namespace plc

#endif
