// SPDX-License-Identifier: MIT
#include "runtime/model/variable_list.h"

#include "runtime/model/list_columns.h"

#include <gtest/gtest.h>

#include <QTemporaryFile>

namespace plc
{

namespace
{

const QByteArray header = "name,area,address,station,count,type\n";

/// The only error that a line causes, without the line's own text.
QString errorOf(const QByteArray& line)
{
    const VariableList list = parseVariableList(header + line + "\n");
    EXPECT_EQ(list.errors.size(), 1) << line.constData();
    return list.errors.isEmpty() ? QString() : list.errors.first().section(QLatin1Char('\n'), 0, 0);
}

} // namespace

TEST(VariableList, HoldsOneVariableALine)
{
    const VariableList list = parseVariableList(header + "speed,9,100,3,2,int16\n"
                                                         "lamp,0,17,1,1,bit\n");
    EXPECT_TRUE(list.errors.isEmpty());
    ASSERT_EQ(list.variables.size(), 2u);
    const ListedVariable& speed = list.variables[0];
    EXPECT_EQ(speed.name, QStringLiteral("speed"));
    EXPECT_EQ(speed.elements.area, 9);
    EXPECT_EQ(speed.elements.element, 100);
    EXPECT_EQ(speed.elements.station, 3);
    EXPECT_EQ(speed.elements.count, 2);
    EXPECT_EQ(speed.type, ValueType::Int16);
    EXPECT_EQ(speed.line, 2);
    EXPECT_EQ(list.variables[1].elements.element, 15); // octal
}

TEST(VariableList, FindsItsColumnsByNameInAnyOrder)
{
    const VariableList list =
        parseVariableList("Comment,Type,Unit,address,Max,AREA,name,access,digits,order,offset,scale,min\n"
                          "\"left, upper\",int32,bar,100,16.5,9,pressure,r,2,abcd,-1,0.01,0\n");
    ASSERT_EQ(list.errors, QStringList());
    const ListedVariable& pressure = list.variables.at(0);
    EXPECT_EQ(pressure.name, QStringLiteral("pressure"));
    EXPECT_EQ(pressure.elements.area, 9);
    EXPECT_EQ(pressure.elements.element, 100);
    EXPECT_EQ(pressure.elements.count, 2);
    EXPECT_EQ(pressure.elements.station, -1);
    EXPECT_EQ(pressure.type, ValueType::Int32);
    EXPECT_EQ(pressure.order, WordOrder::Abcd);
    EXPECT_EQ(pressure.scale, 0.01);
    EXPECT_EQ(pressure.offset, -1);
    EXPECT_EQ(pressure.unit, QStringLiteral("bar"));
    EXPECT_EQ(pressure.digits, 2);
    EXPECT_EQ(pressure.min, 0.0);
    EXPECT_EQ(pressure.max, 16.5);
    EXPECT_EQ(pressure.access, Access::ReadOnly);
    EXPECT_EQ(pressure.comment, QStringLiteral("left, upper"));
}

TEST(VariableList, SaysHowManyElementsMakeAValueThatNoRequestMayCut)
{
    const VariableList list =
        parseVariableList(header + "a,9,0,,2,int64\nb,14,200,,2,float64\nc,9,20,,,bcd32\nd,9,30,,9,text\n");
    ASSERT_EQ(list.errors, QStringList());
    EXPECT_EQ(list.variables.at(0).elements.valueElements, 4);
    EXPECT_EQ(list.variables.at(1).elements.valueElements, 2);
    EXPECT_EQ(list.variables.at(2).elements.valueElements, 2);
    EXPECT_EQ(list.variables.at(3).elements.valueElements, 1);
}

TEST(VariableList, MakesNoValueShorterByItsOrder)
{
    const VariableList list =
        parseVariableList("name,area,address,type,order,count\na,9,0,int64,CDAB,1\n"
                          "b,9,20,int32,DCBA,1\nc,9,30,text,CDAB,8\nd,9,40,text,BADC,8\n"
                          "e,14,200,text,CDAB,4\n");
    ASSERT_EQ(list.errors, QStringList());
    EXPECT_EQ(list.variables.at(0).elements.valueElements, 4);
    EXPECT_EQ(list.variables.at(1).elements.valueElements, 2);
    EXPECT_EQ(list.variables.at(2).elements.valueElements, 2);
    EXPECT_EQ(list.variables.at(3).elements.valueElements, 1);
    EXPECT_EQ(list.variables.at(4).elements.valueElements, 1);
}

TEST(VariableList, NeedsNoMoreThanNameAreaAddressAndType)
{
    const VariableList list = parseVariableList("name,area,address,type\nspeed,9,100,int16\n");
    ASSERT_EQ(list.errors, QStringList());
    const ListedVariable& speed = list.variables.at(0);
    EXPECT_EQ(speed.count, 1);
    EXPECT_EQ(speed.order, WordOrder::Usual);
    EXPECT_EQ(speed.scale, 1);
    EXPECT_EQ(speed.offset, 0);
    EXPECT_EQ(speed.digits, -1);
    EXPECT_FALSE(speed.min || speed.max);
    EXPECT_EQ(speed.access, Access::Unsaid);
    EXPECT_EQ(parseVariableList("name,area,address\n").errors.at(0).section(QLatin1Char(','), 0, 1),
              QStringLiteral("line 1: the first line must name the columns, and type is missing among them"));
}

TEST(VariableList, NamesEachColumnThatItNeedsAndMisses)
{
    const QStringList needed = {"name", "area", "address", "type"};
    for (const QString& missing : needed) {
        QStringList others = needed;
        others.removeAll(missing);
        const QString error = parseVariableList(others.join(',').toUtf8() + '\n').errors.join(QString());
        EXPECT_TRUE(error.contains(", and " + missing + " is missing among them")) << error.toStdString();
    }
}

TEST(VariableList, HasNothingOfNumbersForWhatIsNone)
{
    for (const char* column : {"scale", "offset", "digits", "min", "max", "deadband"}) {
        for (const char* type : {"text", "hex"}) {
            const QString error =
                parseVariableList(QByteArray("name,area,address,type,") + column + "\na,9,0," + type + ",1\n")
                    .errors.join(QString());
            const QString words =
                QStringLiteral("type %1 has no %2, only numbers have; leave the field empty");
            EXPECT_TRUE(error.contains(words.arg(QLatin1String(type), QLatin1String(column))))
                << error.toStdString();
        }
    }
}

TEST(VariableList, TakesSemicolonsAndThenADecimalComma)
{
    const VariableList list = parseVariableList("\xEF\xBB\xBFname;area;address;type;scale;min;max\r\n"
                                                "oven, left;11;20;int16;0,1;-5;90.5\r\n"
                                                ";;;;;;\r\n");
    ASSERT_EQ(list.errors, QStringList());
    EXPECT_EQ(list.variables.at(0).name, QStringLiteral("oven, left"));
    EXPECT_EQ(list.variables.at(0).scale, 0.1);
    EXPECT_EQ(list.variables.at(0).min, -5.0);
    EXPECT_EQ(list.variables.at(0).max, 90.5);
}

TEST(VariableList, TakesNoDecimalCommaBetweenCommas)
{
    const VariableList list = parseVariableList("name,area,address,type,scale\noven,11,20,int16,\"0,1\"\n");
    ASSERT_EQ(list.errors.size(), 1);
    EXPECT_TRUE(list.errors[0].startsWith(
        QStringLiteral("line 2: \"0,1\" is no scale; a number such as 0.1 is expected\n")));
}

TEST(VariableList, NamesTheColumnsThatThereAreForOneThatItDoesNotKnow)
{
    const VariableList list = parseVariableList("name,area,address,type,colour\nspeed,9,100,int16,red\n");
    ASSERT_EQ(list.errors.size(), 1);
    EXPECT_TRUE(list.errors[0].startsWith(QStringLiteral(
        "line 1: the first line must name the columns, and \"colour\" is none of them: name, area, address, "
        "station, count, type, order, scale, offset, unit, digits, min, max, access, deadband, comment\n")));
    EXPECT_TRUE(parseVariableList("name,area,type,address,Area\n")
                    .errors.join(QString())
                    .startsWith(QStringLiteral("line 1: the column area is there twice\n")));
    EXPECT_TRUE(parseVariableList("name,area,type,address,name\n")
                    .errors.join(QString())
                    .startsWith(QStringLiteral("line 1: the column name is there twice\n")));
}

TEST(VariableList, HasNamesUnitsAndDigitsUpToTheirLimits)
{
    const auto errors = [](const QByteArray& name, const QByteArray& unit, const char* digits) {
        return parseVariableList("name,area,address,type,unit,digits\n" + name + ",9,0,int16," + unit + ',' +
                                 digits + '\n')
            .errors.join(QLatin1Char('\n'));
    };
    EXPECT_EQ(errors(QByteArray(200, 'n'), QByteArray(20, 'u'), "15"), QString());
    EXPECT_EQ(errors("n", "u", "0"), QString());
    EXPECT_TRUE(errors(QByteArray(201, 'n'), "u", "0").contains(QStringLiteral("201 characters; 200 are")));
    EXPECT_TRUE(errors("n", QByteArray(21, 'u'), "0").contains(QStringLiteral("21 characters; 20 are")));
    EXPECT_TRUE(errors("n", "u", "16").contains(QStringLiteral("0 to 15 is expected")));
}

TEST(VariableList, HasLinesUpToTheirLimit)
{
    const QByteArray begin = "n,9,0,int16,";
    const auto errors = [&](int size) {
        return parseVariableList("name,area,address,type,comment\n" + begin +
                                 QByteArray(size - begin.size(), 'c') + '\n')
            .errors.join(QLatin1Char('\n'));
    };
    EXPECT_EQ(errors(2000), QString());
    EXPECT_TRUE(errors(2001).contains(QStringLiteral("it has 2001 bytes; 2000 are allowed")));
}

TEST(VariableList, ShowsAHundredCharactersOfAWrongField)
{
    EXPECT_TRUE(errorOf("a,9,0,1,1," + QByteArray(100, 'x')).contains('"' + QString(100, 'x') + '"'));
    EXPECT_TRUE(errorOf("a,9,0,1,1," + QByteArray(101, 'x')).contains('"' + QString(100, 'x') + "...\""));
}

TEST(VariableListGuide, HasItsColumnsOneBeneathTheOther)
{
    const QStringList lines = listGuide().split(QLatin1Char('\n'));
    EXPECT_EQ(lines.at(0),
              QStringLiteral("  name    *  what the value is shown under; no other line has it"));
    EXPECT_EQ(lines.at(3), QStringLiteral("  station    0 to 255; empty: that of --station"));
}

TEST(VariableList, HasNoTextThatEndsBetweenTwoWordsThatBelongTogether)
{
    const auto list = [](const char* fields) {
        return parseVariableList(QByteArray("name,area,address,count,type,order\na,") + fields);
    };
    for (const char* order : {"CDAB", "DCBA"}) {
        const auto with = [&](const char* fields) {
            return list((QByteArray(fields) + ",text," + order).constData());
        };
        EXPECT_EQ(
            with("9,0,9").errors.value(0).section(QLatin1Char('\n'), 0, 0).toStdString(),
            std::string("line 2: in order ") + order +
                " four characters of a text lie in two words, and a count of 9 ends in the midst of them; 12 "
                "is expected, or order ABCD or BADC, which go word by word");
        EXPECT_EQ(with("9,0,2").errors.size(), 1);
        EXPECT_EQ(with("9,0,11").variables.at(0).elements.valueElements, 2);
        EXPECT_EQ(with("9,0,12").variables.at(0).elements.count, 6);
        EXPECT_EQ(with("14,200,9").variables.at(0).elements.count, 3); // a double word holds four
    }
    EXPECT_EQ(list("9,0,9,text,ABCD").variables.at(0).elements.count, 5);
    EXPECT_EQ(list("9,0,9,text,").variables.at(0).elements.valueElements, 1);
}

TEST(VariableList, SaysWhatIsExpectedOfEachFieldThatMayBeLeftOut)
{
    const auto error = [](const char* column, const char* type, const char* field) {
        const QByteArray csv =
            QByteArray("name,area,address,type,") + column + "\na,9,0," + type + ',' + field;
        return parseVariableList(csv).errors.value(0).section(QLatin1Char('\n'), 0, 0).toStdString();
    };
    EXPECT_EQ(error("order", "int32", "DABC"),
              "line 2: \"DABC\" is no order; ABCD, CDAB, BADC, DCBA is expected, or nothing");
    EXPECT_EQ(error("order", "int16", "ABCD"),
              "line 2: type int16 lies in one word here and has no order; leave the field empty");
    EXPECT_EQ(error("scale", "int16", "0"), "line 2: the scale is 0, so that every value would be the same");
    EXPECT_EQ(error("offset", "int16", "nan"),
              "line 2: \"nan\" is no offset; a number such as 0.1 is expected");
    EXPECT_EQ(error("scale", "text", "2"),
              "line 2: type text has no scale, only numbers have; leave the field empty");
    EXPECT_EQ(error("digits", "int16", "16"), "line 2: \"16\" is no digits; 0 to 15 is expected");
    EXPECT_EQ(error("unit", "int16", "a unit of more than 20"),
              "line 2: the unit has 22 characters; 20 are allowed");
    EXPECT_EQ(error("min,max", "int16", "2,1"),
              "line 2: min is above max, so that no value would lie between them");
    EXPECT_EQ(error("min,max", "int16", "2,2"), "") << "one value is left";
    EXPECT_EQ(error("deadband", "int16", "-1"), "line 2: \"-1\" is no deadband; 0 or more is expected");
    EXPECT_EQ(error("deadband", "hex", "1"),
              "line 2: type hex has no deadband, only numbers have; leave the field empty");
    EXPECT_EQ(error("access", "int16", "w"), "line 2: \"w\" is no access; r or rw is expected, or nothing");
}

TEST(VariableList, HasADeadBandInTheUnitOfWhatIsShown)
{
    const VariableList list =
        parseVariableList("name,area,address,type,deadband\na,9,0,int16,0.5\nb,9,1,int16,\n");
    ASSERT_EQ(list.errors, QStringList());
    EXPECT_EQ(list.variables.at(0).deadband, 0.5);
    EXPECT_EQ(list.variables.at(1).deadband, 0);
}

TEST(VariableList, RefusesToCallAnAreaWritableThatIsNot)
{
    const VariableList list = parseVariableList("name,area,address,type,access\nstop,0,0,bit,rw\n");
    EXPECT_TRUE(list.errors.join(QString()).startsWith(
        QStringLiteral("line 2: the access is rw, but area 0 can only be read\n")));
}

TEST(VariableList, SkipsCommentsAndBlankLines)
{
    const VariableList list =
        parseVariableList("# a machine\n\n" + header + "\n  # inside\nspeed,9,1,,,uint16\n\n");
    EXPECT_TRUE(list.errors.isEmpty());
    ASSERT_EQ(list.variables.size(), 1u);
    EXPECT_EQ(list.variables[0].line, 6);
}

TEST(VariableList, TakesAnEmptyStationAndCountAsThePanelsOwnAndOne)
{
    const VariableList list = parseVariableList(header + "speed,9,1,,,uint16\n");
    ASSERT_EQ(list.variables.size(), 1u);
    EXPECT_EQ(list.variables[0].elements.station, -1);
    EXPECT_EQ(list.variables[0].elements.count, 1);
}

TEST(VariableList, TakesQuotedFieldsSpacesWindowsLineEndsAndAByteOrderMark)
{
    const VariableList list = parseVariableList(
        "\xEF\xBB\xBFname,area,address,station,count,type\r\n\"speed, \"\"left\"\"\" , 9, 1 ,1,1, INT16\r\n");
    EXPECT_EQ(list.errors.join(QString()), QString());
    ASSERT_EQ(list.variables.size(), 1u);
    EXPECT_EQ(list.variables[0].name, QStringLiteral("speed, \"left\""));
}

TEST(VariableList, CountsValuesNotElements)
{
    const VariableList list =
        parseVariableList(header + "a,9,0,1,2,float32\nb,14,200,1,2,int32\nc,9,20,1,5,text\n");
    ASSERT_EQ(list.variables.size(), 3u);
    EXPECT_EQ(list.variables[0].elements.count, 4);
    EXPECT_EQ(list.variables[1].elements.count, 2);
    EXPECT_EQ(list.variables[2].elements.count, 3);
    EXPECT_EQ(list.variables[0].count, 2);
    EXPECT_EQ(list.variables[2].count, 5);
}

TEST(VariableList, ReportsAllWrongLinesAtOnceWithNumberAndText)
{
    const VariableList list = parseVariableList(header + "a,15,0,1,1,bit\nb,9,5,1,1,uint16\nc,0,8,1,1,bit\n");
    ASSERT_EQ(list.errors.size(), 2);
    EXPECT_EQ(list.errors[0],
              QStringLiteral("line 2: \"15\" is no area; 0 to 14 is expected\n    a,15,0,1,1,bit"));
    EXPECT_TRUE(
        list.errors[1].startsWith(QStringLiteral("line 4: \"8\" is no address of area 0; octal digits")));
    EXPECT_TRUE(list.errors[1].endsWith(QStringLiteral("\n    c,0,8,1,1,bit")));
}

TEST(VariableList, SaysWhatIsExpectedOfEachField)
{
    EXPECT_EQ(errorOf(",9,0,1,1,uint16"),
              QStringLiteral("line 2: the name is missing; it is what the value is shown under"));
    EXPECT_EQ(errorOf("a,,0,1,1,uint16"), QStringLiteral("line 2: \"\" is no area; 0 to 14 is expected"));
    EXPECT_EQ(errorOf("a,9,0,256,1,uint16"),
              QStringLiteral("line 2: \"256\" is no station; 0 to 255 is expected"));
    EXPECT_EQ(errorOf("a,9,0,1,0,uint16"),
              QStringLiteral("line 2: \"0\" is no count; 1 to 65535 is expected"));
    EXPECT_EQ(errorOf("a,9,0,1,1,bit"),
              QStringLiteral(
                  "line 2: \"bit\" is no type of area 9; it holds int16, uint16, int32, uint32, float32, "
                  "hex, text, int64, uint64, float64, bcd16, bcd32"));
    EXPECT_EQ(
        errorOf("a,9,0,1,1"),
        QStringLiteral("line 2: it has 5 fields; 6 are expected: name,area,address,station,count,type"));
}

TEST(VariableList, RefusesARunPastTheEndOfItsArea)
{
    EXPECT_EQ(errorOf("a,9,65534,1,1,int32"),
              QStringLiteral("line 2: 2 elements from 65534 on run past the end of "
                             "area 9; at most 1 are there"));
    EXPECT_TRUE(errorOf("a,9,0,1,65535,int32").contains(QStringLiteral("run past the end")));
}

TEST(VariableList, RefusesANameTwice)
{
    const VariableList list = parseVariableList(header + "a,9,0,1,1,int16\na,9,1,1,1,int16\n");
    ASSERT_EQ(list.errors.size(), 1);
    EXPECT_TRUE(list.errors[0].startsWith(QStringLiteral("line 3: the name \"a\" is taken by line 2")));
}

TEST(VariableList, RefusesANameThatATerminalWouldActOn)
{
    EXPECT_TRUE(errorOf("a\xE2\x80\xAE,9,0,1,1,int16").contains(QStringLiteral("cannot be shown")));
}

TEST(VariableList, RepeatsAWrongLineWithoutWhatATerminalWouldActOn)
{
    const VariableList list = parseVariableList(header + "a\x1b[2J,9\n");
    ASSERT_EQ(list.errors.size(), 1);
    EXPECT_TRUE(list.errors[0].endsWith(QStringLiteral("\n    a.[2J,9")));
}

TEST(VariableList, QuotesAWrongFieldWithoutWhatATerminalWouldActOn)
{
    EXPECT_TRUE(errorOf("a,9,\xC2\x9B"
                        "2J,,,int16")
                    .startsWith(QStringLiteral("line 2: \".2J\" is no address")));
}

TEST(VariableList, QuotesPercentSignsAsTheyAre)
{
    EXPECT_TRUE(errorOf("a,%3,0,,,int16").startsWith(QStringLiteral("line 2: \"%3\" is no area; 0 to 14")));
    EXPECT_TRUE(errorOf("a,9,0,,,%2").startsWith(QStringLiteral("line 2: \"%2\" is no type of area 9")));
    const QString doubled = errorOf("%2,9,0,,,int16\n%2,9,1,,,int16");
    EXPECT_TRUE(doubled.startsWith(QStringLiteral("line 3: the name \"%2\" is taken by line 2")));
}

TEST(VariableList, TellsWhatElseIsAgainstAVariableAmongTheOtherErrors)
{
    const VariableList list =
        parseVariableList(header + "a,9,0,1,1,int17\nb,9,0,2,1,int16\nc,9\nd,9,1,1,1,int16\n",
                          [](const ListedVariable& variable) {
                              return variable.elements.station == 2 ? QStringLiteral("not here") : QString();
                          });
    ASSERT_EQ(list.errors.size(), 3);
    EXPECT_TRUE(list.errors[0].startsWith(QStringLiteral("line 2: ")));
    EXPECT_EQ(list.errors[1], QStringLiteral("line 3: not here\n    b,9,0,2,1,int16"));
    EXPECT_TRUE(list.errors[2].startsWith(QStringLiteral("line 4: ")));
}

TEST(VariableList, RefusesQuotesThatDoNotMatch)
{
    EXPECT_TRUE(errorOf("\"a,9,0,1,1,int16").contains(QStringLiteral("quotes do not match")));
    EXPECT_TRUE(errorOf("a\"b,9,0,1,1,int16").contains(QStringLiteral("quotes do not match")));
}

TEST(VariableList, NeedsTheHeaderLine)
{
    EXPECT_TRUE(parseVariableList("speed,9,1,1,1,int16\n")
                    .errors.join(QString())
                    .startsWith(QStringLiteral("line 1: the first line must name the columns")));
    EXPECT_TRUE(parseVariableList("").errors.join(QString()).contains(QStringLiteral("the list is empty")));
}

TEST(VariableList, SurvivesBytesThatAreNoText)
{
    QByteArray bytes = header;
    for (int byte = 0; byte < 256; ++byte)
        bytes.append(static_cast<char>(byte));
    EXPECT_FALSE(parseVariableList(bytes).errors.isEmpty());
}

TEST(VariableList, SaysWhichFileCannotBeRead)
{
    const VariableList list = readVariableList(QStringLiteral("/no/such/file.csv"));
    ASSERT_EQ(list.errors.size(), 1);
    EXPECT_TRUE(list.errors[0].startsWith(QStringLiteral("cannot read it: ")));
}

TEST(VariableList, SaysWhatKeptAnOpenFileFromBeingRead)
{
    const VariableList list =
        readVariableList(QStringLiteral("/proc/self/mem")); // opens, and its start has nothing
    ASSERT_EQ(list.errors.size(), 1);
    EXPECT_TRUE(list.errors[0].startsWith(QStringLiteral("cannot read it: ")))
        << list.errors[0].toStdString();
}

TEST(VariableList, IsReadUpToItsLongestAndNoFurther)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open() && file.resize(longestListBytes));
    EXPECT_TRUE(readVariableList(file.fileName()).errors.value(0).startsWith(QStringLiteral("line 1: ")));
    ASSERT_TRUE(file.resize(longestListBytes + 1));
    EXPECT_EQ(readVariableList(file.fileName()).errors,
              QStringList(QStringLiteral("it is longer than 64 MiB; a list of variables is expected")));
}

