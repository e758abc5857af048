// SPDX-License-Identifier: MIT
/// \file
/// \brief What a curve showed before the window knew it, out of a log.
#ifndef WINDOW_TREND_TREND_HISTORY_H
#define WINDOW_TREND_TREND_HISTORY_H

#include "window/trend/trend_series.h"

#include <QMetaType>
#include <QObject>
#include <QStringList>
#include <QThread>

#include <map>
#include <memory>
#include <mutex>

namespace plc
{

class HistoryReader;

/// Reads a log on a thread of its own. No function waits.
class TrendHistory : public QObject
{
    Q_OBJECT

public:
    struct Piece {
        qint64 fromMs = 0;
        qint64 toMs = 0;
        std::map<QString, std::vector<TrendStep>> curves; ///< by name, of those that the log has
    };

    TrendHistory();
    ~TrendHistory() override;

    /// opened() or failed() follows.
    void open(const QString& path);
    bool isOpen() const { return m_isOpen; }

    /// found() follows, unless a newer question takes its place.
    void ask(qint64 fromMs, qint64 toMs, int pieces, const QStringList& names);

Q_SIGNALS:
    /// \param firstMs when the log begins, of all its series; 0: it is empty
    void opened(qint64 firstMs, qint64 lastMs);
    void failed(const QString& words);
    void found(const std::shared_ptr<plc::TrendHistory::Piece>& piece);

private:
    struct Question {
        qint64 fromMs = 0;
        qint64 toMs = 0;
        int pieces = 1;
        QStringList names;
    };

    void read(const Question& question);

    QThread m_thread;
    std::unique_ptr<QObject> m_worker;
    std::unique_ptr<HistoryReader> m_reader; // used on it alone
    bool m_isOpen = false;
    std::mutex m_mutex;
    std::unique_ptr<Question> m_question; // the newest; none waits behind it
};

} // namespace plc

Q_DECLARE_METATYPE(std::shared_ptr<plc::TrendHistory::Piece>)

#endif
