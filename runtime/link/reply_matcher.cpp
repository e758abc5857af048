// SPDX-License-Identifier: MIT
#include "runtime/link/reply_matcher.h"

#include "runtime/link/modbus_matcher.h"
#include "runtime/link/remote_matcher.h"

namespace plc
{

bool ReplyMatcher::isMixed(const QByteArray&, bool) const
{
    return false;
}

QString ReplyMatcher::distrustAfter(const StreamEnd&) const
{
    return QString();
}

std::unique_ptr<ReplyMatcher> replyMatcherFor(FrameFormat format)
{
    if (format == FrameFormat::Remote)
        return std::make_unique<RemoteMatcher>();
    return std::make_unique<ModbusMatcher>();
}

} // namespace plc