TEST(VariableList, RefusesControlCharactersWithTheirLine)
{
    EXPECT_TRUE(errorOf(QByteArray("speed,9,1\0005,,1,uint16", 22))
                    .startsWith(QStringLiteral("line 2: character 10 is a control character (0x00)")));
    EXPECT_TRUE(
        errorOf("speed,9,1\x1b,,1,uint16").startsWith(QStringLiteral("line 2: character 10 is a control")));
    EXPECT_TRUE(errorOf("# \x7f").startsWith(QStringLiteral("line 2: character 3 is a control")));
    EXPECT_TRUE(parseVariableList(header + "speed\t,9,\t1,,1,uint16\r\n").errors.isEmpty());
}

TEST(VariableList, ShowsNoMoreOfALineThanAPersonNeeds)
{
    const QString name = errorOf(QByteArray(300, 'n') + ",9,1,,1,uint16");
    EXPECT_EQ(name, QStringLiteral("line 2: the name has 300 characters; 200 are allowed"));
    const VariableList list = parseVariableList(header + QByteArray(5000000, 'n') + ",9,1,,1,uint16\n");
    ASSERT_EQ(list.errors.size(), 1);
    EXPECT_TRUE(
        list.errors.first().startsWith(QStringLiteral("line 2: it has 5000014 bytes; 2000 are allowed")));
    EXPECT_LT(list.errors.first().size(), 200);
    EXPECT_LT(errorOf("a,9," + QByteArray(1500, '7') + ",,1,uint16").size(), 300);
}

