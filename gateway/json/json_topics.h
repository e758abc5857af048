// SPDX-License-Identifier: MIT
/// \file
/// \brief The topics of the json format, and which variable one of them belongs to.
///
/// A variable's topic is PREFIX/NAME. What a level of a topic cannot hold (+ # / and control characters), % itself and a
/// $ in front stand as % and two hexadecimal digits for each byte of UTF-8: "temp/in" is published as "temp%2Fin".
/// So every name has one topic, and no two have the same.
#ifndef GATEWAY_JSON_JSON_TOPICS_H
#define GATEWAY_JSON_JSON_TOPICS_H

#include "runtime/model/variable_list.h"

#include <QByteArray>
#include <QHash>

#include <optional>
#include <vector>

namespace plc
{

/// \return the level of a topic for \a name
QByteArray topicLevel(const QString& name);

class JsonTopics
{
public:
    JsonTopics(const QString& prefix, const std::vector<ListedVariable>& variables);

    QByteArray value(std::size_t variable) const { return m_prefix + m_levels[variable]; }
    QByteArray set(std::size_t variable) const { return value(variable) + "/set"; }
    QByteArray result(std::size_t variable) const { return value(variable) + "/result"; }
    QByteArray state() const { return m_prefix + "$state"; }

    /// \return what fits the topics to write to, and no other topic below the prefix
    QByteArray setFilter() const { return m_prefix + "+/set"; }

    /// \return the variable of a topic to write to; nothing where it is none
    std::optional<std::size_t> setVariable(const QByteArray& topic) const;

private:
    const QByteArray m_prefix; // the / behind it included
    std::vector<QByteArray> m_levels;
    QHash<QByteArray, std::size_t> m_variables; // by level
};

} // namespace plc

#endif
