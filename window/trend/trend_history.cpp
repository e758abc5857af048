// SPDX-License-Identifier: MIT
#include "window/trend/trend_history.h"

#include "history/history_reader.h"

#include <limits>
#include <stdexcept>

namespace plc
{

namespace
{

TrendStep stepOf(const TrendPiece& piece, qint64 beginMs)
{
    const double nothing = std::numeric_limits<double>::quiet_NaN();
    TrendStep step{beginMs, nothing, nothing, nothing, nothing, piece.gap};
    if (piece.min) {
        step.min = *piece.min;
        step.max = *piece.max;
        step.last = piece.gap ? nothing : *piece.max;
    }
    return step;
}

} // namespace

TrendHistory::TrendHistory() : m_worker(std::make_unique<QObject>())
{
    qRegisterMetaType<std::shared_ptr<plc::TrendHistory::Piece>>();
    m_worker->moveToThread(&m_thread);
    m_thread.start();
}

TrendHistory::~TrendHistory()
{
    QMetaObject::invokeMethod(m_worker.get(), [this] { m_reader.reset(); });
    m_thread.quit();
    m_thread.wait();
}

void TrendHistory::open(const QString& path)
{
    m_isOpen = true;
    QMetaObject::invokeMethod(m_worker.get(), [this, path] {
        try {
            m_reader = std::make_unique<HistoryReader>(path);
            qint64 first = std::numeric_limits<qint64>::max();
            qint64 last = 0;
            for (const LoggedSeries& series : m_reader->series()) {
                first = std::min(first, series.firstMs.value_or(first));
                last = std::max(last, series.lastMs.value_or(last));
            }
            Q_EMIT opened(last == 0 ? 0 : first, last);
        } catch (const std::runtime_error& error) {
            m_reader.reset();
            Q_EMIT failed(QString::fromStdString(error.what()));
        }
    });
}

void TrendHistory::ask(qint64 fromMs, qint64 toMs, int pieces, const QStringList& names)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const bool isWaiting = m_question != nullptr;
    m_question = std::make_unique<Question>(Question{fromMs, toMs, pieces, names});
    if (isWaiting)
        return;
    QMetaObject::invokeMethod(m_worker.get(), [this] {
        std::unique_ptr<Question> question;
        {
            const std::lock_guard<std::mutex> taking(m_mutex);
            question = std::move(m_question);
        }
        try {
            read(*question);
        } catch (const std::runtime_error& error) {
            Q_EMIT failed(QString::fromStdString(error.what()));
        }
    });
}

void TrendHistory::read(const Question& question)
{
    if (!m_reader)
        return;
    auto piece = std::make_shared<Piece>();
    piece->fromMs = question.fromMs;
    piece->toMs = question.toMs;
    for (const LoggedSeries& series : m_reader->series()) {
        if (!question.names.contains(series.series.name))
            continue;
        const std::vector<TrendPiece> pieces =
            m_reader->trend(series, {question.fromMs, question.toMs}, question.pieces);
        std::vector<TrendStep>& steps = piece->curves[series.series.name];
        const double width =
            static_cast<double>(question.toMs - question.fromMs) / static_cast<double>(pieces.size());
        for (std::size_t index = 0; index < pieces.size(); ++index)
            steps.push_back(stepOf(
                pieces[index], question.fromMs + static_cast<qint64>(static_cast<double>(index) * width)));
    }
    Q_EMIT found(piece);
}

} // namespace plc
