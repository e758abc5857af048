// SPDX-License-Identifier: MIT
#include "window/trend/trend_csv.h"

#include <QDateTime>
#include <QIODevice>

#include <cmath>

namespace plc
{

namespace
{

const int doubleDigits = 15;

QByteArray quoted(QString text)
{
    text.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return '"' + text.toUtf8() + '"';
}

QByteArray numberText(double number)
{
    return std::isfinite(number) ? QByteArray::number(number, 'g', doubleDigits) : QByteArray();
}

QByteArray lineOfStep(const QByteArray& curve, const TrendStep& step)
{
    const QString time = QDateTime::fromMSecsSinceEpoch(step.beginMs, Qt::UTC).toString(Qt::ISODateWithMs);
    return time.toLatin1() + ',' + curve + ',' + numberText(step.min) + ',' + numberText(step.max) + '\n';
}

} // namespace

bool writeTrendCsv(QIODevice* file, const std::vector<CurveSteps>& curves, qint64 fromMs, qint64 toMs)
{
    bool isWritten = file->write("time,name,unit,min,max\n") > 0;
    for (const CurveSteps& curve : curves) {
        const QByteArray words = quoted(curve.name) + ',' + quoted(curve.unit);
        for (const TrendStep& step : curve.steps) {
            if (step.beginMs >= fromMs && step.beginMs <= toMs)
                isWritten = isWritten && file->write(lineOfStep(words, step)) > 0;
        }
    }
    return isWritten;
}

} // namespace plc
