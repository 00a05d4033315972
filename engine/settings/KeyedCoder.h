#pragma once

#include <QByteArray>
#include <QDataStream>
#include <QHash>
#include <QString>
#include <QVariant>

#include <optional>
#include <vector>

namespace pagestack {

// A keyed record in a stream: a mark, the number of entries, then every entry as its key in ASCII,
// a letter for its kind ('i' 32-bit integer, 'b' boolean, 's' text) and its value. A null text
// stays null. The layout is the same whatever version and byte order the stream is set to; both are
// given back as they were.

/// Collects entries in the order of the calls and writes them as one record.
class KeyedEncoder
{
public:
    void encodeInt(qint32 value, const QByteArray& key);
    void encodeBool(bool value, const QByteArray& key);
    void encodeObject(const QString& text, const QByteArray& key);

    /// False, with the status of the stream set, when it did not take the whole record.
    bool writeTo(QDataStream& stream) const;

private:
    struct Entry
    {
        QByteArray key;
        QVariant value;
    };
    std::vector<Entry> m_entries;
};

/// The entries of a record that was read; entries under unknown keys are passed over.
class KeyedDecoder
{
public:
    /// Reads one record from `stream`, which may hold anything: nothing when it is damaged or cut
    /// off, with the status of the stream set. Memory follows what the stream really holds.
    static std::optional<KeyedDecoder> readFrom(QDataStream& stream);

    /// 0, false or a null string when the key is missing or its value is of another kind.
    qint32 decodeInt(const QByteArray& key) const;
    bool decodeBool(const QByteArray& key) const;
    QString decodeObject(const QByteArray& key) const;

private:
    QHash<QByteArray, QVariant> m_entries;
};

} // namespace pagestack
