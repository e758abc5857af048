// SPDX-License-Identifier: MIT
/// \file
/// \brief What births, data and deaths hold.
#ifndef GATEWAY_SPARKPLUG_PAYLOADS_H
#define GATEWAY_SPARKPLUG_PAYLOADS_H

#include "gateway/session/figures.h"
#include "gateway/values/sample.h"
#include "runtime/model/variable_list.h"

#include <QByteArray>

#include <optional>
#include <unordered_map>
#include <vector>

namespace plc
{

namespace sparkplug
{
class Payload;
}

/// Variables have the aliases from 1 on, in the order of the list, the node's own metrics those behind.
inline quint64 aliasOf(std::size_t variable)
{
    return variable + 1;
}

inline constexpr char birthNumberName[] = "bdSeq";
inline constexpr char rebirthName[] = "Node Control/Rebirth";

QByteArray deathOfNode(int birthNumber);

/// \param sentAt in ms since 1970 UTC, as everywhere here
QByteArray birthOfNode(int birthNumber, const GatewayFigures& figures, std::size_t variables, qint64 sentAt);

/// \return figures that differ from those told before; nothing where all are the same
std::optional<QByteArray> dataOfNode(const GatewayFigures& before, const GatewayFigures& figures,
                                     std::size_t variables, int seq, qint64 sentAt);

/// \param samples of all variables of the device
QByteArray birthOfDevice(const std::vector<Sample>& samples, const std::vector<ListedVariable>& variables,
                         int seq, qint64 sentAt);

QByteArray deathOfDevice(int seq, qint64 sentAt);

/// Metrics of one message of data: of one device, and all historical or none.
class DataMessage
{
public:
    DataMessage(const std::vector<ListedVariable>& variables, bool isHistorical);

    /// \return false, and nothing changes, when the message is full or has a value of the variable that is not older
    bool add(const Sample& sample);

    bool isEmpty() const { return m_samples.empty(); }
    bool isHistorical() const { return m_isHistorical; }

    /// \return the payload, metrics in the order of their times; the message is empty then
    QByteArray take(int seq, qint64 sentAt);

private:
    const std::vector<ListedVariable>& m_variables;
    const bool m_isHistorical;
    std::vector<Sample> m_samples;
    std::unordered_map<quint32, qint64> m_last; // time of the last sample of each variable
};

} // namespace plc

#endif
