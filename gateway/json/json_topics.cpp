// SPDX-License-Identifier: MIT
#include "gateway/json/json_topics.h"

#include <cstring>

namespace plc
{

namespace
{

const char setEnding[] = "/set";

bool mustBeCoded(unsigned char byte, bool isFirst)
{
    return byte < 0x20 || byte == 0x7F || std::strchr("+#/%", byte) || (isFirst && byte == '$');
}

} // namespace

QByteArray topicLevel(const QString& name)
{
    QByteArray level;
    for (const char byte : name.toUtf8()) {
        if (mustBeCoded(static_cast<unsigned char>(byte), level.isEmpty()))
            level += '%' + QByteArray(1, byte).toHex().toUpper();
        else
            level += byte;
    }
    return level;
}

JsonTopics::JsonTopics(const QString& prefix, const std::vector<ListedVariable>& variables)
    : m_prefix(prefix.toUtf8() + '/')
{
    for (const ListedVariable& variable : variables) {
        m_variables.insert(topicLevel(variable.name), m_levels.size());
        m_levels.push_back(topicLevel(variable.name));
    }
}

std::optional<std::size_t> JsonTopics::setVariable(const QByteArray& topic) const
{
    if (!topic.startsWith(m_prefix) || !topic.endsWith(setEnding))
        return std::nullopt;
    const int size = topic.size() - m_prefix.size() - static_cast<int>(std::strlen(setEnding));
    const auto found = m_variables.find(topic.mid(m_prefix.size(), size));
    if (size <= 0 || found == m_variables.end())
        return std::nullopt;
    return *found;
}

} // namespace plc
