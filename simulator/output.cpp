// SPDX-License-Identifier: MIT
#include "simulator/output.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>

#include <fcntl.h>
#include <unistd.h>

namespace simulator
{

namespace
{

// What is still in the buffer may fail, too.
bool putAll(const std::string& text, std::FILE* file)
{
    return std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
}

void complain(const std::string& what)
{
    std::cerr << "plcsim: " << what << ": " << std::strerror(errno) << '\n';
}

} // namespace

void keepStandardDescriptors()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // Those below are there, so the lowest free number, which is taken, is this one.
        if (fcntl(descriptor, F_GETFD) == -1)
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    }
}

bool print(const std::string& text)
{
    const bool done = putAll(text, stdout);
    if (!done)
        complain("cannot write the output");
    return done;
}

bool writeFile(const std::string& option, const std::string& fileName, const std::string& text)
{
    std::FILE* const file = std::fopen(fileName.c_str(), "we");
    bool done = file != nullptr && putAll(text, file);
    if (!done)
        complain(option + ": cannot write '" + fileName + "'");
    if (file != nullptr && std::fclose(file) != 0 && done) {
        complain(option + ": cannot write '" + fileName + "'");
        done = false;
    }
    return done;
}

} // namespace simulator
