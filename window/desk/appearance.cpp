// SPDX-License-Identifier: MIT
#include "window/desk/appearance.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>

#include <optional>

namespace plc
{

namespace
{

struct Desktop {
    QString style;
    QPalette palette;
};

QPalette lightPalette()
{
    QPalette palette(QColor("#eff1f3"), QColor("#eff1f3"));
    palette.setColor(QPalette::Base, Qt::white);
    palette.setColor(QPalette::AlternateBase, QColor("#f5f7f9"));
    palette.setColor(QPalette::Highlight, QColor("#2a7ab8"));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    return palette;
}

QPalette darkPalette()
{
    QPalette palette(QColor("#2d3136"), QColor("#2d3136"));
    const QColor text("#e4e7ea");
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                                           QPalette::BrightText, QPalette::ToolTipText})
        palette.setColor(role, text);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor("#868d94"));
    palette.setColor(QPalette::PlaceholderText, QColor("#868d94"));
    palette.setColor(QPalette::Base, QColor("#1f2226"));
    palette.setColor(QPalette::AlternateBase, QColor("#25292d"));
    palette.setColor(QPalette::ToolTipBase, QColor("#3a3f45"));
    palette.setColor(QPalette::Highlight, QColor("#2a6f9f"));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor("#6db9ee"));
    return palette;
}

} // namespace

void setAppearance(Appearance appearance)
{
    static const Desktop desktop{QApplication::style()->objectName(), QApplication::palette()};
    const bool own = appearance != Appearance::Desktop;
    QApplication::setStyle(QStyleFactory::create(own ? QStringLiteral("Fusion") : desktop.style));
    QApplication::setPalette(!own                              ? desktop.palette
                             : appearance == Appearance::Light ? lightPalette()
                                                               : darkPalette());
}

} // namespace plc