TEST(VariableList, TellsTwentyWrongLinesAndCountsTheOthers)
{
    const VariableList list = parseVariableList(header + QByteArray("nonsense\n").repeated(1000));
    ASSERT_EQ(list.errors.size(), 21);
    EXPECT_TRUE(list.errors.at(19).startsWith(QStringLiteral("line 21: ")));
    EXPECT_EQ(list.errors.at(20), QStringLiteral("and 980 more wrong lines"));
}

TEST(VariableList, IsLeftAfterTenThousandWrongLines)
{
    const VariableList list = parseVariableList(header + QByteArray("nonsense\n").repeated(20000));
    EXPECT_EQ(list.errors.last(),
              QStringLiteral("and 9980 more wrong lines; what is behind them was not looked at"));
}

TEST(VariableList, MayHaveSoManyVariablesAndNoMore)
{
    const QByteArray line("0000000,9,1,,,uint16\n");
    QByteArray csv = header + line.repeated(mostListedVariables + 2);
    char* name = csv.data() + header.size();
    for (int number = 0; number < mostListedVariables + 2; ++number, name += line.size())
        std::copy_n(QByteArray::number(9000000 - number).constData(), 7, name);
    const VariableList list = parseVariableList(csv);
    EXPECT_EQ(list.variables.size(), static_cast<std::size_t>(mostListedVariables));
    ASSERT_EQ(list.errors.size(), 2);
    EXPECT_TRUE(
        list.errors.first().startsWith(QStringLiteral("line 1000002: 1000000 variables are above it")));
}

