// SPDX-License-Identifier: MIT
/// \file
/// \brief What a soak run found wrong.
#ifndef SOAK_COMPLAINTS_H
#define SOAK_COMPLAINTS_H

#include <QString>

#include <atomic>
#include <mutex>

namespace soak
{

/// Prints the first ones on standard error, the same one in a row once, and counts all. Any thread.
class Complaints
{
public:
    /// \param more printed with it, to help find out how it came about
    void add(const QString& words, const QString& more = QString());
    long count() const { return m_count; }

private:
    std::atomic<long> m_count{0};
    std::mutex m_mutex; // of what was printed
    QString m_last;
    int m_printed = 0;
};

} // namespace soak

#endif
