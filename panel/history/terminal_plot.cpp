// SPDX-License-Identifier: MIT
#include "panel/history/terminal_plot.h"

#include "history/local_time.h"
#include "runtime/model/printable.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

#include <langinfo.h>
#include <locale.h>

namespace plc
{

namespace
{

const int labelColumns = 10; // beside the axis
const int beforePicture = labelColumns + 2;
const int betweenTimes = 24; // columns from one time below the axis to the next

// Of a character in braille: two columns of four dots.
const int dotsAcross = 2;
const int dotsDown = 4;
const ushort emptyBraille = 0x2800;
const ushort dotBits[dotsDown][dotsAcross] = {{0x01, 0x08}, {0x02, 0x10}, {0x04, 0x20}, {0x40, 0x80}};

struct Span {
    double low = 0;
    double high = 0;
};

/// What is no number, or beyond all, has no place in a picture.
bool isDrawn(const TrendPiece& piece)
{
    return piece.min && std::isfinite(*piece.min) && std::isfinite(*piece.max);
}

/// \return the smallest span with all of \a trend, and something above and below a value that never changes
Span spanOf(const std::vector<TrendPiece>& trend)
{
    Span span;
    bool isFirst = true;
    for (const TrendPiece& piece : trend) {
        if (!isDrawn(piece))
            continue;
        span.low = isFirst ? *piece.min : std::min(span.low, *piece.min);
        span.high = isFirst ? *piece.max : std::max(span.high, *piece.max);
        isFirst = false;
    }
    if (span.low < span.high)
        return span;
    const double around = std::max(1.0, std::abs(span.low) / 1e12); // where 1 would be too little to be seen
    return {span.low - around, span.high + around};
}

/// Dots that are set or not, the first line above.
class Raster
{
public:
    Raster(int columns, int lines, bool braille)
        : m_columns(columns), m_braille(braille), m_across(braille ? dotsAcross : 1),
          m_down(braille ? dotsDown : 1),
          m_cells(static_cast<std::size_t>(lines), QString(columns, QLatin1Char(' ')))
    {
    }

    int height() const { return static_cast<int>(m_cells.size()) * m_down; }

    void set(int x, int y)
    {
        if (x / m_across >= m_columns)
            return;
        QString& line = m_cells[static_cast<std::size_t>(y / m_down)];
        const int column = x / m_across;
        if (!m_braille) {
            line[column] = QLatin1Char('*');
            return;
        }
        const ushort before = line.at(column) == QLatin1Char(' ') ? emptyBraille : line.at(column).unicode();
        line[column] = QChar(static_cast<ushort>(before | dotBits[y % dotsDown][x % dotsAcross]));
    }

