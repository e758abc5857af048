// SPDX-License-Identifier: MIT
/// \file
/// \brief Members of records that there may be a million of: in little room, and used as what they stand for.
///
/// Copies share what they hold, and may be used by several threads at once, as those of QString.
#ifndef RUNTIME_MODEL_SMALL_MEMBERS_H
#define RUNTIME_MODEL_SMALL_MEMBERS_H

#include "runtime/export.h"

#include <QByteArray>
#include <QSharedData>
#include <QString>

#include <optional>

namespace plc
{

/// A number that mostly is not there, in the room of a pointer.
class RareNumber
{
public:
    RareNumber() = default;
    RareNumber(double number) : m_held(new Held(number)) {}
    RareNumber(const std::optional<double>& number) : m_held(number ? new Held(*number) : nullptr) {}

    explicit operator bool() const { return m_held != nullptr; }
    double operator*() const { return m_held->number; } ///< only where there is one
    operator std::optional<double>() const
    {
        return m_held ? std::optional<double>(m_held->number) : std::nullopt;
    }

private:
    struct Held : QSharedData {
        explicit Held(double aNumber) : number(aNumber) {}
        const double number;
    };

    QExplicitlySharedDataPointer<Held> m_held;
};

inline bool operator==(const RareNumber& a, const std::optional<double>& b)
{
    return std::optional<double>(a) == b;
}

/// A number that mostly is \a usual, in the room of a pointer.
template <int usual>
class NumberOrUsual
{
public:
    NumberOrUsual() = default;
    NumberOrUsual(double number)
    {
        if (number < usual || number > usual)
            m_number = RareNumber(number);
    }

    operator double() const { return m_number ? *m_number : usual; }

private:
    RareNumber m_number;
};

/// A text in UTF-8, in the room of a pointer and of its bytes.
class PLCRUNTIME_API SmallText
{
public:
    SmallText() = default;
    SmallText(const QString& text);
    SmallText(const SmallText& other);
    SmallText(SmallText&& other) noexcept : m_block(other.m_block) { other.m_block = nullptr; }
    SmallText& operator=(SmallText other) noexcept;
    ~SmallText();

    operator QString() const { return text(); }
    QString text() const;

    /// \return its bytes; they are there as long as it is
    QByteArray utf8() const;

    bool isEmpty() const { return m_block == nullptr; }

private:
    struct Block;
    Block* m_block = nullptr; // null: empty
};

inline bool operator==(const SmallText& a, const SmallText& b)
{
    return a.utf8() == b.utf8();
}

inline bool operator==(const SmallText& a, const QString& b)
{
    return a.text() == b;
}

} // namespace plc

#endif
