// SPDX-License-Identifier: MIT
#include "simulator/memory_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <sstream>

namespace simulator
{

namespace
{

constexpr const char* expectedLine = "expected 'unit 1..255 coil 0..65535 0|1' or 'unit 1..255 register "
                                     "0..65535 0..65535', or a moving one such as "
                                     "'unit 1 register 100 ramp 0..1000 period 10000'";

constexpr unsigned long longestPeriod = 86400000; // ms, a day

struct MotionName {
    const char* name;
    MovingValue::Motion motion;
};

constexpr MotionName motionNames[] = {
    {"ramp", MovingValue::Ramp},
    {"sine", MovingValue::Sine},
    {"counter", MovingValue::Counter},
    {"random", MovingValue::Random},
};

struct WidthName {
    const char* name;
    MovingValue::Width width;
    std::int64_t least; // limits
    std::int64_t most;
};

constexpr WidthName widthNames[] = {
    {"coil", MovingValue::Bit, 0, 1},
    {"register", MovingValue::Word, -0x8000, 0xFFFF},
    {"register32", MovingValue::DoubleWord, -0x80000000LL, 0xFFFFFFFFLL},
};

const std::string byteOrderMark = "\xEF\xBB\xBF";

constexpr std::size_t mostErrors = 20;

constexpr std::size_t wordsOfValue = 5;  // "unit 1 coil 16 1"
constexpr std::size_t wordsOfMotion = 8; // with limits; one less for a coil: no line has more

std::optional<unsigned> digitValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return static_cast<unsigned>(digit - '0');
    const int lower = std::tolower(static_cast<unsigned char>(digit));
    if (lower >= 'a' && lower <= 'f')
        return static_cast<unsigned>(lower - 'a' + 10);
    return std::nullopt;
}

std::vector<std::string> wordsOf(const std::string& line)
{
    std::istringstream stream(line.substr(0, line.find('#')));
    std::vector<std::string> words;
    for (std::string word; words.size() <= wordsOfMotion && stream >> word;)
        words.push_back(word);
    return words;
}

std::optional<MemoryValue> parseWords(const std::vector<std::string>& words)
{
    if (words.size() != wordsOfValue || words[0] != "unit" || (words[2] != "coil" && words[2] != "register"))
        return std::nullopt;
    const bool isCoil = words[2] == "coil";
    const auto unit = parseNumber(words[1], lastUnit);
    const auto address = parseNumber(words[3], addressCount - 1);
    const auto value = parseNumber(words[4], isCoil ? 1 : 0xFFFF);
    if (!unit || *unit < firstUnit || !address || !value)
        return std::nullopt;
    return MemoryValue{static_cast<int>(*unit), isCoil ? MemoryValue::Coil : MemoryValue::Register,
                       static_cast<int>(*address), static_cast<std::uint16_t>(*value)};
}

template <class Row, std::size_t rows>
const Row* rowNamed(const Row (&table)[rows], const std::string& name)
{
    const auto found =
        std::find_if(std::begin(table), std::end(table), [&](const Row& row) { return name == row.name; });
    return found == std::end(table) ? nullptr : found;
}

std::optional<std::int64_t> parseSigned(const std::string& text)
{
    const bool isNegative = !text.empty() && text[0] == '-';
    const auto number = parseNumber(isNegative ? text.substr(1) : text, 0xFFFFFFFF);
    if (!number)
        return std::nullopt;
    return isNegative ? -static_cast<std::int64_t>(*number) : static_cast<std::int64_t>(*number);
}

// "0..1000"
bool parseLimits(const std::string& text, const WidthName& width, MovingValue& value)
{
    const std::size_t dots = text.find("..");
    if (dots == std::string::npos)
        return false;
    const auto lowest = parseSigned(text.substr(0, dots));
    const auto highest = parseSigned(text.substr(dots + 2));
    if (!lowest || !highest || *lowest < width.least || *highest > width.most || *lowest > *highest)
        return false;
    value.lowest = *lowest;
    value.highest = *highest;
    return true;
}

// unit U KIND ADDRESS MOTION [LIMITS] period MS; the limits are those of a coil or have to be there.
std::optional<MovingPlace> parseMoving(const std::vector<std::string>& words)
{
    const WidthName* const width = words.size() > 4 ? rowNamed(widthNames, words[2]) : nullptr;
    const MotionName* const motion = width ? rowNamed(motionNames, words[4]) : nullptr;
    const bool hasLimits = width && width->width != MovingValue::Bit;
    const std::size_t size = hasLimits ? wordsOfMotion : wordsOfMotion - 1;
    if (!motion || words[0] != "unit" || words.size() != size || words[size - 2] != "period")
        return std::nullopt;
    const auto unit = parseNumber(words[1], lastUnit);
    const auto address =
        parseNumber(words[3], addressCount - (width->width == MovingValue::DoubleWord ? 2 : 1));
    const auto period = parseNumber(words[size - 1], longestPeriod);
    if (!unit || *unit < firstUnit || !address || !period || *period < 1)
        return std::nullopt;
    MovingValue value{motion->motion, width->width, width->least, width->most,
                      static_cast<std::int64_t>(*period)};
    if (hasLimits && !parseLimits(words[5], *width, value))
        return std::nullopt;
    return MovingPlace{static_cast<int>(*unit), static_cast<int>(*address), value};
}

// A wrong file may hold anything: what a terminal would act upon is not repeated.
std::string printable(const std::string& line)
{
    constexpr std::size_t longest = 80;
    std::string text = line.substr(0, longest);
    std::replace_if(
        text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c > '~'; }, '?');
    return line.size() > longest ? text + "..." : text;
}

} // namespace

