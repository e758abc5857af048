// SPDX-License-Identifier: MIT
// Where the driver is looked for. Beside libplcruntime.so is for the test of the installed files: here the runtime is
// part of the program.

#include "runtime/host/driver_path.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <stdexcept>

namespace
{

using testing::HasSubstr;

class DriverPath : public testing::Test
{
protected:
    void touch(const char* name)
    {
        const QString path = at(name);
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }

    QString at(const char* name) const { return m_folder.filePath(QLatin1String(name)); }

    std::string found(const char* programDirectory) const
    {
        return plc::findDriver(at(programDirectory)).toStdString();
    }

    QTemporaryDir m_folder;
};

TEST_F(DriverPath, IsBesideTheProgramBeforeOneDirectoryUp)
{
    touch("bin/libplcdriver.so");
    touch("libplcdriver.so");
    EXPECT_EQ(found("bin"), at("bin/libplcdriver.so").toStdString());
}

TEST_F(DriverPath, IsOneDirectoryUpFromTheProgram)
{
    touch("libplcdriver.so");
    touch("bin/plcpanel");
    EXPECT_EQ(found("bin"), at("libplcdriver.so").toStdString());
}

TEST_F(DriverPath, IsNeverTakenFromTheWorkingDirectory)
{
    touch("libplcdriver.so");
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(m_folder.path()));
    QString taken;
    try {
        taken = plc::findDriver(); // finds one where the driver is installed for the system
    } catch (const std::runtime_error&) {
    }
    EXPECT_TRUE(QDir::setCurrent(before));
    EXPECT_NE(taken, at("libplcdriver.so"));
}

TEST_F(DriverPath, IsMissedWithTheFilesThatWereLookedFor)
{
    try {
        GTEST_SKIP() << "a driver is installed for the system: " << found("bin");
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr(at("bin/libplcdriver.so").toStdString()));
        EXPECT_THAT(error.what(), HasSubstr(at("libplcdriver.so").toStdString()));
    }
}

} // namespace
