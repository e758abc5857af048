// SPDX-License-Identifier: MIT
/// \file
/// \brief The keys of the JSON lines of a capture, and the words that stand behind some of them.
///
/// Scripts of users read them. Writer and reader take them from here.
#ifndef CAPTURE_JSON_CAPTURE_KEYS_H
#define CAPTURE_JSON_CAPTURE_KEYS_H

#include <QLatin1String>

namespace plc
{

namespace jsonkeys
{

// Of the first line: what was captured how.
const QLatin1String capture("capture");       ///< capturedBy
const QLatin1String version("version");       ///< writtenVersion
const QLatin1String controller("controller"); ///< HOST:PORT; of the event "connected", too
const QLatin1String remote("remote");         ///< remote frames instead of Modbus TCP
const QLatin1String station("station");
const QLatin1String multiStation("multiStation");
const QLatin1String timeoutMs("timeoutMs");
const QLatin1String retries("retries");
const QLatin1String maxBlock("maxBlock");

// Of every line.
const QLatin1String time("time"); ///< UTC, 2026-11-21T14:03:22.123456Z

// Of a frame.
const QLatin1String direction("direction"); ///< request or reply
const QLatin1String hex("hex");             ///< its bytes; of the event "not sent", too
const QLatin1String words("words");         ///< its meaning; of the event "not sent", too
const QLatin1String whole("whole");         ///< false where the bytes make up no frame; missing otherwise

// Of an event.
const QLatin1String event("event"); ///< connected, closed, not sent, or no reply in time
const QLatin1String panel("panel"); ///< of "connected": ADDRESS:PORT
const QLatin1String why("why");     ///< of "closed" and "not sent"

} // namespace jsonkeys

namespace jsonwords
{

const QLatin1String capturedBy("plcpanel");
const QLatin1String request("request");
const QLatin1String reply("reply");
const QLatin1String connected("connected");
const QLatin1String closed("closed");
const QLatin1String notSent("not sent");
const QLatin1String noReplyInTime("no reply in time");

} // namespace jsonwords

const int jsonCaptureVersion = 1; ///< of the lines; raised when a reader of the old ones would misread them

} // namespace plc

#endif