    const QString& line(int index) const { return m_cells[static_cast<std::size_t>(index)]; }

private:
    const int m_columns;
    const bool m_braille;
    const int m_across;
    const int m_down;
    std::vector<QString> m_cells;
};

int rowOf(double value, const Span& span, int height)
{
    const double part =
        (span.high / 2 - value / 2) / (span.high / 2 - span.low / 2); // the whole might be too large
    return static_cast<int>(std::lround(part * (height - 1)));
}

/// A line for each piece, from its smallest to its largest value, and on to the piece before it.
void draw(const std::vector<TrendPiece>& trend, const Span& span, Raster* raster)
{
    for (std::size_t x = 0; x < trend.size(); ++x) {
        const TrendPiece& piece = trend[x];
        if (!isDrawn(piece))
            continue;
        int top = rowOf(*piece.max, span, raster->height());
        int bottom = rowOf(*piece.min, span, raster->height());
        if (x > 0 && isDrawn(trend[x - 1]) && !trend[x - 1].gap) {
            top = std::min(top, rowOf(*trend[x - 1].min, span, raster->height()));
            bottom = std::max(bottom, rowOf(*trend[x - 1].max, span, raster->height()));
        }
        for (int y = top; y <= bottom; ++y)
            raster->set(static_cast<int>(x), y);
    }
}

/// \return \a value with as few digits as are near enough for an eye
QString labelOf(double value, const Span& span)
{
    const double nearEnough = (span.high - span.low) / 200;
    const int most = 6;
    for (int behindPoint = 0; behindPoint <= most; ++behindPoint) {
        const QString label = QString::number(value, 'f', behindPoint);
        if (label.size() <= labelColumns && std::abs(label.toDouble() - value) <= nearEnough)
            return label.rightJustified(labelColumns);
    }
    const int significant = 4; // with a sign and an exponent of three digits
    return QString::number(value, 'g', significant).rightJustified(labelColumns);
}

QString timeLabel(qint64 timeMs, TimeRange range)
{
    const qint64 second = 1000;
    const qint64 length = range.toMs - range.fromMs;
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(timeMs);
    if (length < 60 * second)
        return time.toString(QStringLiteral("HH:mm:ss.zzz"));
    return time.toString(length < 86400 * second ? QStringLiteral("HH:mm:ss")
                                                 : QStringLiteral("MM-dd HH:mm"));
}

/// \return the lines below the picture: the axis with its marks, and their times
QStringList timeAxis(TimeRange range, int columns, bool braille)
{
    QString axis(columns, braille ? QChar(0x2500) : QLatin1Char('-'));
    QString times(columns + beforePicture, QLatin1Char(' '));
    const int parts = std::max(1, columns / betweenTimes);
    for (int part = 0; part <= parts; ++part) {
        const int column = part * (columns - 1) / parts;
        const qint64 time = range.fromMs + (range.toMs - range.fromMs) * part / parts;
        const QString label = timeLabel(time, range);
        axis[column] = braille ? QChar(0x252C) : QLatin1Char('+');
        const int at = std::min(beforePicture + column, times.size() - label.size());
        times.replace(at, label.size(), label);
    }
    const QChar corner = braille ? QChar(0x2514) : QLatin1Char('+');
    return {QString(labelColumns + 1, QLatin1Char(' ')) + corner + axis, times};
}

} // namespace

bool writesUtf8()
{
    const locale_t locale = newlocale(LC_CTYPE_MASK, "", nullptr);
    if (locale == nullptr)
        return false;
    const bool isUtf8 = qstrcmp(nl_langinfo_l(CODESET, locale), "UTF-8") == 0;
    freelocale(locale);
    return isUtf8;
}

int plotPieces(const PlotSize& size)
{
    return (size.columns - beforePicture) * (size.braille ? dotsAcross : 1);
}

QStringList plotLines(const Series& series, TimeRange range, const std::vector<TrendPiece>& trend,
                      const PlotSize& size)
{
    QStringList lines(
        printable(series.unit.isEmpty() ? series.name : series.name + QStringLiteral(", ") + series.unit));
    const bool isEmpty = std::none_of(trend.begin(), trend.end(), isDrawn);
    if (isEmpty)
        return lines << QStringLiteral("  no number was read in this time");
    const int columns = size.columns - beforePicture;
    const Span span = spanOf(trend);
    Raster raster(columns, size.lines, size.braille);
    draw(trend, span, &raster);
    const int last = size.lines - 1;
    for (int line = 0; line <= last; ++line) {
        const bool isMarked = line == 0 || line == last || (last % 2 == 0 && line == last / 2);
        const double value = span.high - (span.high / last - span.low / last) * line;
        const QChar mark = isMarked ? (size.braille ? QChar(0x2524) : QLatin1Char('+'))
                                    : (size.braille ? QChar(0x2502) : QLatin1Char('|'));
        lines << (isMarked ? labelOf(value, span) : QString(labelColumns, QLatin1Char(' '))) +
                     QLatin1Char(' ') + mark + raster.line(line);
    }
    return lines << timeAxis(range, columns, size.braille);
}

} // namespace plc
