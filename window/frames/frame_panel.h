// SPDX-License-Identifier: MIT
/// \file
/// \brief Frames and replies in words and hex, filtered by station, variable or trouble.
#ifndef WINDOW_FRAMES_FRAME_PANEL_H
#define WINDOW_FRAMES_FRAME_PANEL_H

#include "window/session/source.h"

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPlainTextEdit;
class QTableView;

namespace plc
{

class FrameModel;

class FramePanel : public QWidget
{
    Q_OBJECT

public:
    explicit FramePanel(QWidget* parent = nullptr);

    void setSource(const Source* source);
    void apply(const Snapshot& news);

    /// Points at the last frame that carried a variable; it stops what comes from moving it away.
    void find(int variable);

    FrameModel* model() const { return m_model; }
    QTableView* view() const { return m_view; }
    void setTroubleOnly(bool only);
    void setVariableWords(const QString& words);

private:
    void makeView();
    void filter();
    void addStations(const std::vector<FrameEntry>& frames);
    void showDetails();

    const Source* m_source = nullptr;
    FrameModel* m_model;
    QTableView* m_view;
    QComboBox* m_stations;
    QLineEdit* m_words;
    QCheckBox* m_trouble;
    QCheckBox* m_pause;
    QPlainTextEdit* m_details;
    std::vector<FrameEntry> m_waiting; // while it is paused
};

} // namespace plc

#endif
