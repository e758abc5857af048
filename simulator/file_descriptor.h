// SPDX-License-Identifier: MIT
/// \file
/// \brief Owner of one file descriptor.
#ifndef SIMULATOR_FILE_DESCRIPTOR_H
#define SIMULATOR_FILE_DESCRIPTOR_H

#include <unistd.h>

namespace simulator
{

/// Closes its descriptor; a negative one means none.
class FileDescriptor
{
public:
    explicit FileDescriptor(int number = -1) : m_number(number) {}
    ~FileDescriptor()
    {
        if (m_number >= 0)
            ::close(m_number);
    }
    FileDescriptor(FileDescriptor&& other) noexcept : m_number(other.m_number) { other.m_number = -1; }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int number() const { return m_number; }

private:
    int m_number;
};

} // namespace simulator

#endif
