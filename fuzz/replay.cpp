// SPDX-License-Identifier: MIT
// Runs a target over every file of a folder, without a fuzzer: what was found once is tested ever after.

#include "fuzz/fuzz_target.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

namespace
{

std::vector<std::filesystem::path> filesOf(const std::filesystem::path& place)
{
    if (std::filesystem::is_regular_file(place))
        return {place};
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(place))
        if (entry.is_regular_file())
            files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    return files;
}

void replay(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream)
        throw std::filesystem::filesystem_error("cannot read it", file, std::error_code());
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    // A copy of exactly this size, so that a sanitizer sees a look beyond the end.
    const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.data(), input.size());
}

} // namespace

int main(int count, char** words)
try {
    if (count != 2) {
        std::fprintf(stderr, "usage: %s FILE-OR-FOLDER\n", words[0]);
        return 2;
    }
    const std::vector<std::filesystem::path> files = filesOf(words[1]);
    for (const auto& file : files) {
        std::printf("%s\n", file.c_str()); // the last one printed is the one that failed
        std::fflush(stdout);
        replay(file);
    }
    std::printf("%zu inputs replayed\n", files.size());
    return files.empty() ? 1 : 0; // a corpus that went missing must not look like success
} catch (const std::filesystem::filesystem_error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
