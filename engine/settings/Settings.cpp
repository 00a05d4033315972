#include "engine/settings/Settings.h"

#include "engine/settings/UserDefaults.h"
#include "engine/support/SystemLog.h"

#include <QCborMap>
#include <QCborValue>
#include <QMetaProperty>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    const QString storeKey = u"SETTINGS"_s;

    /// The nine fields in the order in which they are kept.
    QList<QMetaProperty> fields()
    {
        QList<QMetaProperty> found;
        const QMetaObject& type = Settings::staticMetaObject;
        for (int i = type.propertyOffset(); i < type.propertyCount(); ++i)
            found.append(type.property(i));
        return found;
    }

    QString nameOf(const QMetaProperty& field) { return QString::fromLatin1(field.name()); }

    // QString's own comparison takes null for empty.
    bool isSame(const QString& a, const QString& b) { return a == b && a.isNull() == b.isNull(); }
    template <typename Value>
    bool isSame(Value a, Value b)
    {
        return a == b;
    }

} // namespace

Settings::Settings(UserDefaults* store, QObject* parent)
    : QObject(parent)
    , m_store(store)
    , m_outputFolderPath(u""_s)
    , m_separator(u""_s)
{
    if (m_store)
        setData(m_store->objectForKey(storeKey));
}

template <typename Value, typename Argument>
void Settings::change(Value& field, const Value& value, void (Settings::*changed)(Argument))
{
    if (isSame(field, value))
        return;
    field = value;
    emit(this->*changed)(value);
}

void Settings::setOutputType(int code) { change(m_outputType, code, &Settings::outputTypeChanged); }

void Settings::setIsSetCurrentAsDefaultOutputFolderPath(bool isSet)
{
    change(m_isSetCurrentAsDefaultOutputFolderPath, isSet,
           &Settings::isSetCurrentAsDefaultOutputFolderPathChanged);
}

void Settings::setIsOpenFolderAfterConversion(bool isOpen)
{
    change(m_isOpenFolderAfterConversion, isOpen, &Settings::isOpenFolderAfterConversionChanged);
}

void Settings::setOutputFolderPath(const QString& path)
{
    change(m_outputFolderPath, path, &Settings::outputFolderPathChanged);
}

void Settings::setSeparator(const QString& text)
{
    change(m_separator, text, &Settings::separatorChanged);
}

void Settings::setJpegQuality(int tenths)
{
    change(m_jpegQuality, tenths, &Settings::jpegQualityChanged);
}

void Settings::setTiffCompressionIndex(int index)
{
    change(m_tiffCompressionIndex, index, &Settings::tiffCompressionIndexChanged);
}

void Settings::setIsSplitTIFFIntoSinglePages(bool isSplit)
{
    change(m_isSplitTIFFIntoSinglePages, isSplit, &Settings::isSplitTIFFIntoSinglePagesChanged);
}

void Settings::setIsClearProcessedFiles(bool isClear)
{
    change(m_isClearProcessedFiles, isClear, &Settings::isClearProcessedFilesChanged);
}

std::optional<Settings::Pairs> Settings::getData()
{
    Pairs data;
    const bool isWhole = guarded(u"Settings=>getData"_s, [&] {
        if (m_outputFolderPath.isNull())
            setOutputFolderPath(u""_s);
        for (const QMetaProperty& field : fields()) {
            const QVariant value = field.read(this);
            if (value.typeId() == QMetaType::QString && value.toString().isNull())
                break; // ends the list
            data.append({ nameOf(field), value });
        }
    });
    return isWhole ? std::optional(data) : std::nullopt;
}

void Settings::setData(const QVariant& data)
{
    if (data.typeId() != QMetaType::QVariantMap)
        return;
    guarded(u"Settings=>setData:"_s, [&] {
        QVariantMap values = data.toMap();
        if (QVariant& quality = values[u"jpegQuality"_s];
            !quality.convert(QMetaType(QMetaType::Int)))
            quality = bestJpegQuality;
        setFields(values);
        if (m_outputFolderPath.isEmpty())
            setIsSetCurrentAsDefaultOutputFolderPath(false);
        else if (!m_isSetCurrentAsDefaultOutputFolderPath)
            setOutputFolderPath(u""_s);
    });
}

void Settings::setFields(const QVariantMap& values)
{
    for (const QMetaProperty& field : fields()) {
        QVariant value = values.value(nameOf(field));
        value.convert(field.metaType()); // where it cannot, to 0, false or a null text
        field.write(this, value);
    }
}

void Settings::synchronize()
{
    if (!m_store)
        return;
    guarded(u"Settings=>synchronize"_s, [&] {
        if (const std::optional<Pairs> data = getData()) {
            QVariantMap dictionary;
            for (const auto& [key, value] : *data)
                dictionary.insert(key, value);
            m_store->setObject(storeKey, dictionary);
        }
    });
    m_store->synchronize(); // which tells of a failure itself
}

// A stream of its own: the record is the same whatever version and byte order the coder is set to.
void Settings::encodeWithCoder(QDataStream& coder) const
{
    QCborMap record;
    for (const QMetaProperty& field : fields()) {
        const QVariant value = field.read(this);
        const bool isNull = value.typeId() == QMetaType::QString && value.toString().isNull();
        record.insert(nameOf(field), isNull ? QCborValue() : QCborValue::fromVariant(value));
    }
    QDataStream stream(coder.device());
    stream.setVersion(QDataStream::Qt_6_0);
    stream << record.toCborValue().toCbor();
    coder.setStatus(stream.status());
}

bool Settings::initWithCoder(QDataStream& coder)
{
    QDataStream stream(coder.device());
    stream.setVersion(QDataStream::Qt_6_0);
    QByteArray bytes;
    stream >> bytes; // Qt grows the array as bytes arrive, so a false length costs no memory.
    QCborParserError error;
    const QCborValue record = QCborValue::fromCbor(bytes, &error);
    if (stream.status() == QDataStream::Ok
        && (error.error != QCborError::NoError || !record.isMap()))
        stream.setStatus(QDataStream::ReadCorruptData);
    coder.setStatus(stream.status());
    if (stream.status() != QDataStream::Ok)
        return false;
    QVariantMap values = record.toMap().toVariantMap();
    for (QVariant& value : values)
        if (value.typeId() == QMetaType::QString)
            value = u""_s + value.toString(); // an empty text comes back as a null one
    setFields(values);
    return true;
}

} // namespace pagestack
