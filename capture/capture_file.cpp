// SPDX-License-Identifier: MIT
#include "capture/capture_file.h"

namespace plc
{

CaptureFile::CaptureFile(const QString& path, Complaint complain)
    : m_file(path), m_complain(std::move(complain))
{
    if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered))
        fail();
}

CaptureFile::~CaptureFile()
{
    if (!m_error.isEmpty())
        m_complain(
            QStringLiteral("--capture %1: not everything was captured: %2").arg(m_file.fileName(), m_error));
}

void CaptureFile::write(const QByteArray& bytes)
{
    if (!m_error.isEmpty())
        return;
    const qint64 size = m_file.write(bytes);
    if (size == bytes.size())
        return;
    // A disk that gets full takes a part, and says why not more when it is asked for the rest.
    if (size < 0 || m_file.write(bytes.mid(static_cast<int>(size))) != bytes.size() - size)
        fail();
}

void CaptureFile::fail()
{
    m_error = m_file.errorString();
    m_complain(
        QStringLiteral("--capture %1: %2; the exchange goes on without").arg(m_file.fileName(), m_error));
}

} // namespace plc
