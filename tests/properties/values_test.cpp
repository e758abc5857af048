// SPDX-License-Identifier: MIT
// Values of every type and order, laid out in elements here once more: by the letters of their order, byte by byte.

#include "properties/property.h"
#include "runtime/model/listed_value.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace
{

using plc::ListedVariable;
using plc::ValueType;
using plc::WordOrder;

using Elements = std::vector<quint32>;

const std::map<WordOrder, std::string> lettersOf = {{WordOrder::Usual, "CDAB"},
                                                    {WordOrder::Abcd, "ABCD"},
                                                    {WordOrder::Cdab, "CDAB"},
                                                    {WordOrder::Badc, "BADC"},
                                                    {WordOrder::Dcba, "DCBA"}};

const std::vector<WordOrder> orders = {WordOrder::Usual, WordOrder::Abcd, WordOrder::Cdab, WordOrder::Badc,
                                       WordOrder::Dcba};

// The bytes of a value over the wire, the most significant one given as the first.
std::string onTheWire(const std::string& value, WordOrder order)
{
    const std::string& letters = lettersOf.at(order);
    const bool lowWordFirst = letters == "CDAB" || letters == "DCBA";
    const bool lowByteFirst = letters == "BADC" || letters == "DCBA";
    std::string wire;
    for (std::size_t at = 0; at < value.size(); at += 2) {
        const std::string word = value.substr(lowWordFirst ? value.size() - 2 - at : at, 2);
        wire += lowByteFirst ? std::string(word.rbegin(), word.rend()) : word;
    }
    return wire;
}

quint32 byteOf(const std::string& bytes, std::size_t at)
{
    return static_cast<unsigned char>(bytes[at]);
}

// The registers of a wire, two in an element of area 14: the lower register is the lower half.
Elements elementsOf(const std::string& wire, int area)
{
    Elements elements;
    for (std::size_t at = 0; at < wire.size(); at += 2) {
        const quint32 word = byteOf(wire, at) << 8 | byteOf(wire, at + 1);
        if (area == 14 && at % 4 != 0)
            elements.back() |= word << 16;
        else
            elements.push_back(word);
    }
    return elements;
}

// The value's bytes, the most significant one first.
template <class Number>
std::string bytesOf(Number number)
{
    std::string bytes(sizeof number, '\0');
    std::memcpy(&bytes[0], &number, sizeof number);
    return std::string(bytes.rbegin(), bytes.rend());
}

ListedVariable variableOf(ValueType type, int area, int count, WordOrder order)
{
    ListedVariable variable;
    variable.name = QStringLiteral("it");
    variable.type = type;
    variable.count = count;
    variable.order = order;
    variable.elements.area = area;
    variable.elements.count = plc::elementsOfType(type, area, count);
    return variable;
}

// Any bits, and those that mean something special.
template <class Number>
rc::Gen<Number> anyFloat()
{
    return rc::gen::oneOf(rc::gen::map(rc::gen::arbitrary<std::array<unsigned char, sizeof(Number)>>(),
                                       [](const std::array<unsigned char, sizeof(Number)>& bytes) {
                                           Number number = 0;
                                           std::memcpy(&number, bytes.data(), sizeof number);
                                           return number;
                                       }),
                          rc::gen::map(rc::gen::arbitrary<int>(), [](int n) { return Number(n) / 4; }));
}

// In words and double words, in every order: shown as \a text says, and written as it is shown.
template <class Number>
void isShownAndWritten(ValueType type, const rc::Gen<Number>& numbers, std::string (*text)(Number))
{
    test::holds(100, [&] {
        const int area = *rc::gen::element(9, 10, 13, 14);
        const WordOrder order = *rc::gen::elementOf(orders);
        const auto values = *rc::gen::nonEmpty(test::upTo<std::vector<Number>>(6, numbers));
        const ListedVariable variable = variableOf(type, area, static_cast<int>(values.size()), order);
        std::string expected;
        Elements elements;
        for (const Number value : values) {
            expected += (expected.empty() ? "" : ",") + text(value);
            const Elements one = elementsOf(onTheWire(bytesOf(value), order), area);
            elements.insert(elements.end(), one.begin(), one.end());
        }
        const QString shown = plc::listedTexts(variable, elements).join(QLatin1Char(','));
        RC_ASSERT(shown.toStdString() == expected);
        QString error;
        RC_ASSERT(plc::parseListed(variable, shown, &error) == elements);
    });
}

template <class Number>
std::string decimal(Number number)
{
    return std::to_string(number);
}

// Floating-point numbers: the text that reads back as the same value.
template <class Number>
void isReadBack(ValueType type)
{
    test::holds(300, [&] {
        const int area = *rc::gen::element(9, 14);
        const WordOrder order = *rc::gen::elementOf(orders);
        const Number value = *anyFloat<Number>();
        const ListedVariable variable = variableOf(type, area, 1, order);
        const Elements elements = elementsOf(onTheWire(bytesOf(value), order), area);
        const QString shown = plc::listedTexts(variable, elements).value(0);
        RC_PRE(std::isfinite(value));
        bool ok = false;
        RC_ASSERT(static_cast<Number>(shown.toDouble(&ok)) == value);
        RC_ASSERT(ok);
        QString error;
        const auto again = plc::parseListed(variable, shown, &error);
        RC_ASSERT(again == elements);
    });
}

// Decimal digits, the last one in the low four bits.
template <class Number>
void isBinaryCodedDecimal(ValueType type, int digits)
{
    test::holds(100, [&] {
        const int area = *rc::gen::element(9, 14);
        RC_PRE(plc::elementsOfType(type, area, 1) > 0);
        const WordOrder order = sizeof(Number) == 2 ? WordOrder::Usual : *rc::gen::elementOf(orders);
        const auto drawn =
            *rc::gen::container<std::vector<int>>(static_cast<std::size_t>(digits), rc::gen::inRange(0, 10));
        Number coded = 0;
        long long meant = 0;
        for (const int digit : drawn) {
            coded = static_cast<Number>(coded << 4 | static_cast<Number>(digit));
            meant = meant * 10 + digit;
        }
        const ListedVariable variable = variableOf(type, area, 1, order);
        const Elements elements = elementsOf(onTheWire(bytesOf(coded), order), area);
        const QString shown = plc::listedTexts(variable, elements).value(0);
        RC_ASSERT(shown.toStdString() == std::to_string(meant));
        QString error;
        RC_ASSERT(plc::parseListed(variable, shown, &error) == elements);
    });
}

} // namespace

