// SPDX-License-Identifier: MIT
#include "window/captures/capture_bar.h"

#include "window/captures/loaded_capture.h"

#include <QAction>
#include <QComboBox>
#include <QDateTime>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>

namespace plc
{

namespace
{

const int sliderSteps = 10000;
const int speeds[] = {1, 2, 10, 60, 600};

QString captureTimeWords(qint64 ms)
{
    return QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
}

} // namespace

CaptureBar::CaptureBar(QWidget* parent)
    : QToolBar(tr("Capture"), parent), m_play(new QAction(tr("&Play"), this)),
      m_slider(new QSlider(Qt::Horizontal)), m_speed(new QComboBox), m_time(new QLabel)
{
    setObjectName(QStringLiteral("capture"));
    m_play->setCheckable(true);
    m_play->setShortcut(QKeySequence(tr("Ctrl+Space")));
    m_slider->setRange(0, sliderSteps);
    m_slider->setPageStep(sliderSteps / 20);
    m_slider->setAccessibleName(tr("time of the capture"));
    for (const int speed : speeds)
        m_speed->addItem(tr("%1 ×").arg(speed), speed);
    m_speed->setAccessibleName(tr("how fast it plays"));
    addAction(m_play);
    addWidget(m_slider);
    addWidget(m_time);
    addWidget(m_speed);
    connect(m_slider, &QSlider::valueChanged, this, &CaptureBar::seek);
    connect(m_play, &QAction::toggled, this, [this](bool playing) {
        const bool isAtEnd = m_player && m_player->nowMs() >= m_player->capture().lastMs;
        if (playing && isAtEnd)
            m_slider->setValue(0);
    });
    setPlayer(nullptr);
}

void CaptureBar::setPlayer(CapturePlayer* player)
{
    m_player = player;
    m_play->setChecked(false);
    setVisible(player != nullptr);
    toggleViewAction()->setEnabled(player != nullptr);
    if (player)
        showTime();
}

void CaptureBar::seek()
{
    if (!m_player)
        return;
    const qint64 span = m_player->capture().lastMs - m_player->capture().firstMs;
    m_player->seek(m_player->capture().firstMs + span * m_slider->value() / sliderSteps);
    m_time->setText(captureTimeWords(m_player->nowMs()));
}

void CaptureBar::advance(int ms)
{
    if (!m_player || !m_play->isChecked())
        return;
    if (!m_player->advance(static_cast<qint64>(ms) * m_speed->currentData().toInt()))
        m_play->setChecked(false);
    showTime();
}

void CaptureBar::showTime()
{
    const QSignalBlocker quiet(m_slider); // it only follows
    const qint64 span = std::max<qint64>(1, m_player->capture().lastMs - m_player->capture().firstMs);
    m_slider->setValue(
        static_cast<int>((m_player->nowMs() - m_player->capture().firstMs) * sliderSteps / span));
    m_time->setText(captureTimeWords(m_player->nowMs()));
}

} // namespace plc
