/// \file
/// \brief Which reply belongs to which request.
#ifndef RUNTIME_LINK_REPLY_MATCHER_H
#define RUNTIME_LINK_REPLY_MATCHER_H

#include <QByteArray>
#include <QString>

namespace plc
{

enum class DropReason {
    Late,          ///< the reply to an earlier request that was given up
    Doubled,       ///< a second reply to a request that was answered
    WrongUnit,     ///< from another station than the one asked
    WrongFunction, ///< to another function than the one asked for
    WrongArea,     ///< remote frames: of another area than the one asked for
    WrongSize,     ///< remote frames: longer or shorter than what was asked for
    WrongElements  ///< remote frames: names other elements than those written
};

/// \return the reason in words
QString dropReasonWords(DropReason reason);

struct DropCounts {
    int late = 0;
    int doubled = 0;
    int wrongUnit = 0;
    int wrongFunction = 0;
    int wrongPlace = 0; ///< wrong area, size or elements of a remote reply

    void count(DropReason reason);
    int total() const { return late + doubled + wrongUnit + wrongFunction + wrongPlace; }
};

struct DroppedReply {
    QByteArray reply;
    DropReason reason;
};

/// The driver's frames all carry transaction number 0, and the driver judges a reply by its length alone.
/// So the copy that is sent is numbered, and only the reply with the number, unit and function of the last
/// request is passed on. A Modbus exception to that function is a matching reply.
class ReplyMatcher
{
public:
    /// \return \a frame with the next number, never 0, in its header
    QByteArray number(const QByteArray& frame);

    /// \param frame the next request, with the number that it has
    void expect(const QByteArray& frame);

    /// \param reply a whole reply; when it matches, its number is put back to 0
    /// \param reason receives why it does not match
    /// \return true once for each numbered request at most
    bool accept(QByteArray* reply, DropReason* reason);

private:
    bool fits(const QByteArray& reply, DropReason* reason) const;

    QByteArray m_request;
    int m_number = 0;
    int m_answered = 0;
};

} // namespace plc

#endif