TEST(Values, OfInt32AreShownAndWrittenInEveryOrder)
{
    isShownAndWritten<qint32>(ValueType::Int32, rc::gen::arbitrary<qint32>(), decimal<qint32>);
}

TEST(Values, OfUint32AreShownAndWrittenInEveryOrder)
{
    isShownAndWritten<quint32>(ValueType::Uint32, rc::gen::arbitrary<quint32>(), decimal<quint32>);
}

TEST(Values, OfInt64AreShownAndWrittenInEveryOrder)
{
    isShownAndWritten<qint64>(ValueType::Int64, rc::gen::arbitrary<qint64>(), decimal<qint64>);
}

TEST(Values, OfUint64AreShownAndWrittenInEveryOrder)
{
    isShownAndWritten<quint64>(ValueType::Uint64, rc::gen::arbitrary<quint64>(), decimal<quint64>);
}

TEST(Values, OfFloat32ReadBackAsTheSame)
{
    isReadBack<float>(ValueType::Float32);
}

TEST(Values, OfFloat64ReadBackAsTheSame)
{
    isReadBack<double>(ValueType::Float64);
}

TEST(Values, OfBcd16AreTheirDigits)
{
    isBinaryCodedDecimal<quint16>(ValueType::Bcd16, 4);
}

TEST(Values, OfBcd32AreTheirDigits)
{
    isBinaryCodedDecimal<quint32>(ValueType::Bcd32, 8);
}

