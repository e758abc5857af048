// SPDX-License-Identifier: MIT
#include "runtime/cycle/write_frames.h"

#include "runtime/host/hosted_driver.h"
#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/protocol.h"
#include "runtime/modbus/request_pieces.h"
#include "runtime/model/frame_format.h"

namespace plc
{

namespace
{

void queue(const DriverCalls& calls, const Variable& piece, const std::vector<quint32>& values)
{
    QString name;
    QString address = addressText(piece.area, piece.element);
    QByteArray bytes = bytesOfValues(piece.area, values);
    calls.SetRegisterData(&name, piece.area, &address, static_cast<unsigned int>(piece.station), &bytes,
                          driverWriteCount(piece.area, piece.count), 0, 0);
}

bool isRead(const QByteArray& frame, const Settings& settings)
{
    return frameFormatOf(settings) == FrameFormat::ModbusTcp &&
           byteAt(frame, functionOffset) == ReadRegisters;
}

// Once after some requests in a row the turn goes to the cyclic reads, of which there are none.
const int mostIdleTurns = 2;

/// Each frame is answered by zeros of the length that the driver expects.
void takeFrames(const DriverCalls& calls, const Settings& settings, std::vector<WriteFrame>* frames)
{
    bool hasRead = false;
    for (int idle = 0; idle <= mostIdleTurns && calls.AddListWriteVar(nullptr, 0) > 0;) {
        const Protocol* protocol = calls.ComCommunication();
        if (protocol == nullptr) {
            ++idle;
            continue;
        }
        frames->push_back({protocol->frame, hasRead});
        hasRead = isRead(protocol->frame, settings);
        QByteArray zeros(protocol->replyLength, '\0');
        calls.DataCom(&zeros, zeros.size());
    }
}

} // namespace

std::vector<WriteFrame> framesOfWrite(const Settings& settings, const Variable& variable,
                                      const std::vector<quint32>& values)
{
    const HostedDriver driver(settings, [](int, int) {});
    std::vector<WriteFrame> frames;
    for (const Variable& piece : writePieces(variable, settings.maxBlockCount)) {
        const auto from = values.begin() + (piece.element - variable.element);
        queue(driver.calls(), piece, {from, from + piece.count});
        takeFrames(driver.calls(), settings, &frames);
    }
    return frames;
}

} // namespace plc
