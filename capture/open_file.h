// SPDX-License-Identifier: MIT
/// \file
/// \brief A file that is closed when nobody needs it any more.
#ifndef CAPTURE_OPEN_FILE_H
#define CAPTURE_OPEN_FILE_H

#include <cstdio>
#include <memory>

namespace plc
{

struct FileCloser {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

/// Of the C library, because that is what libpcap reads from: a file, a pipe, or bytes in memory.
using OpenFile = std::unique_ptr<std::FILE, FileCloser>;

} // namespace plc

#endif
