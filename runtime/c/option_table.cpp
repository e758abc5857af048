// SPDX-License-Identifier: MIT
#include "runtime/c/option_table.h"

#include "runtime/c/refusal.h"

#include <QStringList>

namespace plc
{

namespace
{

/// One of the members is set: it says what kind of value the option has.
struct OptionRow {
    const char* key;
    QString Settings::*text;
    int Settings::*number;
    bool Settings::*flag;
};

const OptionRow optionRows[] = {
    {"host", &Settings::host, nullptr, nullptr},
    {"port", nullptr, &Settings::port, nullptr},
    {"station", nullptr, &Settings::station, nullptr},
    {"multi_station", nullptr, nullptr, &Settings::multiStation},
    {"remote_mode", nullptr, nullptr, &Settings::remoteMode},
    {"timeout_ms", nullptr, &Settings::timeoutMs, nullptr},
    {"retries", nullptr, &Settings::retryLimit, nullptr},
    {"max_block_words", nullptr, &Settings::maxBlockCount, nullptr},
    {"poll_ms", nullptr, &Settings::pollMs, nullptr},
    {"gap_ms", nullptr, &Settings::gapMs, nullptr},
    {"stale_after_ms", nullptr, &Settings::staleAfterMs, nullptr},
    {"station_pause_ms", nullptr, &Settings::stationPauseMs, nullptr},
    {"driver", &Settings::driverPath, nullptr, nullptr},
};

const OptionRow& rowOf(const QString& key)
{
    QStringList keys;
    for (const OptionRow& row : optionRows) {
        if (key == QLatin1String(row.key))
            return row;
        keys << QLatin1String(row.key);
    }
    throw Refusal(PLCRUNTIME_INVALID, QStringLiteral("there is no option \"%1\"; options are %2")
                                          .arg(key, keys.join(QStringLiteral(", "))));
}

void set(const OptionRow& row, const QString& text, Settings* settings)
{
    if (row.text != nullptr) {
        settings->*row.text = text;
        return;
    }
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (!isNumber || (row.flag != nullptr && number != 0 && number != 1))
        throw Refusal(PLCRUNTIME_INVALID,
                      QStringLiteral("option %1 is \"%2\"; give %3")
                          .arg(QLatin1String(row.key), text,
                               QLatin1String(row.flag != nullptr ? "0 or 1" : "a number")));
    if (row.flag != nullptr)
        settings->*row.flag = number != 0;
    else
        settings->*row.number = number;
}

void check(Settings settings)
{
    if (settings.driverPath.isEmpty())
        settings.driverPath = QStringLiteral("looked for at the start");
    const QString words = settingsError(settings);
    if (!words.isEmpty())
        throw Refusal(PLCRUNTIME_INVALID, words);
}

} // namespace

Settings settingsOf(const plcruntime_option* options)
{
    Settings settings;
    for (; options != nullptr && options->key != nullptr; ++options) {
        const OptionRow& row = rowOf(QString::fromUtf8(options->key));
        set(row, QString::fromUtf8(options->value == nullptr ? "" : options->value), &settings);
    }
    check(settings);
    return settings;
}

} // namespace plc
