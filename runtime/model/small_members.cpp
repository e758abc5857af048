// SPDX-License-Identifier: MIT
#include "runtime/model/small_members.h"

#include <QAtomicInt>

#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

namespace plc
{

/// Before the bytes of the text, in the same piece of memory.
struct SmallText::Block {
    QAtomicInt owners{1};
    int size = 0;

    char* bytes() { return reinterpret_cast<char*>(this + 1); }
};

SmallText::SmallText(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    if (bytes.isEmpty())
        return;
    const auto size = static_cast<std::size_t>(bytes.size());
    m_block = new (::operator new(sizeof(Block) + size)) Block;
    m_block->size = bytes.size();
    std::memcpy(m_block->bytes(), bytes.constData(), size);
}

SmallText::SmallText(const SmallText& other) : m_block(other.m_block)
{
    if (m_block != nullptr)
        m_block->owners.ref();
}

SmallText& SmallText::operator=(SmallText other) noexcept
{
    std::swap(m_block, other.m_block);
    return *this;
}

SmallText::~SmallText()
{
    if (m_block == nullptr || m_block->owners.deref())
        return;
    m_block->~Block();
    ::operator delete(m_block);
}

QString SmallText::text() const
{
    return QString::fromUtf8(utf8());
}

QByteArray SmallText::utf8() const
{
    return m_block == nullptr ? QByteArray() : QByteArray::fromRawData(m_block->bytes(), m_block->size);
}

} // namespace plc
