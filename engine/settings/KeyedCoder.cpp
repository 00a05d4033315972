#include "engine/settings/KeyedCoder.h"

namespace pagestack {

namespace {

    constexpr quint32 mark = 0x504b4331; // "PKC1"

    enum Kind : quint8 {
        IntKind = 'i',
        BoolKind = 'b',
        TextKind = 's',
    };

    class FixedCoding
    {
    public:
        explicit FixedCoding(QDataStream& stream)
            : m_stream(stream)
            , m_version(stream.version())
            , m_byteOrder(stream.byteOrder())
        {
            m_stream.setVersion(QDataStream::Qt_6_0);
            m_stream.setByteOrder(QDataStream::BigEndian);
        }
        ~FixedCoding()
        {
            m_stream.setVersion(m_version);
            m_stream.setByteOrder(m_byteOrder);
        }
        FixedCoding(const FixedCoding&) = delete;
        FixedCoding& operator=(const FixedCoding&) = delete;

    private:
        QDataStream& m_stream;
        int m_version;
        QDataStream::ByteOrder m_byteOrder;
    };

    void writeValue(QDataStream& stream, const QVariant& value)
    {
        switch (value.typeId()) {
        case QMetaType::Int:
            stream << quint8(IntKind) << qint32(value.toInt());
            break;
        case QMetaType::Bool:
            stream << quint8(BoolKind) << value.toBool();
            break;
        default:
            stream << quint8(TextKind) << value.toString();
            break;
        }
    }

    // QVariant's own stream operator is not used: it makes whatever type the stream names.
    template <typename Value>
    QVariant readAs(QDataStream& stream)
    {
        Value value {};
        stream >> value;
        return QVariant::fromValue(value);
    }

    // Invalid for a kind that does not exist.
    QVariant readValue(QDataStream& stream)
    {
        quint8 kind = 0;
        stream >> kind;
        switch (kind) {
        case IntKind:
            return readAs<qint32>(stream);
        case BoolKind:
            return readAs<bool>(stream);
        case TextKind:
            return readAs<QString>(stream);
        default:
            return {};
        }
    }

    QVariant ofType(const QVariant& value, QMetaType::Type type)
    {
        return value.typeId() == type ? value : QVariant();
    }

} // namespace

void KeyedEncoder::encodeInt(qint32 value, const QByteArray& key)
{
    m_entries.push_back({ key, value });
}

void KeyedEncoder::encodeBool(bool value, const QByteArray& key)
{
    m_entries.push_back({ key, value });
}

void KeyedEncoder::encodeObject(const QString& text, const QByteArray& key)
{
    m_entries.push_back({ key, text });
}

bool KeyedEncoder::writeTo(QDataStream& stream) const
{
    const FixedCoding coding(stream);
    stream << mark << static_cast<quint32>(m_entries.size());
    for (const Entry& entry : m_entries) {
        stream << entry.key;
        writeValue(stream, entry.value);
    }
    return stream.status() == QDataStream::Ok;
}

std::optional<KeyedDecoder> KeyedDecoder::readFrom(QDataStream& stream)
{
    const FixedCoding coding(stream);
    quint32 foundMark = 0;
    quint32 count = 0;
    stream >> foundMark >> count;
    if (stream.status() == QDataStream::Ok && foundMark != mark)
        stream.setStatus(QDataStream::ReadCorruptData);

    KeyedDecoder record;
    for (quint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        QByteArray key;
        stream >> key; // Qt grows the array as bytes arrive, so a false length costs no memory.
        const QVariant value = readValue(stream);
        if (stream.status() == QDataStream::Ok && !value.isValid())
            stream.setStatus(QDataStream::ReadCorruptData);
        record.m_entries.insert(key, value);
    }
    if (stream.status() != QDataStream::Ok)
        return std::nullopt;
    return record;
}

qint32 KeyedDecoder::decodeInt(const QByteArray& key) const
{
    return ofType(m_entries.value(key), QMetaType::Int).toInt();
}

bool KeyedDecoder::decodeBool(const QByteArray& key) const
{
    return ofType(m_entries.value(key), QMetaType::Bool).toBool();
}

QString KeyedDecoder::decodeObject(const QByteArray& key) const
{
    return ofType(m_entries.value(key), QMetaType::QString).toString();
}

} // namespace pagestack
