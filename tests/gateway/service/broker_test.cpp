// SPDX-License-Identifier: MIT
// The gateway as a program, with brokers that want to know who it is, and such that are not who they say.

#include "gateway/service/plant_fixture.h"

#include <QProcess>

#include <csignal>

namespace
{

using test::BrokerRun;
using test::GatewayRun;

class SecuredBroker : public test::PlantFixture
{
protected:
    /// Runs openssl in the folder of the test.
    void openssl(const char* arguments)
    {
        QProcess process;
        process.setWorkingDirectory(folder.path());
        process.start(QStringLiteral("openssl"), QString::fromLatin1(arguments).split(QLatin1Char(' ')));
        ASSERT_TRUE(process.waitForFinished());
        ASSERT_EQ(process.exitCode(), 0) << process.readAllStandardError().constData();
    }

    /// Makes NAME.key and NAME.crt, an authority.
    void makeAuthority(const char* name)
    {
        openssl(QByteArray("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -days 2 -subj /CN=A "
                           "-keyout NAME.key -out NAME.crt")
                    .replace("NAME", name));
    }

    /// Makes NAME.key and NAME.crt, signed by the authority "ca", for the address \a address.
    void makeCertificate(const char* name, const char* address)
    {
        QFile extension(path("extension"));
        ASSERT_TRUE(extension.open(QIODevice::WriteOnly));
        extension.write(QByteArray("subjectAltName=IP:") + address);
        extension.close();
        openssl(QByteArray("req -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -subj /CN=NAME -keyout "
                           "NAME.key -out NAME.csr")
                    .replace("NAME", name));
        openssl(QByteArray("x509 -req -in NAME.csr -CA ca.crt -CAkey ca.key -CAcreateserial -days 2 -extfile "
                           "extension -out NAME.crt")
                    .replace("NAME", name));
        QFile::setPermissions(path((std::string(name) + ".key").c_str()),
                              QFile::ReadOwner | QFile::WriteOwner);
    }

    QString path(const char* name) const { return folder.filePath(QLatin1String(name)); }

    /// \return a broker's lines with the certificate NAME
    QByteArray encrypted(const char* name, const char* more = "allow_anonymous true\n") const
    {
        return QByteArray(
                   "listener PORT 127.0.0.1\ncafile F/ca.crt\ncertfile F/NAME.crt\nkeyfile F/NAME.key\n")
                   .replace("NAME", name)
                   .replace("F/", folder.path().toLocal8Bit() + '/') +
               more;
    }

    QStringList to(const BrokerRun& other, const QStringList& more) const
    {
        QStringList all = json(more);
        all[all.indexOf(QStringLiteral("--broker")) + 1] = other.address();
        return all;
    }

    void writeLogin(const char* text) const
    {
        QFile file(path("login"));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    }

    QStringList login() const { return {QStringLiteral("--login"), path("login")}; }
    QStringList ca(const char* name = "ca.crt") const { return {QStringLiteral("--ca"), path(name)}; }
};

TEST_F(SecuredBroker, IsTakenWithACertificateThatFits)
{
    makeAuthority("ca");
    makeCertificate("broker", "127.0.0.1");
    makeCertificate("client", "127.0.0.1");
    BrokerRun other(encrypted("broker", "require_certificate true\nuse_identity_as_username true\n"));
    other.start();
    {
        GatewayRun gateway(to(other, ca() + QStringList{QStringLiteral("--cert"), path("client.crt"),
                                                        QStringLiteral("--key"), path("client.key")}));
        EXPECT_TRUE(gateway.says("connected to the broker"));
    }
    GatewayRun unknown(to(other, ca())); // without the certificate that the broker wants
    EXPECT_TRUE(unknown.says("no connection to the broker"));
    EXPECT_EQ(unknown.messages().find("connected to the broker"), std::string::npos);
}

TEST_F(SecuredBroker, IsRefusedWithACertificateOfAnotherAuthority)
{
    makeAuthority("ca");
    makeAuthority("other");
    makeCertificate("broker", "127.0.0.1");
    BrokerRun other(encrypted("broker"));
    other.start();
    GatewayRun gateway(to(other, ca("other.crt")));
    EXPECT_TRUE(gateway.says("the encrypted connection was refused"));
    EXPECT_TRUE(gateway.says("certificate verify failed"));
    EXPECT_EQ(gateway.messages().find("connected to the broker"), std::string::npos);
}

TEST_F(SecuredBroker, IsRefusedWithACertificateForAnotherName)
{
    makeAuthority("ca");
    makeCertificate("broker", "10.9.8.7");
    BrokerRun other(encrypted("broker"));
    other.start();
    GatewayRun gateway(to(other, ca()));
    EXPECT_TRUE(gateway.says("the encrypted connection was refused"));
    EXPECT_EQ(gateway.messages().find("connected to the broker"), std::string::npos);
}

TEST_F(SecuredBroker, IsNotTakenUnencryptedWhereEncryptionIsAsked)
{
    makeAuthority("ca");
    GatewayRun gateway(json(ca()));
    EXPECT_TRUE(gateway.says("no connection to the broker"));
    EXPECT_EQ(gateway.messages().find("connected to the broker"), std::string::npos);
}

TEST_F(SecuredBroker, TakesUserAndPassword)
{
    QFile passwords(path("passwords"));
    ASSERT_TRUE(passwords.open(QIODevice::WriteOnly));
    passwords.write("anna:secret\n");
    passwords.close();
    QProcess process;
    process.start(QStringLiteral("mosquitto_passwd"), {QStringLiteral("-U"), passwords.fileName()});
    ASSERT_TRUE(process.waitForFinished());
    BrokerRun other("listener PORT 127.0.0.1\nallow_anonymous false\npassword_file " +
                    passwords.fileName().toLocal8Bit() + '\n');
    other.start();
    writeLogin("anna\nsecret\n");
    for (const char* version : {"3.1.1", "5"}) {
        const QStringList mqtt = {QStringLiteral("--mqtt"), QLatin1String(version)};
        writeLogin("anna\nsecret\n");
        GatewayRun gateway(to(other, login() + mqtt));
        EXPECT_TRUE(gateway.says("connected to the broker")) << version;
        EXPECT_TRUE(gateway.says("the password goes to the broker unencrypted"));
        EXPECT_EQ(gateway.endBy(SIGTERM), 0);
        writeLogin("anna\nwrong\n");
        GatewayRun wrong(to(other, login() + mqtt));
        EXPECT_TRUE(wrong.says("the broker refuses the connection")) << version;
        EXPECT_EQ(wrong.messages().find("secret"), std::string::npos);
    }
}

TEST_F(SecuredBroker, IsToldOfWhenItRefusesMessages)
{
    QFile access(path("access"));
    ASSERT_TRUE(access.open(QIODevice::WriteOnly));
    access.write("topic readwrite other/#\n");
    access.close();
    BrokerRun other("listener PORT 127.0.0.1\nallow_anonymous true\nacl_file " +
                    access.fileName().toLocal8Bit() + '\n');
    other.start();
    GatewayRun gateway(to(other, {QStringLiteral("--mqtt"), QStringLiteral("5")}));
    EXPECT_TRUE(gateway.says("the broker refuses messages of this client: Not authorized"));
}

TEST_F(SecuredBroker, OfWrongOptionsNoneIsAsked)
{
    GatewayRun gateway(json({QStringLiteral("--poll"), QStringLiteral("fast")}));
    EXPECT_EQ(gateway.end(), 2);
    EXPECT_NE(gateway.messages().find("--poll fast: give a number"), std::string::npos);
}

} // namespace
