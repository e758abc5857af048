// SPDX-License-Identifier: MIT
/// \file
/// \brief What a person types: commands, options and variables.
#ifndef PANEL_COMMANDS_COMMAND_LINE_H
#define PANEL_COMMANDS_COMMAND_LINE_H

#include "capture/capture_reader.h"
#include "history/sample_store.h"
#include "runtime/cycle/list_part.h"
#include "runtime/model/settings.h"
#include "runtime/model/value_text.h"
#include "runtime/model/variable.h"
#include "runtime/model/variable_list.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace plc
{

enum class Command { Read, Write, Watch, Check, Scan, Where, Log, History, Replay, Demo };

/// One AREA:ADDRESS=VALUE[,VALUE...] or NAME=VALUE.
struct WriteTask {
    QString text;      ///< as it was typed
    Variable variable; ///< as many elements as values
    std::vector<quint32> values;
    std::optional<ListedVariable> listed; ///< the variable that is named
};

/// Of log.
struct LogOptions {
    QString to; ///< file that is written
    Rotation rotation;
    bool every = false; ///< every refresh instead of changes
};

/// Of history.
struct HistoryOptions {
    QString file;
    QStringList names;            ///< or patterns of them; none: the names are asked for
    std::optional<qint64> fromMs; ///< since 1970, UTC
    std::optional<qint64> toMs;
    bool plot = false;
    bool csv = false;
};

struct Options {
    Command command = Command::Read;
    Settings settings;                  ///< driverPath is empty when none is given
    std::vector<Variable> variables;    ///< of read, watch, check and scan, each of which can be read
    std::vector<WriteTask> writes;      ///< of write, each of which can be written
    std::vector<ListedVariable> listed; ///< the same: those of the list that are named, or all
    std::vector<int> stations;          ///< of scan: to be asked, ascending; empty: only the variables' own
    ValueFormat format = ValueFormat::Decimal;
    QString captureTo;                      ///< where the link's bytes go; empty: nowhere
    QString captureFile;                    ///< of replay: what is played
    std::shared_ptr<CaptureReader> capture; ///< the same, open, its beginning read
    std::optional<int> capturedPort;        ///< of replay: the controller's port in captured packets
    bool once = false;
    bool trace = false;
    bool statistics = false;
    bool verify = false; ///< of write: what was written is read back
    bool names = false;  ///< of where and history: only the names that there are
    bool dryRun = false; ///< of write: frames are shown, and nothing is sent
    int tries = 2;       ///< of scan: how often a station is asked that does not answer
    LogOptions log;
    HistoryOptions history;
    int intervalMs = 500; ///< between two looks at the watched values
    ListPart part;        ///< of watch: which block reads of the list this process takes
};

struct CommandLine {
    enum Wish { Run, ShowText, Refuse };
    Wish wish = Run;
    Options options;
    QString text; ///< help or version to show, or what is wrong with the arguments and what to do
};

/// Reads the arguments, the program's name first, and the list of variables that they name. Needs a
/// QCoreApplication.
CommandLine parseCommandLine(const QStringList& arguments);

} // namespace plc

#endif
