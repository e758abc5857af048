// SPDX-License-Identifier: MIT
/// \file
/// \brief What the end of a read says about the elements that it asked for.
#ifndef PANEL_SESSION_READ_ANSWER_H
#define PANEL_SESSION_READ_ANSWER_H

#include "runtime/model/outcome.h"

#include <QString>

namespace plc
{

/// How a controller answered a read.
struct ReadAnswer {
    enum Kind {
        Given,        ///< with the values
        Refused,      ///< with an exception that is about what was asked for
        Unanswered,   ///< not, or not usably: this says nothing about what was asked for
        NotConnected, ///< it was not asked
        Interrupted   ///< the user wants no more
    };
    Kind kind = Given;
    QString words;           ///< why, unless it was given
    int exception = 0;       ///< that was answered, where one was
    bool mayComeYet = false; ///< asking again may bring another answer
};

/// \return what the end of a read says about the elements that were asked for
ReadAnswer answerOf(const ReadOutcome& outcome);

} // namespace plc

#endif