TEST(VariableList, TellsTheLineThatIsNoUtf8)
{
    EXPECT_EQ(errorOf("K\xFChler,9,1,,1,uint16"),
              QStringLiteral("line 2: byte 2 is no UTF-8 (0xfc); text in UTF-8 is expected"));
    EXPECT_TRUE(
        errorOf("# \xC0\x80").contains(QStringLiteral("byte 3 is no UTF-8 (0xc0)"))); // too long for a zero
    EXPECT_TRUE(
        errorOf("a\xED\xA0\x80,9,1,,1,uint16").contains(QStringLiteral("byte 2"))); // half a character
    EXPECT_TRUE(
        errorOf("a\xF4\x90\x80\x80,9,1,,1,uint16").contains(QStringLiteral("byte 2")));   // beyond the last
    EXPECT_TRUE(errorOf("a,9,1,,1,uint16,\xE2\x82").contains(QStringLiteral("byte 17"))); // cut off
    EXPECT_TRUE(parseVariableList(header + "\xE2\x82\xAC \xC3\xA4 \xF0\x9F\x94\xA5,9,1,,1,uint16\n")
                    .errors.isEmpty());
}

/// \return a list of \a csv that comes as a file
VariableList readAsFile(const QByteArray& csv)
{
    QTemporaryFile file;
    EXPECT_TRUE(file.open());
    file.write(csv);
    file.close();
    return readVariableList(file.fileName());
}

