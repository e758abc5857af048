// SPDX-License-Identifier: MIT
#include "history/sample_store.h"

#include "history/csv_store.h"
#include "history/sqlite_store.h"

namespace plc
{

bool isDatabasePath(const QString& path)
{
    return path.endsWith(QLatin1String(".sqlite"));
}

QString storeRefusal(const QString& path)
{
    if (isDatabasePath(path) || path.endsWith(QLatin1String(".csv")))
        return QString();
    return QStringLiteral("the ending of the file's name says the format: .csv or .sqlite");
}

std::unique_ptr<SampleStore> makeSampleStore(const QString& path, const Rotation& rotation)
{
    if (isDatabasePath(path))
        return std::make_unique<SqliteStore>(path);
    return std::make_unique<CsvStore>(path, rotation);
}

} // namespace plc
