// SPDX-License-Identifier: MIT
#include "runtime/modbus/dialect.h"

#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/frame_words.h"
#include "runtime/modbus/remote_fields.h"
#include "runtime/modbus/remote_words.h"
#include "runtime/modbus/reply_fault.h"

namespace plc
{

namespace
{

class ModbusDialect : public Dialect
{
public:
    QString requestWords(const QByteArray& frame) const override { return plc::requestWords(frame); }

    QString replyWords(const QByteArray& frame, const QByteArray& reply) const override
    {
        return plc::replyWords(frame, reply);
    }

    FailureKind faultOf(const QByteArray& request, const QByteArray& reply) const override
    {
        return replyFault(request, reply);
    }

    int stationOf(const QByteArray& frame) const override { return byteAt(frame, unitOffset); }
    bool hasNumbers() const override { return true; }
    QByteArray withoutNumber(const QByteArray& frame) const override { return frame.mid(protocolOffset); }

    QByteArray withNumberOf(const QByteArray& sentFrame, const QByteArray& reply) const override
    {
        QByteArray numbered = reply;
        if (reply.size() >= protocolOffset && sentFrame.size() >= protocolOffset)
            putWord(&numbered, numberOffset, wordAt(sentFrame, numberOffset));
        return numbered;
    }
};

class RemoteDialect : public Dialect
{
public:
    QString requestWords(const QByteArray& frame) const override { return remoteRequestWords(frame); }

    QString replyWords(const QByteArray& frame, const QByteArray& reply) const override
    {
        return remoteReplyWords(frame, reply);
    }

    FailureKind faultOf(const QByteArray& request, const QByteArray& reply) const override
    {
        return remoteReplyFault(request, reply);
    }

    int stationOf(const QByteArray& frame) const override { return byteAt(frame, remoteStationOffset); }
    bool hasNumbers() const override { return false; }
    QByteArray withoutNumber(const QByteArray& frame) const override { return frame; }

    QByteArray withNumberOf(const QByteArray&, const QByteArray& reply) const override { return reply; }
};

} // namespace

const Dialect& dialectOf(FrameFormat format)
{
    static const ModbusDialect modbusTcp;
    static const RemoteDialect remote;
    if (format == FrameFormat::Remote)
        return remote;
    return modbusTcp;
}

} // namespace plc
