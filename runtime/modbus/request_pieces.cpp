// SPDX-License-Identifier: MIT
#include "runtime/modbus/request_pieces.h"

#include "runtime/modbus/protocol.h"
#include "runtime/model/counted.h"
#include "runtime/model/modbus_address.h"

#include <algorithm>

namespace plc
{

namespace
{

/// \return \a most, or as many elements less as it takes to end behind a whole value
int wholeValues(const Variable& variable, int most)
{
    return most - most % variable.valueElements;
}

int mostElementsWritten(int area, int maxBlockCount)
{
    switch (kindOf(area)) {
    case ElementKind::Word:
        return std::min(maxBlockCount, mostRegistersWritten);
    case ElementKind::DoubleWord:
        return std::min(maxBlockCount, mostRegistersWritten / 2);
    default:
        return 1;
    }
}

/// The bits of \a bits that lie in \a words.
Variable bitsInside(const Variable& bits, const Variable& words)
{
    Variable inside = bits;
    inside.element = std::max(bits.element, words.element * bitsOfWord);
    const int end = std::min(bits.element + bits.count, (words.element + words.count) * bitsOfWord);
    inside.count = end - inside.element;
    return inside;
}

bool sameStation(const Variable& a, const Variable& b)
{
    return a.station == b.station || a.station == broadcastStation || b.station == broadcastStation;
}

QString stationRefusal(const Variable& variable, const Settings& settings)
{
    if (variable.station < 0 || variable.station > lastStation)
        return QStringLiteral("%1 is no station; stations are 0 to %2")
            .arg(variable.station)
            .arg(lastStation);
    if (!settings.multiStation && variable.station != settings.station)
        return QStringLiteral("station %1 is not served; only station %2 is, unless several stations are "
                              "switched on in the settings (--multi-station)")
            .arg(variable.station)
            .arg(settings.station);
    return QString();
}

QString runRefusal(const Variable& variable)
{
    if (!isArea(variable.area))
        return QStringLiteral("%1 is no area; areas are 0 to %2").arg(variable.area).arg(areaCount() - 1);
    if (variable.element < 0 || variable.count < 1 || variable.element >= areaSize(variable.area) ||
        variable.count > areaSize(variable.area) - variable.element)
        return QStringLiteral("%1 elements from %2 on do not lie in area %3, which has %4")
            .arg(variable.count)
            .arg(variable.element)
            .arg(variable.area)
            .arg(areaSize(variable.area));
    if (variable.valueElements < 1 || variable.count % variable.valueElements != 0)
        return QStringLiteral("%1 elements are no whole number of values of %2 elements")
            .arg(variable.count)
            .arg(variable.valueElements);
    return QString();
}

/// \param most elements of one request
QString widthRefusal(const Variable& variable, int most, const Settings& settings)
{
    if (variable.valueElements <= most)
        return QString();
    return QStringLiteral(
               "a value of %1 elements of area %2 does not fit into one request of %3 words (--max-block), "
               "and in two it would be torn")
        .arg(variable.valueElements)
        .arg(variable.area)
        .arg(settings.maxBlockCount);
}

/// A frame of Modbus TCP would carry the low 16 bits of such an address, which are those of another element.
/// Remote frames carry area and element, and no Modbus address.
QString addressRefusal(const Variable& variable, const Settings& settings)
{
    const int elements = modbusElements(variable.area);
    if (settings.remoteMode || endOf(variable) <= elements)
        return QString();
    Variable last = {variable.area, elements - 1, 1, -1};
    return QStringLiteral("%1 lies beyond Modbus address 65535; the last element of area %2 is %3")
        .arg(QLatin1String(variable.element < elements ? "a part of it" : "it"))
        .arg(variable.area)
        .arg(variableText(last));
}

QString refusal(const Variable& variable, const Settings& settings)
{
    QString words = runRefusal(variable);
    if (words.isEmpty())
        words = addressRefusal(variable, settings);
    return words.isEmpty() ? stationRefusal(variable, settings) : words;
}

quint32 greatestValue(int area)
{
    switch (kindOf(area)) {
    case ElementKind::Word:
        return 0xFFFF;
    case ElementKind::DoubleWord:
        return 0xFFFFFFFF;
    default:
        return 1;
    }
}

QString valueRefusal(const Variable& variable, const std::vector<quint32>& values)
{
    if (static_cast<int>(values.size()) != variable.count)
        return counted(static_cast<qint64>(values.size()), "value") + QStringLiteral(" given for ") +
               counted(variable.count, "element");
    const quint32 most = greatestValue(variable.area);
    for (const quint32 value : values) {
        if (value > most)
            return QStringLiteral("%1 does not fit into an element of area %2; at most %3 does")
                .arg(value)
                .arg(variable.area)
                .arg(most);
    }
    return QString();
}

} // namespace

Variable withStation(Variable variable, const Settings& settings)
{
    if (variable.station == -1)
        variable.station = settings.station;
    return variable;
}

QString readRefusal(const Variable& variable, const Settings& settings)
{
    QString words = refusal(variable, settings);
    if (words.isEmpty())
        words = widthRefusal(wordsOf(variable),
                             mostElementsRead(wordsOf(variable).area, settings.maxBlockCount), settings);
    if (words.isEmpty() && variable.station == broadcastStation)
        return QStringLiteral("station 0 is a broadcast, which no controller answers, so nothing can be read "
                              "from it; give the controller's own station");
    return words;
}

QString cyclicRefusal(const Variable& variable, const Settings& settings)
{
    const QString words = readRefusal(variable, settings);
    if (!words.isEmpty() || !settings.remoteMode || variable.valueElements == 1 ||
        kindOf(variable.area) != ElementKind::DoubleWord)
        return words;
    return QStringLiteral(
               "a value of %1 double words cannot be refreshed over remote frames (--remote), which "
               "fetch area %2 one double word at a time, so that it could be torn; give a type of "
               "32 bits, or lay the value into a word area")
        .arg(variable.valueElements)
        .arg(variable.area);
}

QString writeRefusal(const Variable& variable, const std::vector<quint32>& values, const Settings& settings)
{
    QString words = refusal(variable, settings);
    if (words.isEmpty())
        words = widthRefusal(variable, mostElementsWritten(variable.area, settings.maxBlockCount), settings);
    if (!words.isEmpty())
        return words;
    // The driver builds no frame for these two, and such a write would hold back every later one. (A remote
    // frame lets the controller change the bit itself.)
    if (!areaOf(variable.area).isWritable)
        return QStringLiteral("area %1 can only be read").arg(variable.area);
    if (variable.area == bitInWordArea && variable.station == broadcastStation && !settings.remoteMode)
        return QStringLiteral("a bit in a word cannot be written to station 0: its word would have to be "
                              "read first, and no controller answers a broadcast");
    return valueRefusal(variable, values);
}

int mostElementsRead(int area, int maxBlockCount)
{
    switch (kindOf(area)) {
    case ElementKind::Bit:
        return std::min(bitsOfByte * maxBlockCount, mostCoilsRead);
    case ElementKind::DoubleWord:
        // Asked for as one more than is fetched, so one less fits into a block.
        return std::min(maxBlockCount - 1, mostRegistersRead / 2);
    default:
        return std::min(maxBlockCount, mostRegistersRead);
    }
}

std::vector<Variable> cut(const Variable& variable, int most)
{
    std::vector<Variable> pieces;
    for (int done = 0; done < variable.count; done += most) {
        Variable piece = variable;
        piece.element = variable.element + done;
        piece.count = std::min(most, variable.count - done);
        pieces.push_back(piece);
    }
    return pieces;
}

ReadPiece pieceOf(const Variable& variable, const Variable& asked)
{
    return {kindOf(variable.area) == ElementKind::BitInWord ? bitsInside(variable, asked) : asked, asked};
}

std::vector<ReadPiece> readPieces(const Variable& variable, int maxBlockCount)
{
    const Variable asked = wordsOf(variable);
    const int most = wholeValues(asked, mostElementsRead(asked.area, maxBlockCount));
    std::vector<ReadPiece> pieces;
    for (const Variable& piece : cut(asked, most))
        pieces.push_back(pieceOf(variable, piece));
    return pieces;
}

std::vector<Variable> writePieces(const Variable& variable, int maxBlockCount)
{
    return cut(variable, wholeValues(variable, mostElementsWritten(variable.area, maxBlockCount)));
}

int driverReadCount(int area, int elements)
{
    return kindOf(area) == ElementKind::DoubleWord ? elements + 1 : elements;
}

int elementsRead(int area, int count)
{
    return kindOf(area) == ElementKind::DoubleWord ? count - 1 : count;
}

int driverWriteCount(int area, int elements)
{
    return kindOf(area) == ElementKind::DoubleWord ? 2 * elements : elements;
}

Variable wordsOf(const Variable& variable)
{
    if (kindOf(variable.area) != ElementKind::BitInWord)
        return variable;
    Variable words = variable;
    const int end = (variable.element + variable.count + bitsOfWord - 1) / bitsOfWord;
    words.area = wordArea;
    words.element = variable.element / bitsOfWord;
    words.count = end - words.element;
    words.valueElements = 1;
    return words;
}

bool overlaps(const Variable& a, const Variable& b)
{
    if (!sameStation(a, b))
        return false;
    const bool asBits = a.area == bitInWordArea && b.area == bitInWordArea;
    const Variable left = asBits ? a : wordsOf(a);
    const Variable right = asBits ? b : wordsOf(b);
    return left.area == right.area && left.element < right.element + right.count &&
           right.element < left.element + left.count;
}

} // namespace plc
