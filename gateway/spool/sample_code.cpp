// SPDX-License-Identifier: MIT
#include "gateway/spool/sample_code.h"

#include <QtEndian>

#include <cstring>

namespace plc
{

namespace
{

// What a value is; in the file, so none may change. The quality stands in the upper four bits.
enum ValueKind : quint8 { NoValue, False, True, Whole, Unsigned, Real, Text };

const int kindBits = 4;
const int moreFollows = 0x80;
const int bitsOfGroup = 7;

void appendNumber(QByteArray* bytes, quint64 number)
{
    for (; number >= moreFollows; number >>= bitsOfGroup)
        bytes->append(static_cast<char>((number & 0x7F) | moreFollows));
    bytes->append(static_cast<char>(number));
}

/// Small numbers of either sign become short.
quint64 folded(qint64 number)
{
    const auto bits = static_cast<quint64>(number);
    return number < 0 ? ~(bits << 1) : bits << 1;
}

qint64 unfolded(quint64 number)
{
    return static_cast<qint64>((number & 1) != 0 ? ~(number >> 1) : number >> 1);
}

struct Writer {
    QByteArray* bytes;
    quint8 quality;

    void begin(ValueKind kind) const { bytes->append(static_cast<char>(quality << kindBits | kind)); }
    void operator()(std::monostate) const { begin(NoValue); }
    void operator()(bool value) const { begin(value ? True : False); }
    void operator()(qint64 value) const
    {
        begin(Whole);
        appendNumber(bytes, folded(value));
    }
    void operator()(quint64 value) const
    {
        begin(Unsigned);
        appendNumber(bytes, value);
    }
    void operator()(double value) const
    {
        quint64 bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        bits = qToLittleEndian(bits);
        char raw[sizeof bits];
        std::memcpy(raw, &bits, sizeof bits);
        begin(Real);
        bytes->append(raw, sizeof raw);
    }
    void operator()(const QString& value) const
    {
        const QByteArray text = value.toUtf8();
        begin(Text);
        appendNumber(bytes, static_cast<quint64>(text.size()));
        bytes->append(text);
    }
};

/// Takes bytes off; after one that was not there, isWhole is false and all else is zero.
class Reader
{
public:
    explicit Reader(const QByteArray& bytes) : m_at(bytes.constData()), m_end(m_at + bytes.size()) {}

    bool isAtEnd() const { return m_at == m_end; }
    bool isWhole() const { return m_isWhole; }
    void spoil() { m_isWhole = false; }

    quint8 byte() { return static_cast<quint8>(*take(1)); }

    quint64 number()
    {
        quint64 number = 0;
        for (int shift = 0; shift < 64; shift += bitsOfGroup) {
            const quint8 group = byte();
            number |= static_cast<quint64>(group & 0x7F) << shift;
            if ((group & moreFollows) == 0)
                return number;
        }
        spoil();
        return 0;
    }

    double real()
    {
        quint64 bits = 0;
        std::memcpy(&bits, take(sizeof bits), sizeof bits);
        bits = qFromLittleEndian(bits);
        double value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }

    QString text()
    {
        const quint64 size = number();
        if (!has(size))
            return QString();
        return QString::fromUtf8(take(static_cast<std::size_t>(size)), static_cast<int>(size));
    }

private:
    bool has(quint64 size)
    {
        m_isWhole = m_isWhole && size <= static_cast<quint64>(m_end - m_at);
        return m_isWhole;
    }

    const char* take(std::size_t size)
    {
        static const char nothing[sizeof(quint64)] = {};
        if (!has(size))
            return nothing;
        const char* taken = m_at;
        m_at += size;
        return taken;
    }

    const char* m_at;
    const char* m_end;
    bool m_isWhole = true;
};

SampleValue valueOf(quint8 kind, Reader* reader)
{
    switch (kind) {
    case NoValue:
        return {};
    case False:
        return false;
    case True:
        return true;
    case Whole:
        return unfolded(reader->number());
    case Unsigned:
        return reader->number();
    case Real:
        return reader->real();
    case Text:
        return reader->text();
    default:
        reader->spoil();
        return {};
    }
}

} // namespace

void appendSample(QByteArray* bytes, const Sample& sample, quint32 name)
{
    std::visit(Writer{bytes, static_cast<quint8>(sample.quality)}, sample.value);
    appendNumber(bytes, name);
    appendNumber(bytes, folded(sample.at));
}

bool samplesOfBytes(const QByteArray& bytes, std::vector<Sample>* samples)
{
    for (Reader reader(bytes); !reader.isAtEnd();) {
        Sample sample;
        const quint8 head = reader.byte();
        sample.value = valueOf(head & ((1 << kindBits) - 1), &reader);
        sample.quality = static_cast<SampleQuality>(head >> kindBits);
        sample.variable = static_cast<quint32>(reader.number());
        sample.at = unfolded(reader.number());
        if (!reader.isWhole() || sample.quality > SampleQuality::Bad)
            return false;
        samples->push_back(std::move(sample));
    }
    return true;
}

} // namespace plc