TEST(VariableList, OfAFileIsThatOfItsText)
{
    QByteArray csv = "\xEF\xBB\xBF" + header;
    for (int line = 0; line < 20000; ++line) // longer than what is read at once, with lines of every length
        csv += "  v" + QByteArray::number(line) + QByteArray(line % 170, 'x') + ",9,1,,,uint16" +
               QByteArray(line % 7, ' ') + (line % 3 == 0 ? "\r\n" : "\n");
    csv += "last,9,1,,,uint16";
    const VariableList list = readAsFile(csv);
    EXPECT_EQ(list.errors, QStringList());
    const VariableList whole = parseVariableList(csv);
    ASSERT_EQ(list.variables.size(), 20001U);
    ASSERT_EQ(whole.variables.size(), 20001U);
    for (std::size_t index = 0; index < list.variables.size(); ++index) {
        ASSERT_EQ(list.variables[index].name, whole.variables[index].name);
        ASSERT_EQ(list.variables[index].line, static_cast<int>(index) + 2);
    }
}

TEST(VariableList, OfAFileCountsTheBytesOfALongLineWithoutTheBlanksAroundIt)
{
    const QByteArray many(3000000, 'n');
    const QByteArray blanks(600000, ' ');
    EXPECT_TRUE(readAsFile(header + blanks + many + ' ' + many + blanks + "\r\nspeed,9,1,,,uint16\n")
                    .errors.value(0)
                    .startsWith(QStringLiteral("line 2: it has 6000001 bytes; 2000 are allowed\n    nnn")));
    const VariableList blank = readAsFile(header + blanks + "\n" + blanks + "speed,9,1,,,uint16" + blanks);
    EXPECT_EQ(blank.errors, QStringList());
    EXPECT_EQ(blank.variables.size(), 1U);
    EXPECT_TRUE(readAsFile(QByteArray(1000000, '\0'))
                    .errors.value(0)
                    .startsWith(QStringLiteral("line 1: it has 1000000 bytes")));
}

