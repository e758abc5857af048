// SPDX-License-Identifier: MIT
/// \file
/// \brief A transport without a network: the test says what comes when, and time goes on only while waiting.
#ifndef TESTS_SUPPORT_SCRIPTED_TRANSPORT_H
#define TESTS_SUPPORT_SCRIPTED_TRANSPORT_H

#include "runtime/link/transport.h"
#include "support/virtual_time.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <vector>

/// What the controller does at its end of a connection, one behind the other.
class Script
{
public:
    /// Time until the next step.
    Script& after(int milliseconds)
    {
        m_delayMs += milliseconds;
        return *this;
    }

    Script& send(const char* hex) { return step({m_delayMs, QByteArray::fromHex(hex), false, {}}); }
    Script& close() { return step({m_delayMs, {}, true, {}}); }

    /// What the test itself does then.
    Script& act(const std::function<void()>& act) { return step({m_delayMs, {}, false, act}); }

private:
    friend class ScriptedTransport;

    struct Step {
        int delayMs;
        QByteArray bytes;
        bool closes;
        std::function<void()> act;
    };

    Script& step(const Step& step)
    {
        m_steps.push_back(step);
        m_delayMs = 0;
        return *this;
    }

    int m_delayMs = 0;
    std::vector<Step> m_steps;
};

class ScriptedTransport : public plc::Transport
{
public:
    explicit ScriptedTransport(VirtualTime& time) : m_time(time) {}

    /// What the controller does when it has got the next frame that nothing is set for yet.
    void onFrame(const Script& script) { m_answers.push_back(script); }

    /// What it does from now on, on the connection that there is.
    void play(const Script& script) { schedule(script); }

    /// No further connection is accepted until the next call.
    void refuseConnections(bool refuse) { m_refuses = refuse; }

    /// How long an attempt to connect takes.
    void setConnectMs(int milliseconds) { m_connectMs = milliseconds; }

    /// \return the frames that were sent, on all connections
    const std::vector<QByteArray>& sent() const { return m_sent; }

    /// \return when each attempt to connect began, in milliseconds
    const std::vector<qint64>& attempts() const { return m_attempts; }

    bool connect(int timeoutMs) override
    {
        close();
        m_attempts.push_back(m_time.elapsedMs());
        if (m_connectMs > 0)
            m_time.sleep(std::min(m_connectMs, timeoutMs));
        m_isOpen = !m_refuses && m_connectMs <= timeoutMs;
        if (!m_isOpen)
            m_error = QStringLiteral("refused by the script");
        return m_isOpen;
    }

    void close() override
    {
        m_isOpen = false;
        m_coming.clear();
    }

    void stop() override { m_isStopped = true; }
    bool isStopped() const { return m_isStopped; }

    bool isOpen() const override { return m_isOpen; }

    bool send(const QByteArray& bytes, int) override
    {
        if (!m_isOpen)
            return false;
        m_sent.push_back(bytes);
        if (!m_answers.empty()) {
            schedule(m_answers.front());
            m_answers.pop_front();
        }
        return true;
    }

    void receive(int timeoutMs, QByteArray* bytes) override { *bytes = comeWithin(timeoutMs); }

    plc::LinkEnd target() const override { return {QStringLiteral("script"), 1}; }
    plc::LinkEnd ownEnd() const override { return {QStringLiteral("here"), 2}; }
    plc::LinkEnd otherEnd() const override { return {QStringLiteral("there"), 3}; }
    QString errorString() const override { return m_error; }

private:
    struct Coming {
        plc::Clock::time_point at;
        QByteArray bytes;
        bool closes;
        std::function<void()> act;
    };

    QByteArray comeWithin(int timeoutMs)
    {
        const plc::Clock::time_point end = m_time.now() + std::chrono::milliseconds(timeoutMs);
        while (m_isOpen && !m_coming.empty() && m_coming.front().at <= end) {
            sleepUntil(m_coming.front().at);
            const Coming next = m_coming.front();
            m_coming.pop_front();
            if (next.act)
                next.act();
            if (next.closes)
                close();
            if (next.closes || !next.bytes.isEmpty())
                return next.bytes;
        }
        if (m_isOpen)
            sleepUntil(end);
        return QByteArray();
    }

    void schedule(const Script& script)
    {
        plc::Clock::time_point at = m_time.now();
        for (const Script::Step& step : script.m_steps) {
            at += std::chrono::milliseconds(step.delayMs);
            m_coming.push_back({at, step.bytes, step.closes, step.act});
        }
    }

    void sleepUntil(plc::Clock::time_point end)
    {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - m_time.now());
        if (left.count() > 0)
            m_time.sleep(static_cast<int>(left.count()));
    }

    VirtualTime& m_time;
    std::deque<Script> m_answers;
    std::deque<Coming> m_coming; // on the connection that there is
    std::vector<QByteArray> m_sent;
    std::vector<qint64> m_attempts;
    bool m_isOpen = false;
    bool m_refuses = false;
    bool m_isStopped = false;
    int m_connectMs = 0;
    QString m_error;
};

#endif
