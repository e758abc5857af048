// SPDX-License-Identifier: MIT
// Any text as an address of any area. Input: area, then the text, as UTF-8 or as UTF-16.

#include "driver/plcdriver.h"
#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/driver_areas.h"
#include "fuzz/fuzz_target.h"
#include "varlist/address_text.h"

#include <cstring>

namespace
{

using fuzz::check;

const int noElement = -1;

// Row = area code; written down here once more, so that a slip in the driver's own table shows.
struct Rule {
    int base;
    int origin;
};
const Rule rules[fuzz::areaCount] = {{8, 0},  {8, 0},  {10, 0},    {10, 0}, {10, 0},
                                     {10, 0}, {10, 0}, {10, 8000}, {10, 0}, {10, 0},
                                     {10, 0}, {10, 0}, {10, 0},    {10, 0}, {10, 200}};

QString textOf(fuzz::ByteSource& source)
{
    const bool utf16 = source.flag();
    const std::string bytes = source.text(source.size());
    if (!utf16)
        return QString::fromUtf8(bytes.data(), static_cast<int>(bytes.size()));
    QString text(static_cast<int>(bytes.size() / 2), QChar());
    std::memcpy(text.data(), bytes.data(), bytes.size() / 2 * 2);
    return text;
}

// Digits only, few enough not to overflow; -1 for any other text.
int plainNumber(const QString& text, int base)
{
    if (text.isEmpty() || text.size() > 6)
        return -1;
    int number = 0;
    for (const QChar character : text) {
        const int digit = character.unicode() - '0';
        if (digit < 0 || digit >= base)
            return -1;
        number = number * base + digit;
    }
    return number;
}

// Plain texts are checked against an own calculation; what Qt takes beyond them (signs, spaces) is not.
void checkPlainText(int area, const QString& text, int element)
{
    const Rule& rule = rules[area];
    if (area == fuzz::bitOfWordArea) {
        const int dot = text.indexOf(QLatin1Char('.'));
        const int word = plainNumber(text.left(dot), 10);
        const int bit = plainNumber(text.mid(dot + 1), 10);
        if (dot >= 0 && word >= 0 && bit >= 0)
            check(element == word * 16 + bit, "word.bit is element word x 16 + bit");
        return;
    }
    const int number = plainNumber(text, rule.base);
    if (number >= 0)
        check(element == (number < rule.origin ? noElement : number - rule.origin),
              "a plain number is the element counted from the area's origin");
}

// Any other negative result would be taken for one by callers that compare with -1.
void checkNegative(int area, const QString& text, int element)
{
    if (element >= noElement)
        return;
    check(rules[area].origin == 0, "areas that do not begin at 0 refuse what lies before them with -1");
    check(text.contains(QLatin1Char('-')), "only a minus sign makes an element negative");
}

QString textOfElement(int area, int element)
{
    if (area == fuzz::bitOfWordArea)
        return QStringLiteral("%1.%2").arg(element / 16).arg(element % 16);
    return QString::number(static_cast<qlonglong>(element) + rules[area].origin, rules[area].base);
}

// The runtime's texts and the driver's elements are two names of one place: there is a way back.
void checkWayBack(int area, int element)
{
    // Numbers beyond 32 bits are no text of an element, and an area with an origin loses its last ones.
    if (element < 0 || element > INT_MAX - rules[area].origin)
        return;
    check(StringAddressToInt(area, textOfElement(area, element)) == element,
          "the text of an element names that element");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::ByteSource source(data, size);
    const int area = source.number();
    const QString text = textOf(source);
    const int element = StringAddressToInt(area, text);
    check(PLCAddressChangeIntef(area, text) == element, "the exported conversion is the driver's own");
    if (!fuzz::isKnownArea(area)) {
        check(element == 0, "an unknown area gives 0");
        return 0;
    }
    checkPlainText(area, text, element);
    checkNegative(area, text, element);
    checkWayBack(area, element);
    return 0;
}
