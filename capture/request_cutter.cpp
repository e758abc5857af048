// SPDX-License-Identifier: MIT
#include "capture/request_cutter.h"

#include "runtime/link/reply_assembler.h"
#include "runtime/modbus/frame_fields.h"
#include "runtime/modbus/remote_fields.h"

#include <numeric>

namespace plc
{

namespace
{

const int longestRemoteRequest = remoteReadSize + 4 * 65535;

/// Requests have the header of replies.
class ModbusCutter : public RequestCutter
{
public:
    void append(const QByteArray& bytes) override { m_assembler.append(bytes); }
    QByteArray next() override { return m_assembler.next(); }
    bool outOfStep() const override { return m_assembler.outOfStep(); }
    void reset() override { m_assembler.reset(); }

private:
    ReplyAssembler m_assembler;
};

/// Remote frames name their size modulo 256 only: a frame is over where size and sum fit at the end of what was
/// sent at once.
class RemoteCutter : public RequestCutter
{
public:
    void append(const QByteArray& bytes) override
    {
        if (m_bytes.size() + bytes.size() <= longestRemoteRequest)
            m_bytes += bytes;
        else
            m_bytes.clear();
    }

    QByteArray next() override
    {
        const QByteArray frame = fits() ? m_bytes : QByteArray();
        m_bytes.remove(0, frame.size());
        return frame;
    }

    bool outOfStep() const override { return false; }
    void reset() override { m_bytes.clear(); }

private:
    bool fits() const
    {
        if (m_bytes.size() < remoteReadSize || (m_bytes.size() & 0xFF) != byteAt(m_bytes, 0))
            return false;
        const int sum = std::accumulate(m_bytes.begin(), m_bytes.end() - 1, 0);
        return (sum & 0xFF) == byteAt(m_bytes, m_bytes.size() - 1);
    }

    QByteArray m_bytes;
};

} // namespace

std::unique_ptr<RequestCutter> requestCutterFor(FrameFormat format)
{
    if (format == FrameFormat::Remote)
        return std::make_unique<RemoteCutter>();
    return std::make_unique<ModbusCutter>();
}

} // namespace plc
