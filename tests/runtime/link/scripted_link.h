// SPDX-License-Identifier: MIT
/// \file
/// \brief A link over a scripted transport, in a time of its own.
#ifndef TESTS_RUNTIME_LINK_SCRIPTED_LINK_H
#define TESTS_RUNTIME_LINK_SCRIPTED_LINK_H

#include "runtime/link/link.h"
#include "support/scripted_transport.h"

#include <memory>

class ScriptedLink
{
public:
    explicit ScriptedLink(int timeoutMs, plc::FrameFormat format = plc::FrameFormat::ModbusTcp)
        : m_transport(new ScriptedTransport(time)),
          link(std::unique_ptr<plc::Transport>(m_transport), timeoutMs, format, time)
    {
    }

    ~ScriptedLink() { link.close(); }
    ScriptedLink(const ScriptedLink&) = delete;
    ScriptedLink& operator=(const ScriptedLink&) = delete;

    ScriptedTransport& controller() { return *m_transport; }

    VirtualTime time;

private:
    ScriptedTransport* const m_transport; // the link's

public:
    plc::Link link;
};

#endif
