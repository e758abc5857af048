// SPDX-License-Identifier: MIT
#include "transcript_player.h"

#include "driver_fixture.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <sstream>

namespace
{

typedef std::vector<std::string> Words;

Words Split(const std::string& text)
{
    std::istringstream in(text);
    return Words(std::istream_iterator<std::string>(in), std::istream_iterator<std::string>());
}

std::string Key(const RW_VAR& var)
{
    return std::to_string(var.hostKey) + "/" + std::to_string(var.hostSubKey);
}

std::string Keys(const QList<RW_VAR>& list)
{
    std::string keys;
    for (const RW_VAR& var : list)
        keys += " " + Key(var);
    return keys.empty() ? " none" : keys;
}

// The callbacks that ran since the last call, in their order.
std::vector<std::string>& Callbacks()
{
    static std::vector<std::string> lines;
    return lines;
}

int NoteOnceReadDone(int portId, int hostKey, int hostSubKey, int status)
{
    std::ostringstream line;
    line << "  onceReadDone port " << portId << " key " << hostKey << "/" << hostSubKey << " status "
         << status;
    Callbacks().push_back(line.str());
    return 0;
}

int NoteListDone(QList<RW_VAR>* list, int hostKey, int flag)
{
    std::ostringstream line;
    line << "  listDone key " << hostKey << " flag " << flag;
    if (!list || !list->isEmpty())
        line << " with a list that is not empty";
    Callbacks().push_back(line.str());
    return 0;
}

// A request as its words say it; the address text is in name2.
struct Request {
    RW_VAR var;
    bool direct;
};

bool IsByte(const std::string& word)
{
    return word.size() == 2 && std::all_of(word.begin(), word.end(), [](char c) { return isxdigit(c) != 0; });
}

QByteArray TakeBytes(const Words& words, size_t& at)
{
    std::string hex;
    while (at < words.size() && IsByte(words[at]))
        hex += words[at++];
    return fromHex(hex.c_str());
}

void SetKey(RW_VAR& var, const std::string& key)
{
    const size_t slash = key.find('/');
    var.hostKey = std::stoi(key);
    var.hostSubKey = std::stoi(key.substr(slash + 1));
}

void SetField(RW_VAR& var, const std::string& field, const std::string& value)
{
    static const std::map<std::string, int RW_VAR::*> numbers = {{"area", &RW_VAR::area},
                                                                 {"address", &RW_VAR::address},
                                                                 {"count", &RW_VAR::count},
                                                                 {"station", &RW_VAR::station},
                                                                 {"flag", &RW_VAR::accessFlag},
                                                                 {"group", &RW_VAR::stationGroup},
                                                                 {"selector", &RW_VAR::storeSelector}};
    if (field == "key")
        SetKey(var, value);
    else if (field == "text")
        var.name2 = QString::fromStdString(value);
    else
        var.*numbers.at(field) = std::stoi(value);
}

Request ReadRequest(const Words& words)
{
    Request request = {Variable(0, 0, 1), false};
    for (size_t at = 1; at < words.size();) {
        const std::string field = words[at++];
        if (field == "data")
            request.var.data = TakeBytes(words, at);
        else if (field == "direct")
            request.direct = true;
        else
            SetField(request.var, field, words.at(at++));
    }
    return request;
}

std::string Put(RW_VAR var)
{
    QString name("put");
    return std::to_string(SetRegisterData(&name, var.area, &var.name2, static_cast<unsigned>(var.station),
                                          &var.data, var.count, var.hostKey,
                                          static_cast<unsigned>(var.hostSubKey)));
}

std::string Get(RW_VAR var)
{
    QByteArray out;
    return GetRegisterData(0, var.area, &var.name2, var.station, &out, var.count) ? toHex(out) : "refused";
}

std::string Queue(const std::string& list, Request request)
{
    const int size = list == "read"    ? AddListReadVar(&request.var)
                     : list == "write" ? AddListWriteVar(&request.var, request.direct)
                                       : AddListOnceReadVar(&request.var, request.direct);
    return std::to_string(size) + " queued";
}

std::string Poll()
{
    const Protocol* next = ComCommunication();
    return next ? toHex(next->frame) + ", awaits " + std::to_string(next->replyLength) : "nothing";
}

std::string Reply(QByteArray bytes)
{
    return "result " + std::to_string(DataCom(&bytes, bytes.size())->result);
}

std::string Queues()
{
    return "reads" + Keys(PLC_driver.readList) + ", writes" + Keys(PLC_driver.writeList) + ", once" +
           Keys(PLC_driver.onceReadList);
}

std::string State(const COMINFO& settings)
{
    std::ostringstream out;
    out << "cycleDone " << settings.cycleDone << ", failCount " << settings.failCount << ", lastFailed "
        << int(PLC_driver.lastFailed) << ", received " << settings.framesReceived << " of "
        << settings.framesExpected;
    return out.str();
}

std::string Result()
{
    const RW_VAR& var = PLC_driver.retVar;
    std::ostringstream out;
    out << "key " << Key(var) << " area " << var.area << " address " << var.address << " count " << var.count
        << " station " << var.station << ", " << var.data.size() << " value bytes";
    return out.str();
}

std::string Trimmed(const std::string& text)
{
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

} // namespace

TranscriptPlayer::TranscriptPlayer(COMINFO& settings) : m_settings(settings)
{
    RegistCallBackFuncIntf(NoteOnceReadDone, NoteListDone);
    Callbacks().clear();
}

std::vector<std::string> TranscriptPlayer::Play(const std::vector<std::string>& transcript)
{
    for (const std::string& line : transcript)
        PlayLine(line);
    return m_played;
}

void TranscriptPlayer::PlayLine(const std::string& line)
{
    if (!line.empty() && line[0] == ' ')
        return; // a callback of an earlier run
    if (line.empty() || line[0] == '#') {
        m_played.push_back(line);
        return;
    }
    const std::string call = Trimmed(line.substr(0, line.find("->")));
    const std::string answer = Answer(call);
    m_played.push_back(answer.empty() ? call : call + " -> " + answer);
    m_played.insert(m_played.end(), Callbacks().begin(), Callbacks().end());
    Callbacks().clear();
}

std::string TranscriptPlayer::Answer(const std::string& call)
try {
    const Words words = Split(call);
    const std::string& verb = words.at(0);
    size_t second = 1;
    if (verb == "set")
        return Set(words.at(1), std::stoi(words.at(2)));
    if (verb == "read" || verb == "write" || verb == "once")
        return Queue(verb, ReadRequest(words));
    if (verb == "put")
        return Put(ReadRequest(words).var);
    if (verb == "get")
        return Get(ReadRequest(words).var);
    if (verb == "station")
        return EnCommStation(std::stoi(words.at(1)), words.at(2) == "on"), "";
    if (verb == "poll")
        return Poll();
    if (verb == "reply" || verb == "timeout")
        return Reply(TakeBytes(words, second));
    if (call == "show queues")
        return Queues();
    if (call == "show state")
        return State(m_settings);
    return call == "show result" ? Result() : "?";
} catch (const std::exception&) {
    return "?";
}

std::string TranscriptPlayer::Set(const std::string& word, int value)
{
    static const std::map<std::string, int COMINFO::*> words = {{"maxBlockCount", &COMINFO::maxBlockCount},
                                                                {"defaultStation", &COMINFO::defaultStation},
                                                                {"retryLimit", &COMINFO::retryLimit},
                                                                {"multiStation", &COMINFO::multiStation},
                                                                {"remoteMode", &COMINFO::remoteMode},
                                                                {"localStation", &COMINFO::localStation},
                                                                {"hostWriteMode", &COMINFO::hostWriteMode},
                                                                {"cycleDone", &COMINFO::cycleDone},
                                                                {"portId", &COMINFO::portId}};
    m_settings.*words.at(word) = value;
    return "";
}
