// SPDX-License-Identifier: MIT
/// \file
/// \brief The file that a capture goes to: an error is told, and costs the capture only.
#ifndef CAPTURE_CAPTURE_FILE_H
#define CAPTURE_CAPTURE_FILE_H

#include <QByteArray>
#include <QFile>
#include <QString>

#include <functional>

namespace plc
{

/// What is written is handed to the system at once, so that the file is complete however the program ends.
class CaptureFile
{
public:
    using Complaint = std::function<void(const QString& message)>;

    /// Replaces a file that is there. \param complain is told of the first error, and again at the end
    CaptureFile(const QString& path, Complaint complain);
    ~CaptureFile();
    CaptureFile(const CaptureFile&) = delete;
    CaptureFile& operator=(const CaptureFile&) = delete;

    /// After an error nothing more is written.
    void write(const QByteArray& bytes);

private:
    void fail();

    QFile m_file;
    const Complaint m_complain;
    QString m_error;
};

} // namespace plc

#endif
