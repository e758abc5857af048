// SPDX-License-Identifier: MIT
/// \file
/// \brief A capture played into the driver once, so that any time of it can be shown.
#ifndef WINDOW_CAPTURES_LOADED_CAPTURE_H
#define WINDOW_CAPTURES_LOADED_CAPTURE_H

#include "window/session/source.h"

#include <atomic>

namespace plc
{

/// \return how the names of captures end, without the dot
QStringList captureEndings();

struct LoadedCapture {
    /// What a variable was from a time on.
    struct Change {
        qint64 atMs = 0;
        ValueNews news;
    };

    Watched watched;
    qint64 firstMs = 0; ///< of what was captured
    qint64 lastMs = 0;
    std::vector<std::vector<Change>> changes; ///< of each variable, by time
    std::vector<CurveSample> samples;         ///< of all variables, by time
    std::vector<FrameEntry> frames;           ///< the last Mailbox::mostFrames
    QStringList notes;                        ///< what could not be used
    QString error;                            ///< what is wrong with the file; empty: nothing
};

/// Takes as long as it takes: for a thread of its own, while there is no Runtime. Keeps no more changes than
/// fit into some hundred MB, and says so.
/// \param wanted its driver, and the variables to be shown; without any those that the capture asks for
/// \param stop   set by another thread: it ends early
LoadedCapture loadCapture(const QString& path, const Watched& wanted, const std::atomic<bool>& stop);

/// Shows a loaded capture at a time of it, which goes on while it plays.
class CapturePlayer : public Source
{
    Q_OBJECT

public:
    explicit CapturePlayer(std::shared_ptr<const LoadedCapture> capture);

    const Watched& watched() const override { return m_capture->watched; }
    bool isLive() const override { return false; }
    qint64 nowMs() const override { return m_nowMs; }
    Snapshot take() override;
    void look(const std::vector<int>&) override {}
    void setRecorded(int, bool) override {} // all samples are handed out

    const LoadedCapture& capture() const { return *m_capture; }

    /// The next take() shows this time.
    void seek(qint64 ms);

    /// Goes on by so many ms, not beyond the end. \return false at the end
    bool advance(qint64 ms);

private:
    static constexpr std::size_t samplesAtOnce = 20000; // handed out by one take(), which must not take long

    const std::shared_ptr<const LoadedCapture> m_capture;
    qint64 m_nowMs;
    bool m_hasMoved = true;
    std::size_t m_samplesGiven = 0;
    bool m_framesGiven = false;
    std::vector<std::size_t> m_shown; // of each variable: changes up to now
};

} // namespace plc

#endif
