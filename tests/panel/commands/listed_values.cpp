// SPDX-License-Identifier: MIT
#include "panel/commands/listed_values.h"

#include "support/built_files.h"
#include "support/runtime_fixture.h"

#include <QFile>
#include <QStringList>

#include <cstdio>
#include <cstring>

namespace test
{

namespace
{

int bytesOfElement(int area)
{
    return area == 14 ? 4 : 2;
}

/// \return bytes of a value; 0 for bits
int bytesOfValue(const ListedLine& line)
{
    if (line.type == "bit")
        return 0;
    if (line.type == "text")
        return 1;
    if (line.type == "int16" || line.type == "uint16")
        return 2;
    return line.type == "hex" ? bytesOfElement(line.area) : 4;
}

int elementOf(int area, const QString& address)
{
    switch (area) {
    case 0:
    case 1:
        return address.toInt(nullptr, 8);
    case 7:
        return address.toInt() - 8000;
    case 8:
        return address.section(QLatin1Char('.'), 0, 0).toInt() * 16 +
               address.section(QLatin1Char('.'), 1).toInt();
    case 14:
        return address.toInt() - 200;
    default:
        return address.toInt();
    }
}

/// The bytes of words and double words, the low one first.
std::string bytesOf(const ListedLine& line, const std::vector<quint32>& elements)
{
    std::string bytes;
    for (const quint32 element : elements) {
        for (int byte = 0; byte < bytesOfElement(line.area); ++byte)
            bytes += static_cast<char>(element >> (8 * byte) & 0xFF);
    }
    return bytes;
}

std::string printed(const char* format, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string valueText(const ListedLine& line, quint32 value)
{
    if (line.type == "int16")
        return std::to_string(static_cast<qint16>(value));
    if (line.type == "int32")
        return std::to_string(static_cast<qint32>(value));
    if (line.type == "hex") {
        char text[16];
        std::snprintf(text, sizeof text, line.area == 14 ? "0x%08x" : "0x%04x", value);
        return text;
    }
    if (line.type == "float32") {
        float number = 0;
        std::memcpy(&number, &value, sizeof number);
        return printed("%.7g", static_cast<double>(number));
    }
    return std::to_string(value);
}

std::string quoted(std::string characters)
{
    while (!characters.empty() && characters.back() == '\0')
        characters.pop_back();
    return '"' + characters + '"';
}

/// Something that the type can hold: texts of printable characters, fractions that seven digits hold exactly.
std::string randomBytes(const ListedLine& line, std::mt19937* random)
{
    std::string bytes(static_cast<std::size_t>(line.elements() * bytesOfElement(line.area)), '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(line.type == "text" ? 32 + (*random)() % 95 : (*random)() % 256);
    for (std::size_t at = 0; line.type == "float32" && at < bytes.size(); at += 4) {
        const float number = static_cast<float>(static_cast<int>((*random)() % 200001) - 100000) / 4;
        std::memcpy(&bytes[at], &number, sizeof number);
    }
    return bytes;
}

std::vector<quint32> randomElements(const ListedLine& line, std::mt19937* random)
{
    std::vector<quint32> elements;
    if (line.type == "bit") {
        for (int bit = 0; bit < line.count; ++bit)
            elements.push_back((*random)() % 2);
        return elements;
    }
    const std::string bytes = randomBytes(line, random);
    const auto size = static_cast<std::size_t>(bytesOfElement(line.area));
    for (std::size_t at = 0; at < bytes.size(); at += size) {
        quint32 element = 0;
        std::memcpy(&element, &bytes[at], size);
        elements.push_back(element);
    }
    return elements;
}

} // namespace

QString exampleFile(const char* name)
{
    return QString::fromUtf8(testsDirectory()) + QStringLiteral("/../examples/") + QLatin1String(name);
}

int ListedLine::elements() const
{
    const int bytes = bytesOfValue(*this) * count;
    return bytes == 0 ? count : (bytes + bytesOfElement(area) - 1) / bytesOfElement(area);
}

std::vector<ListedLine> linesOfThousand()
{
    QFile file(exampleFile("thousand.csv"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    std::vector<ListedLine> lines;
    for (const QString& text : QString::fromLatin1(file.readAll()).split(QLatin1Char('\n'))) {
        const QStringList fields = text.split(QLatin1Char(','));
        if (fields.size() != 6 || fields.first() == QStringLiteral("name"))
            continue;
        ListedLine line;
        line.name = fields[0].toStdString();
        line.area = fields[1].toInt();
        line.element = elementOf(line.area, fields[2]);
        line.count = fields[4].isEmpty() ? 1 : fields[4].toInt();
        line.type = fields[5].toStdString();
        lines.push_back(line);
    }
    return lines;
}

std::vector<quint32> elementsInController(simulator::SimulatedController& controller, const ListedLine& line)
{
    std::vector<quint32> elements;
    for (int i = 0; i < line.elements(); ++i)
        elements.push_back(inController(controller, line.area, line.element + i));
    return elements;
}

std::string expectedText(const ListedLine& line, const std::vector<quint32>& elements)
{
    const std::string bytes = bytesOf(line, elements);
    if (line.type == "text")
        return quoted(bytes.substr(0, static_cast<std::size_t>(line.count)));
    std::string text;
    for (int i = 0; i < line.count; ++i) {
        quint32 value = elements[static_cast<std::size_t>(line.type == "bit" ? i : 0)];
        const auto size = static_cast<std::size_t>(bytesOfValue(line));
        if (size > 0) {
            value = 0;
            std::memcpy(&value, &bytes[static_cast<std::size_t>(i) * size], size);
        }
        text += (i > 0 ? " " : "") + valueText(line, value);
    }
    return text;
}

void changeInController(simulator::SimulatedController& controller, const ListedLine& line,
                        std::mt19937* random)
{
    const std::vector<quint32> elements = randomElements(line, random);
    for (int i = 0; i < line.elements(); ++i)
        putIntoController(controller, line.area, line.element + i, elements[static_cast<std::size_t>(i)]);
}

} // namespace test
