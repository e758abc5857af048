// SPDX-License-Identifier: MIT
#include "panel/peers/pymodbus_server.h"

#include "panel/peers/peer_programs.h"
#include "support/application.h"
#include "support/built_files.h"

#include <gtest/gtest.h>

namespace test
{

namespace
{

const int patienceMs = 60000;

} // namespace

QString PymodbusServer::missing()
{
    return pythonWithPymodbus().isEmpty() ? QStringLiteral("Debian package python3-pymodbus") : QString();
}

PymodbusServer::PymodbusServer()
{
    needApplication();
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(pythonWithPymodbus(), {QString::fromUtf8(testsDirectory()) +
                                           QStringLiteral("/panel/peers/pymodbus_server.py")});
    m_controller = QStringLiteral("127.0.0.1:") + QString::fromLatin1(nextLine());
}

PymodbusServer::~PymodbusServer()
{
    m_process.kill();
    m_process.waitForFinished();
}

int PymodbusServer::ask(const char* kind, int address, int valueToSet)
{
    QByteArray line = QByteArray(kind) + ' ' + QByteArray::number(address);
    if (valueToSet >= 0)
        line += ' ' + QByteArray::number(valueToSet);
    m_process.write(line + '\n');
    bool isNumber = false;
    const int value = nextLine().toInt(&isNumber);
    EXPECT_TRUE(isNumber) << line.toStdString();
    return value;
}

QByteArray PymodbusServer::nextLine()
{
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(patienceMs)) {
            ADD_FAILURE() << "the server of pymodbus says nothing";
            break;
        }
    }
    return m_process.readLine().trimmed();
}

} // namespace test
