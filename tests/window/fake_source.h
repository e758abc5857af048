// SPDX-License-Identifier: MIT
/// \file
/// \brief A source whose values, and whose time, a test makes.
#ifndef TESTS_WINDOW_FAKE_SOURCE_H
#define TESTS_WINDOW_FAKE_SOURCE_H

#include "runtime/model/variable_list.h"
#include "window/session/source.h"

#include <gtest/gtest.h>

namespace test
{

/// \return the variables of a list below a line of its columns
inline std::vector<plc::ListedVariable> listed(const char* lines)
{
    const plc::VariableList list = plc::parseVariableList(
        QByteArray("name,area,address,count,type,scale,unit,digits,min,max,access\n") + lines);
    EXPECT_TRUE(list.errors.isEmpty()) << list.errors.join(QLatin1Char('\n')).toStdString();
    return list.variables;
}

class FakeSource : public plc::Source
{
public:
    explicit FakeSource(const char* lines) { m_watched.variables = listed(lines); }

    const plc::Watched& watched() const override { return m_watched; }
    bool isLive() const override { return true; }
    qint64 nowMs() const override { return now; }
    plc::Snapshot take() override { return std::exchange(next, plc::Snapshot()); }
    void look(const std::vector<int>&) override {}
    void setRecorded(int, bool) override {}

    qint64 now = 1000000;
    plc::Snapshot next;

private:
    plc::Watched m_watched;
};

/// \return what comes when a variable was answered with \a values
inline plc::Snapshot answered(const FakeSource& source, int index, std::vector<quint32> values)
{
    plc::ValueNews news;
    news.index = index;
    news.state = plc::ValueState::Fresh;
    news.readAtMs = source.now;
    news.answered = true;
    news.values = std::move(values);
    plc::Snapshot snapshot;
    snapshot.values.push_back(news);
    return snapshot;
}

/// \return what comes when a variable has another state, and no answer
inline plc::Snapshot became(const FakeSource& source, int index, plc::ValueState state,
                            const plc::Failure& failure = plc::Failure())
{
    plc::Snapshot snapshot = answered(source, index, {});
    snapshot.values.front().state = state;
    snapshot.values.front().failure = failure;
    snapshot.values.front().answered = false;
    return snapshot;
}

} // namespace test

#endif
