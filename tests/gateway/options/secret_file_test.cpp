// SPDX-License-Identifier: MIT
#include "gateway/options/secret_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

namespace plc
{

namespace
{

class SecretFile : public testing::Test
{
protected:
    ~SecretFile() override { qunsetenv("CREDENTIALS_DIRECTORY"); }

    std::string refusalOfMode(QFileDevice::Permissions mode)
    {
        QFile file(m_path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_TRUE(file.setPermissions(mode));
        return secretFileRefusal(m_path).toStdString();
    }

    QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath(QStringLiteral("login"));
    const QFileDevice::Permissions m_owner = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
};

TEST_F(SecretFile, IsRefusedWhenOthersCanReadIt)
{
    EXPECT_EQ("", refusalOfMode(m_owner));
    EXPECT_THAT(refusalOfMode(m_owner | QFileDevice::ReadGroup), testing::HasSubstr("mode 0640"));
    EXPECT_THAT(refusalOfMode(m_owner | QFileDevice::ReadOther), testing::HasSubstr("mode 0604"));
}

TEST_F(SecretFile, ThatSystemdHandsOverMayShowARightOfTheGroup)
{
    qputenv("CREDENTIALS_DIRECTORY", QFile::encodeName(m_folder.path()));
    EXPECT_EQ("", refusalOfMode(QFileDevice::ReadOwner | QFileDevice::ReadGroup));
    EXPECT_THAT(refusalOfMode(m_owner | QFileDevice::ReadOther), testing::HasSubstr("mode 0604"));
    qputenv("CREDENTIALS_DIRECTORY", "/run/credentials/another");
    EXPECT_THAT(refusalOfMode(m_owner | QFileDevice::ReadGroup), testing::HasSubstr("mode 0640"));
}

} // namespace

} // namespace plc
