// SPDX-License-Identifier: MIT
#include "history/csv_line.h"

#include "history/local_time.h"

namespace plc
{

namespace
{

QByteArray field(const QString& text)
{
    const QByteArray bytes = text.toUtf8();
    if (!bytes.contains(',') && !bytes.contains('"') && !bytes.contains('\n') && !bytes.contains('\r'))
        return bytes;
    return '"' + QByteArray(bytes).replace('"', "\"\"") + '"';
}

} // namespace

QByteArray csvLine(const Series& series, qint64 timeMs, SampleState state, const QString& text)
{
    return localTimeText(timeMs).toLatin1() + ',' + field(series.name) + ',' + field(text) + ',' +
           field(series.unit) + ',' + sampleStateWord(state).toLatin1() + '\n';
}

} // namespace plc
