// SPDX-License-Identifier: MIT
/// \file
/// \brief Where the window has its values from: a controller or a capture.
#ifndef WINDOW_SESSION_SOURCE_H
#define WINDOW_SESSION_SOURCE_H

#include "runtime/model/settings.h"
#include "runtime/model/variable_list.h"
#include "window/session/snapshot.h"

#include <QObject>

#include <vector>

namespace plc
{

/// What is dragged from one part of the window to another: the names of variables, one a line.
inline constexpr char variablesMimeType[] = "application/x-plcwindow-variables";

/// What is asked for.
struct Watched {
    Settings settings;
    std::vector<ListedVariable> variables; ///< whatever was typed, too, by asListed()
    QString captureTo;                     ///< where the link's bytes go; empty: nowhere
};

/// \return a variable that stands in no list as one that does: named by its address, of its area's plain type
ListedVariable asListed(const Variable& variable);

/// No function waits for anything; all belong to the thread that made it.
class Source : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual const Watched& watched() const = 0;

    /// \return false: nothing can be written or switched
    virtual bool isLive() const = 0;

    /// \return the time that ages are told by, in ms since 1970 UTC
    virtual qint64 nowMs() const = 0;

    /// \return what came since the last call
    virtual Snapshot take() = 0;

    /// The age of these is to be known at the next take(), of others when they change.
    virtual void look(const std::vector<int>& indexes) = 0;

    /// What is recorded comes as samples.
    virtual void setRecorded(int index, bool recorded) = 0;

Q_SIGNALS:
    void failed(const QString& words);
};

} // namespace plc

#endif
