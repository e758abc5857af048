// SPDX-License-Identifier: MIT
// What the library shows to the loader: its dynamic symbols and the libraries that it needs.
#include "support/built_files.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace
{

// A sanitizer's runtime is a needed library of its own, so the list of those is for plain builds only.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
const bool SANITIZED = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
const bool SANITIZED = true;
#else
const bool SANITIZED = false;
#endif
#else
const bool SANITIZED = false;
#endif

std::vector<std::string> LinesOf(const std::string& command)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string text;
    char part[4096];
    while (pipe && fgets(part, sizeof part, pipe.get()))
        text += part;
    std::istringstream in(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

// Lines of "address type name"; the type is T for a function, B or D for a datum.
std::vector<std::string> DefinedSymbols(const std::string& types)
{
    std::vector<std::string> names;
    for (const std::string& line :
         LinesOf(std::string("LC_ALL=C nm -D --defined-only '") + builtDriver() + "'")) {
        std::istringstream in(line);
        std::string address, type, name;
        in >> address >> type >> name;
        if (types.empty() || types.find(type) != std::string::npos)
            names.push_back(name);
    }
    return names;
}

std::vector<std::string> NeededLibraries()
{
    std::vector<std::string> names;
    for (const std::string& line : LinesOf(std::string("LC_ALL=C readelf -d '") + builtDriver() + "'")) {
        const size_t open = line.find('['), close = line.find(']');
        if (line.find("(NEEDED)") != std::string::npos && close != std::string::npos)
            names.push_back(line.substr(open + 1, close - open - 1));
    }
    return names;
}

const std::vector<std::string> functions = {"ASCIIToDigital",
                                            "AddListOnceReadVar",
                                            "AddListReadVar",
                                            "AddListWriteVar",
                                            "CalCRC",
                                            "CalLRC",
                                            "CalSUM",
                                            "CalXOR",
                                            "ComCommunication",
                                            "DataCom",
                                            "DigitalToASCII",
                                            "EnCommStation",
                                            "FlashLocalRegister",
                                            "GetRegisterData",
                                            "PLCAddressChangeIntef",
                                            "QueryFinishFlag",
                                            "ReCreatReadVarList",
                                            "RegistCallBackFuncIntf",
                                            "SetComInfo",
                                            "SetRegisterData"};

} // namespace

TEST(Exports, AreTheFourteenEntryPointsTheSixUtilitiesAndThreePointers)
{
    std::vector<std::string> all = functions;
    all.insert(all.end(), {"LB", "LW", "RWI"});

    EXPECT_THAT(DefinedSymbols(""), ::testing::UnorderedElementsAreArray(all));
}

TEST(Exports, AreTwentyFunctionsAndThreeData)
{
    EXPECT_THAT(DefinedSymbols("T"), ::testing::UnorderedElementsAreArray(functions));
    EXPECT_THAT(DefinedSymbols("BD"), ::testing::UnorderedElementsAre("LB", "LW", "RWI"));
}

TEST(NeededLibraries, AreQtCoreAndTheCppRuntimeOnly)
{
    if (SANITIZED)
        GTEST_SKIP() << "a sanitized library needs the sanitizer's runtime as well";
    const std::vector<std::string> needed = NeededLibraries();
    const std::vector<std::string> allowed = {"libQt5Core.so.5",      "libstdc++.so.6",     "libm.so.6",
                                              "libgcc_s.so.1",        "libc.so.6",          "ld-linux.so.2",
                                              "ld-linux-x86-64.so.2", "ld-linux-armhf.so.3"};

    EXPECT_THAT(needed, ::testing::Contains("libQt5Core.so.5"));
    EXPECT_THAT(needed, ::testing::IsSubsetOf(allowed));
}
