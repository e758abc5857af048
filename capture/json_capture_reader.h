// SPDX-License-Identifier: MIT
/// \file
/// \brief Reads what JsonCapture wrote.
#ifndef CAPTURE_JSON_CAPTURE_READER_H
#define CAPTURE_JSON_CAPTURE_READER_H

#include "capture/capture_entry.h"
#include "capture/open_file.h"

namespace plc
{

/// Goes through the lines once, until one is wrong or the sink wants no more; a line is all that it keeps.
/// Any bytes will do: what is malformed is an error of the result, with the number of the line. A last line
/// that was cut is left out, with a note. Events and members that are not known are skipped.
class JsonCaptureReader
{
public:
    /// Reads the first line, which has the settings.
    explicit JsonCaptureReader(OpenFile file);

    const std::optional<Settings>& settings() const { return m_end.settings; }

    /// Reads the others. To be called once.
    CaptureEnd read(const CaptureSink& sink);

    /// \return what it reads from, to be asked how far that is
    std::FILE* stream() const { return m_file.get(); }

private:
    bool nextLine();
    void tryLine(const CaptureSink& sink);
    void takeLine(const CaptureSink& sink);
    void takeEntry(const QByteArray& line, const CaptureSink& sink);

    OpenFile m_file;
    CaptureEnd m_end;
    QByteArray m_line;
    bool m_isCut = false; // the line, whose end is missing
    long m_number = 0;
    bool m_goOn = true;
};

} // namespace plc

#endif
