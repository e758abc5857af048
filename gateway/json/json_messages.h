// SPDX-License-Identifier: MIT
/// \file
/// \brief What the messages of the json format hold, and the requests to write that come in.
#ifndef GATEWAY_JSON_JSON_MESSAGES_H
#define GATEWAY_JSON_JSON_MESSAGES_H

#include "gateway/values/sample.h"
#include "runtime/model/variable_list.h"

#include <QByteArray>
#include <QJsonValue>

namespace plc
{

/// \return {"value":21.5,"at":1700000000000,"quality":"good","unit":"°C"}: the value as a number, true, false, a text,
///         or null where there is none; the time in ms since 1970 UTC, or null. Whole numbers beyond 2^53 are texts.
/// \param mayBeDouble adds "again":true, because the same message may have gone out before
QByteArray jsonOfSample(const Sample& sample, const ListedVariable& variable, bool mayBeDouble);

/// \return "good", "stale", "bad"
QString qualityWord(SampleQuality quality);

/// What somebody wants to be written: {"value":21.5,"id":"17"} or the value alone.
struct SetRequest {
    QString text; ///< the value as plc::parseListed() takes it
    QJsonValue id =
        QJsonValue(QJsonValue::Undefined); ///< as it came, a number or a text; undefined where there is none
    QString error;                         ///< not empty: what is wrong with the payload
};

SetRequest parseSetRequest(const QByteArray& payload);

} // namespace plc

#endif
