// SPDX-License-Identifier: MIT
/// \file
/// \brief A time slider for a capture: play, pause, faster, anywhere.
#ifndef WINDOW_CAPTURES_CAPTURE_BAR_H
#define WINDOW_CAPTURES_CAPTURE_BAR_H

#include <QToolBar>

class QComboBox;
class QLabel;
class QSlider;

namespace plc
{

class CapturePlayer;

class CaptureBar : public QToolBar
{
    Q_OBJECT

public:
    explicit CaptureBar(QWidget* parent = nullptr);

    /// \param player outlives its use here; null: the bar hides
    void setPlayer(CapturePlayer* player);

    /// The beat: goes on by so much time, where it plays.
    void advance(int ms);

    QSlider* slider() const { return m_slider; }
    void setPlaying(bool playing) { m_play->setChecked(playing); }

private:
    void seek();
    void showTime();

    CapturePlayer* m_player = nullptr;
    QAction* m_play;
    QSlider* m_slider;
    QComboBox* m_speed;
    QLabel* m_time;
};

} // namespace plc

#endif
