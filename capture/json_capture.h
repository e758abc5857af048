// SPDX-License-Identifier: MIT
/// \file
/// \brief A capture as lines of JSON, for people and scripts.
///
/// The first line says what was captured how, each further line is a frame or an event. All keys and their
/// words: capture/json_capture_keys.h.
#ifndef CAPTURE_JSON_CAPTURE_H
#define CAPTURE_JSON_CAPTURE_H

#include "capture/capture_clock.h"
#include "capture/capture_file.h"
#include "runtime/link/link_tap.h"
#include "runtime/link/reply_assembler.h"
#include "runtime/modbus/dialect.h"
#include "runtime/model/settings.h"

#include <QJsonObject>

#include <map>

namespace plc
{

/// Puts replies together again, however they arrived, so that each has a line of its own.
class JsonCapture : public LinkTap
{
public:
    JsonCapture(std::unique_ptr<CaptureFile> file, const Settings& settings, CaptureClock clock);
    ~JsonCapture() override; ///< writes what is left of a reply

    void opened(const LinkEnd& panel, const LinkEnd& controller) override;
    void closed(const QString& why) override;
    void sent(const QByteArray& frame) override;
    void notSent(const QByteArray& frame, const QString& why) override;
    void received(const QByteArray& bytes) override;
    void timedOut() override;

private:
    void line(QJsonObject object);
    void event(QLatin1String what, QJsonObject object = {});
    void reply(const QByteArray& bytes);
    void rest();
    QString requestMeaning(const QByteArray& frame) const;
    QString replyMeaning(const QByteArray& bytes) const;

    const std::unique_ptr<CaptureFile> m_file;
    const Dialect& m_dialect;
    const CaptureClock m_clock;
    ReplyAssembler m_assembler;
    QByteArray m_rest; // bytes that no whole reply was made of so far
    QByteArray m_lastRequest;
    std::map<int, QByteArray> m_requests; // the last ones, by number
};

} // namespace plc

#endif