TEST(Values, Of16BitsAreShownAndWrittenInWords)
{
    test::holds(100, [] {
        const quint16 word = *rc::gen::arbitrary<quint16>();
        QString error;
        const ListedVariable asInt16 = variableOf(ValueType::Int16, 9, 1, WordOrder::Usual);
        const ListedVariable asUint16 = variableOf(ValueType::Uint16, 9, 1, WordOrder::Usual);
        RC_ASSERT(plc::listedText(asInt16, {word}).toStdString() ==
                  std::to_string(static_cast<qint16>(word)));
        RC_ASSERT(plc::listedText(asUint16, {word}).toStdString() == std::to_string(word));
        RC_ASSERT(plc::parseListed(asInt16, plc::listedText(asInt16, {word}), &error) == Elements{word});
        RC_ASSERT(plc::parseListed(asUint16, plc::listedText(asUint16, {word}), &error) == Elements{word});
    });
}

TEST(Values, OfHexAreShownAndWrittenWithAllDigitsOfTheirElements)
{
    test::holds(100, [] {
        const bool isDouble = *rc::gen::arbitrary<bool>();
        const auto drawn = *rc::gen::nonEmpty(test::upTo<Elements>(6, rc::gen::arbitrary<quint32>()));
        Elements elements;
        std::string expected;
        for (const quint32 any : drawn) {
            elements.push_back(isDouble ? any : any & 0xFFFF);
            char text[11];
            std::snprintf(text, sizeof text, isDouble ? "0x%08x" : "0x%04x", elements.back());
            expected += (expected.empty() ? "" : ",") + std::string(text);
        }
        const ListedVariable variable = variableOf(ValueType::Hex, isDouble ? 14 : 9,
                                                   static_cast<int>(elements.size()), WordOrder::Usual);
        const QString shown = plc::listedTexts(variable, elements).join(QLatin1Char(','));
        RC_ASSERT(shown.toStdString() == expected);
        QString error;
        RC_ASSERT(plc::parseListed(variable, shown, &error) == elements);
    });
}

TEST(Values, OfBitsAreShownAsDigitsAndWrittenInWordsToo)
{
    test::holds(50, [] {
        const int area = *rc::gen::inRange(1, 9);
        const auto bits = *rc::gen::nonEmpty(test::upTo<std::vector<bool>>(20, rc::gen::arbitrary<bool>()));
        Elements elements;
        std::string expected;
        QStringList words;
        for (const bool bit : bits) {
            elements.push_back(bit ? 1 : 0);
            expected += bit ? '1' : '0';
            words << (bit ? *rc::gen::element("1", "true", "on") : *rc::gen::element("0", "false", "off"));
        }
        const ListedVariable variable =
            variableOf(ValueType::Bit, area, static_cast<int>(bits.size()), WordOrder::Usual);
        RC_ASSERT(plc::listedTexts(variable, elements).join(QString()).toStdString() == expected);
        QString error;
        RC_ASSERT(plc::parseListed(variable, words.join(QLatin1Char(',')), &error) == elements);
    });
}

// Four characters are a letter each; of two that are left over the bytes of their word are.
TEST(Values, OfTextAreTheirCharactersInEveryOrder)
{
    test::holds(200, [] {
        const int area = *rc::gen::element(9, 14);
        const WordOrder order = *rc::gen::elementOf(orders);
        const std::size_t unit = area == 14 ? 4 : 2;
        std::string text =
            *rc::gen::nonEmpty(test::upTo<std::string>(12, rc::gen::inRange<char>('a', 'z' + 1)));
        const std::string shown = text;
        text.resize((text.size() + unit - 1) / unit * unit, '\0');
        std::string wire;
        const std::string letters = order == WordOrder::Usual ? "BADC" : lettersOf.at(order);
        for (std::size_t at = 0; at < text.size(); at += 4) {
            if (text.size() - at >= 4)
                for (const char letter : letters)
                    wire += text[at + static_cast<std::size_t>(letter - 'A')];
            else
                wire += letters == "ABCD" || letters == "CDAB" ? text.substr(at, 2)
                                                               : std::string{text[at + 1], text[at]};
        }
        const ListedVariable variable =
            variableOf(ValueType::Text, area, static_cast<int>(shown.size()), order);
        const Elements elements = elementsOf(wire, area);
        RC_ASSERT(plc::listedText(variable, elements).toStdString() == '"' + shown + '"');
        QString error;
        RC_ASSERT(plc::parseListed(variable, QString::fromStdString(shown), &error) == elements);
    });
}
