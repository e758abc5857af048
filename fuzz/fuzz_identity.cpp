// SPDX-License-Identifier: MIT
// Any bytes as the replies of a station that is asked who it is.

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/shown_text.h"
#include "runtime/modbus/identity.h"

namespace
{

using fuzz::check;

// Replies are whole ones of the link: they have unit and function, and are no longer than Modbus allows.
const std::size_t shortestReply = 8;
const std::size_t longestReply = 260;

/// \return empty where none came
QByteArray nextReply(fuzz::ByteSource* source)
{
    const std::vector<std::uint8_t> bytes =
        source->bytes(static_cast<std::size_t>(source->word()) % (longestReply + 1));
    if (bytes.size() < shortestReply)
        return QByteArray();
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    fuzz::ByteSource source(data, size);
    int requests = 0;
    const plc::Identity identity = plc::askIdentity(source.byte(), [&](const QByteArray& request) {
        ++requests;
        check(request.size() == 8 || request.size() == 11, "only the two questions are asked");
        return nextReply(&source);
    });
    check(requests <= 6, "a station is asked a few times at most");
    check((identity.function == 0) == identity.fields.empty(),
          "who is told has a field, and nobody else has");
    for (const auto& field : identity.fields) {
        check(fuzz::isPrintable(field.first) && fuzz::isPrintable(field.second), "an identity can be shown");
        check(field.second.size() <= 3 * static_cast<int>(longestReply), "no field is longer than a reply");
    }
    check(fuzz::isPrintable(plc::identityText(identity)), "an identity can be shown as a line");
    return 0;
}