TEST(VariableList, SharesTextsThatAreTheSame)
{
    const VariableList list =
        parseVariableList("name,area,address,type,unit,comment\na,9,1,int16,bar,left of the pump\n"
                          "b,9,2,int16,l,left of the pump\nc,9,3,int16,bar,\n");
    ASSERT_EQ(list.variables.size(), 3U);
    EXPECT_EQ(list.variables[0].unit.constData(), list.variables[2].unit.constData());
    EXPECT_EQ(list.variables[0].comment.constData(), list.variables[1].comment.constData());
    EXPECT_EQ(list.variables[1].unit, QStringLiteral("l"));
    EXPECT_EQ(list.variables[2].comment, QString());
}

TEST(VariableList, KeepsNoMemoryForTextsThatAreEmpty)
{
    const VariableList list =
        parseVariableList("name,area,address,type,unit,comment\na,9,1,int16,bar,left\nb,9,2,int16,, \n");
    ASSERT_EQ(list.variables.size(), 2U);
    EXPECT_TRUE(list.variables[1].unit.isNull());
    EXPECT_TRUE(list.variables[1].comment.isNull());
}

TEST(VariableList, TakesCharactersBeyondTheBasicPlane)
{
    const VariableList list = parseVariableList(header + "\xF0\x9F\x94\xA5,9,1,,1,uint16\n");
    ASSERT_EQ(list.errors, QStringList());
    EXPECT_EQ(list.variables.at(0).name.text().toUcs4().size(), 1);
}

} // namespace plc
