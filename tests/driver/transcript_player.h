// SPDX-License-Identifier: MIT
/// \file
/// \brief Plays a script of calls against the driver and writes down what it did.
///
/// A transcript is a text file. A line is a call and, after "->", what the driver answered; the indented
/// lines under it are the callbacks that ran during the call. Empty lines and lines that begin with "#" are
/// for the reader. Playing a transcript makes the calls again and writes the answers afresh, so a changed
/// behaviour shows as a changed line.
///
///     set WORD VALUE            a word of the settings block, under its field name
///     read VARIABLE             appended to the cyclic list (AddListReadVar); answers its size
///     write VARIABLE [direct]   queued (AddListWriteVar); answers the size of the write list
///     once VARIABLE [direct]    queued (AddListOnceReadVar); answers the size of the one-shot list
///     put VARIABLE              SetRegisterData; answers its result
///     get VARIABLE              GetRegisterData; answers the value bytes, "refused" for the result 0
///     station N on|off          EnCommStation
///     poll                      ComCommunication; answers the frame and the reply's expected length
///     reply BYTES               DataCom with these bytes; answers the result code
///     timeout                   DataCom with no bytes
///     show queues               keys of the requests in the three lists, heads first
///     show state                what the two sides share about the course of the exchange
///     show result               identity in the result record
///
/// VARIABLE is made of words and values in any order: area N, address N or text T (once, put and get take
/// a text, the others an address), count N (1), station N (1), key HOSTKEY/SUBKEY (0/0), flag N (accessFlag,
/// 0), group N (station group; the local one), selector N (storeSelector, 0), data BYTES. Bytes are two
/// hexadecimal digits each.
///
/// Bytes, answers and values in the files are worked out from what is required, not copied from a run.
#ifndef TESTS_DRIVER_TRANSCRIPT_PLAYER_H
#define TESTS_DRIVER_TRANSCRIPT_PLAYER_H

#include "driver/plcdriver.h"

#include <string>
#include <vector>

/// Registers its own callbacks; the driver MUST be clean and wired to \a settings.
class TranscriptPlayer
{
public:
    explicit TranscriptPlayer(COMINFO& settings);

    /// Makes the calls of a transcript; answers and callbacks in it are ignored.
    /// \return the transcript as it is now, line by line. A line that cannot be played is answered "-> ?".
    std::vector<std::string> Play(const std::vector<std::string>& transcript);

private:
    void PlayLine(const std::string& line);
    std::string Answer(const std::string& call);
    std::string Set(const std::string& word, int value);

    COMINFO& m_settings;
    std::vector<std::string> m_played;
};

#endif
