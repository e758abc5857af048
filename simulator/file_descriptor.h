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
    explicit FileDescriptor(int number = -1) : number_(number) {}
    ~FileDescriptor()
    {
        if (number_ >= 0)
            ::close(number_);
    }
    FileDescriptor(FileDescriptor&& other) noexcept : number_(other.number_) { other.number_ = -1; }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    int number() const { return number_; }

private:
    int number_;
};

} // namespace simulator

#endif
