// SPDX-License-Identifier: MIT
#include "runtime/host/driver_library.h"
#include "runtime/model/variable.h"
#include "support/built_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dlfcn.h>
#include <stdexcept>

namespace
{

using namespace plc;
using testing::AllOf;
using testing::HasSubstr;

std::string errorOf(const QString& path)
{
    try {
        DriverLibrary library(path);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no error";
}

TEST(DriverLibrary, FindsTheFourteenEntryPoints)
{
    const DriverLibrary library(QString::fromUtf8(builtDriver()));
    EXPECT_EQ(library.calls().QueryFinishFlag(), 1);
}

TEST(DriverLibrary, NamesThePathThatCannotBeLoaded)
{
    EXPECT_THAT(errorOf(QStringLiteral("/nowhere/libplcdriver.so")),
                AllOf(HasSubstr("/nowhere/libplcdriver.so"), HasSubstr("cannot be loaded")));
}

/// \return the path of a library that is no driver, built for the processor of this test
QString anotherLibrary()
{
    Dl_info info = {};
    dladdr(reinterpret_cast<const void*>(&qVersion), &info);
    return QString::fromLocal8Bit(info.dli_fname);
}

TEST(DriverLibrary, NamesTheEntryPointThatIsMissing)
{
    EXPECT_THAT(errorOf(anotherLibrary()), HasSubstr("has no entry point SetComInfo"));
}

TEST(AddressText, MeansTheSameElementToTheDriver)
{
    const DriverLibrary library(QString::fromUtf8(builtDriver()));
    for (int area = 0; area <= 14; ++area) {
        for (const int element : {0, 1, 7, 8, 63, 100, 511, 4095, 65534}) {
            const QString text = addressText(area, element);
            QString error;
            EXPECT_EQ(library.calls().PLCAddressChangeIntef(area, text), element) << text.toStdString();
            EXPECT_EQ(parseAddress(area, text, &error).value_or(-1), element) << text.toStdString();
        }
    }
}

} // namespace
