// SPDX-License-Identifier: MIT
/// \file
/// \brief What a trend shows as a file that other programs read.
#ifndef WINDOW_TREND_TREND_CSV_H
#define WINDOW_TREND_TREND_CSV_H

#include "window/trend/trend_series.h"

#include <QString>

class QIODevice;

namespace plc
{

struct CurveSteps {
    QString name;
    QString unit;
    std::vector<TrendStep> steps;
};

/// Writes "time,name,unit,min,max", a line for each step in the range, curve by curve: values one by one have
/// one number twice, pieces of time their lowest and highest; where there was no fresh value both are empty.
/// \return false when it could not be written
bool writeTrendCsv(QIODevice* file, const std::vector<CurveSteps>& curves, qint64 fromMs, qint64 toMs);

} // namespace plc

#endif
