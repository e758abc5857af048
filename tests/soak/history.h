// SPDX-License-Identifier: MIT
/// \file
/// \brief What one variable may hold: its writes, what came of each, and which the controller carried out.
#ifndef SOAK_HISTORY_H
#define SOAK_HISTORY_H

#include "soak/soak_variable.h"

#include <QString>

#include <array>

namespace soak
{

/// How the panel reported the end of a write.
enum class WriteEnd {
    Open,      ///< not yet
    Confirmed, ///< the controller has carried it out
    Failed,    ///< it may have been carried out, once or several times, before any later write
    Unsent     ///< the controller has never seen it
};

/// Writes to the variable are numbered 1, 2, 3... by one thread, and the panel sends them in this order. So
/// the controller holds the last confirmed one or one that was issued later and has reached it, and whatever
/// reaches it twice must be a retry: of a write that is not confirmed, and none older than the last seen.
///
/// Bits do not name their writes. Of them only what may be held is known, not what has reached the
/// controller.
///
/// It remembers the last thousand writes. Where none of so many was confirmed, any older one may have
/// arrived.
///
/// Complaints are empty when nothing is wrong. Not thread-safe. Its size does not grow.
class History
{
public:
    /// \param tries that a write has, the first included
    History(const SoakVariable& variable, int tries) : m_variable(variable), m_tries(tries) {}

    const SoakVariable& variable() const { return m_variable; }
    quint32 lastConfirmed() const { return m_confirmed; }
    quint32 lastIssued() const { return m_issued; }

    /// \return the number of a new write
    quint32 issue();

    /// A write reached the controller. \return what is wrong with that
    QString received(const std::vector<quint32>& values);

    /// The controller carried out what was received last.
    void carriedOut();

    /// The controller's reply to a write of these values was taken as good.
    void replied(const std::vector<quint32>& values);

    /// \return what is wrong with this end
    QString ended(quint32 serial, WriteEnd end);

    /// \param confirmedBefore lastConfirmed() at a moment before the controller was asked for the values
    /// \return true when it has held them since
    bool mayHaveHeld(quint32 confirmedBefore, const std::vector<quint32>& values) const;

    /// \return true when the controller may hold the values now, no write being open
    bool mayHold(const std::vector<quint32>& values) const;

    /// \return true when the values were among the last ones issued, whether or not they have arrived
    bool wereIssued(const std::vector<quint32>& values) const;

    /// The same where the elements may be of different writes.
    bool wereIssuedOneByOne(const std::vector<quint32>& values) const;

private:
    struct Write {
        quint32 serial = 0;
        WriteEnd end = WriteEnd::Confirmed;
        int received = 0;
        bool carriedOut = true;
    };

    // Fewer than any variable has values of its own, bits apart.
    static constexpr quint32 remembered = 1000;

    template <class Arrived>
    bool isOneOf(quint32 confirmed, const std::vector<quint32>& values, const Arrived& arrived) const;
    bool wasIssued(std::size_t element, quint32 value) const;
    bool carries(quint32 serial, const std::vector<quint32>& values) const;
    quint32 oldest() const { return m_issued < remembered ? 0 : m_issued - remembered + 1; }
    Write& at(quint32 serial) { return m_writes[serial % remembered]; }
    const Write& at(quint32 serial) const { return m_writes[serial % remembered]; }
    QString whatElse(const std::vector<quint32>& values) const;

    const SoakVariable m_variable;
    const int m_tries;
    std::array<Write, remembered> m_writes;
    quint32 m_issued = 0;
    quint32 m_confirmed = 0;
    quint32 m_received = 0;
};

} // namespace soak

#endif
