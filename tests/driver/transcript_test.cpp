// SPDX-License-Identifier: MIT
// Whole request cycles, one file each in tests/transcripts. With PLC_REWRITE_TRANSCRIPTS set in the
// environment a file that differs is written anew; every changed line must then be reviewed against what is
// required.
#include "driver_fixture.h"
#include "support/built_files.h"
#include "transcript_player.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace
{

typedef std::vector<std::string> Lines;
namespace fs = std::filesystem;

fs::path TranscriptFolder()
{
    return fs::path(testsDirectory()) / "transcripts";
}

std::vector<std::string> TranscriptNames()
{
    std::vector<std::string> names;
    for (const fs::directory_entry& file : fs::directory_iterator(TranscriptFolder()))
        if (file.path().extension() == ".txt")
            names.push_back(file.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

Lines ReadLines(const fs::path& path)
{
    std::ifstream in(path);
    Lines lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

void WriteLines(const fs::path& path, const Lines& lines)
{
    std::ofstream out(path);
    for (const std::string& line : lines)
        out << line << '\n';
}

std::string LineAt(const Lines& lines, size_t index)
{
    return index < lines.size() ? lines[index] : "(end of file)";
}

size_t FirstDifference(const Lines& a, const Lines& b)
{
    size_t index = 0;
    while (index < a.size() && index < b.size() && a[index] == b[index])
        ++index;
    return index;
}

bool CouldNotBePlayed(const std::string& line)
{
    return line.size() > 5 && line.substr(line.size() - 5) == " -> ?";
}

bool IsPoll(const std::string& line)
{
    return line.compare(0, 4, "poll") == 0;
}

class Transcript : public DriverTest, public ::testing::WithParamInterface<std::string>
{
};

std::string TestName(const ::testing::TestParamInfo<std::string>& test)
{
    return test.param;
}

} // namespace

TEST_P(Transcript, IsPlayedLineByLine)
{
    const fs::path path = TranscriptFolder() / (GetParam() + ".txt");
    const Lines written = ReadLines(path);
    const Lines played = TranscriptPlayer(info).Play(written);

    if (written != played && std::getenv("PLC_REWRITE_TRANSCRIPTS"))
        WriteLines(path, played);
    const size_t at = FirstDifference(written, played);
    EXPECT_TRUE(written == played) << path.filename().string() << ":" << at + 1
                                   << "\n  written: " << LineAt(written, at)
                                   << "\n  played:  " << LineAt(played, at);
    EXPECT_EQ(0, std::count_if(played.begin(), played.end(), CouldNotBePlayed));
    EXPECT_NE(0, std::count_if(played.begin(), played.end(), IsPoll)) << "nothing was asked of the driver";
}

INSTANTIATE_TEST_SUITE_P(Files, Transcript, ::testing::ValuesIn(TranscriptNames()), TestName);

TEST_F(DriverTest, PlayerMarksALineThatItCannotPlay)
{
    const Lines played = TranscriptPlayer(info).Play({"pol", "read area", "set nothing 1", "poll -> 12"});

    EXPECT_EQ((Lines{"pol -> ?", "read area -> ?", "set nothing 1 -> ?", "poll -> nothing"}), played);
}
