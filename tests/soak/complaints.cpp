// SPDX-License-Identifier: MIT
#include "soak/complaints.h"

#include <cstdio>

namespace soak
{

namespace
{
const int mostPrinted = 5; // the first ones say more than the thousands that follow from them
} // namespace

void Complaints::add(const QString& words, const QString& more)
{
    ++m_count;
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_printed == mostPrinted || words == m_last)
        return;
    ++m_printed;
    m_last = words;
    std::fprintf(stderr, "plcsoak: WRONG: %s\n%s", qPrintable(words), qPrintable(more));
}

} // namespace soak