std::optional<unsigned long> parseNumber(const std::string& text, unsigned long maximum)
{
    const bool isHex = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    const unsigned base = isHex ? 16 : 10;
    const std::string digits = isHex ? text.substr(2) : text;
    unsigned long long number = 0;
    for (const char digit : digits) {
        const auto value = digitValue(digit);
        if (!value || *value >= base)
            return std::nullopt;
        number = number * base + *value;
        if (number > maximum) // checked at every digit, so that the number cannot wrap
            return std::nullopt;
    }
    if (digits.empty())
        return std::nullopt;
    return static_cast<unsigned long>(number);
}

MemoryText parseMemoryText(const std::string& text, const std::string& fileName)
{
    MemoryText result;
    std::istringstream stream(text);
    if (text.compare(0, byteOrderMark.size(), byteOrderMark) == 0)
        stream.ignore(static_cast<std::streamsize>(byteOrderMark.size()));
    int number = 0;
    unsigned long unsaid = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        const auto words = wordsOf(line);
        if (words.empty())
            continue;
        if (const auto value = parseWords(words))
            result.values.push_back(*value);
        else if (const auto moving = parseMoving(words))
            result.moving.push_back(*moving);
        else if (result.errors.size() == mostErrors)
            ++unsaid;
        else
            result.errors.push_back(fileName + ":" + std::to_string(number) + ": '" + printable(line) +
                                    "': " + expectedLine);
    }
    if (unsaid > 0)
        result.errors.push_back(fileName + ": and " + std::to_string(unsaid) + " more wrong lines");
    return result;
}

std::string formatMemoryText(const std::vector<MemoryValue>& values)
{
    std::string text;
    for (const MemoryValue& value : values) {
        std::array<char, 64> line{};
        std::snprintf(line.data(), line.size(), "unit %d %s 0x%04X %u\n", value.unit,
                      value.kind == MemoryValue::Coil ? "coil" : "register",
                      static_cast<unsigned>(value.address), static_cast<unsigned>(value.value));
        text += line.data();
    }
    return text;
}

} // namespace simulator
