#include "engine/settings/Settings.h"

#include "engine/settings/KeyedCoder.h"
#include "engine/settings/UserDefaults.h"
#include "engine/support/SystemLog.h"

#include <exception>
#include <type_traits>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    const QString storeKey = u"SETTINGS"_s;

    // QString's own comparison takes null for empty.
    bool isSame(const QString& a, const QString& b) { return a == b && a.isNull() == b.isNull(); }

    // Stores `value` and returns whether that changed the field.
    template <typename Value>
    bool change(Value& field, const Value& value)
    {
        if constexpr (std::is_same_v<Value, QString>) {
            if (isSame(field, value))
                return false;
        } else if (field == value) {
            return false;
        }
        field = value;
        return true;
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

void Settings::setOutputType(int code)
{
    if (change(m_outputType, code))
        emit outputTypeChanged(code);
}

void Settings::setIsSetCurrentAsDefaultOutputFolderPath(bool isSet)
{
    if (change(m_isSetCurrentAsDefaultOutputFolderPath, isSet))
        emit isSetCurrentAsDefaultOutputFolderPathChanged(isSet);
}

void Settings::setIsOpenFolderAfterConversion(bool isOpen)
{
    if (change(m_isOpenFolderAfterConversion, isOpen))
        emit isOpenFolderAfterConversionChanged(isOpen);
}

void Settings::setOutputFolderPath(const QString& path)
{
    if (change(m_outputFolderPath, path))
        emit outputFolderPathChanged(path);
}

void Settings::setSeparator(const QString& text)
{
    if (change(m_separator, text))
        emit separatorChanged(text);
}

void Settings::setJpegQuality(int tenths)
{
    if (change(m_jpegQuality, tenths))
        emit jpegQualityChanged(tenths);
}

void Settings::setTiffCompressionIndex(int index)
{
    if (change(m_tiffCompressionIndex, index))
        emit tiffCompressionIndexChanged(index);
}

void Settings::setIsSplitTIFFIntoSinglePages(bool isSplit)
{
    if (change(m_isSplitTIFFIntoSinglePages, isSplit))
        emit isSplitTIFFIntoSinglePagesChanged(isSplit);
}

void Settings::setIsClearProcessedFiles(bool isClear)
{
    if (change(m_isClearProcessedFiles, isClear))
        emit isClearProcessedFilesChanged(isClear);
}

std::optional<Settings::Pairs> Settings::getData()
{
    try {
        if (m_outputFolderPath.isNull())
            setOutputFolderPath(u""_s);
        Pairs data {
            { u"outputType"_s, m_outputType },
            { u"isSetCurrentAsDefaultOutputFolderPath"_s, m_isSetCurrentAsDefaultOutputFolderPath },
            { u"isOpenFolderAfterConversion"_s, m_isOpenFolderAfterConversion },
            { u"outputFolderPath"_s, m_outputFolderPath },
        };
        if (m_separator.isNull())
            return data; // a null value ends the list
        data += {
            { u"separator"_s, m_separator },
            { u"jpegQuality"_s, m_jpegQuality },
            { u"tiffCompressionIndex"_s, m_tiffCompressionIndex },
            { u"isSplitTIFFIntoSinglePages"_s, m_isSplitTIFFIntoSinglePages },
            { u"isClearProcessedFiles"_s, m_isClearProcessedFiles },
        };
        return data;
    } catch (const std::exception& error) {
        systemLogError(u"Settings=>getData"_s, error);
        return std::nullopt;
    }
}

void Settings::setData(const QVariant& data)
{
    if (data.typeId() != QMetaType::QVariantMap)
        return;
    try {
        readFields(data.toMap());
        applyFolderRule();
    } catch (const std::exception& error) {
        systemLogError(u"Settings=>setData:"_s, error);
    }
}

void Settings::readFields(const QVariantMap& data)
{
    setOutputType(data.value(u"outputType"_s).toInt());
    setIsSetCurrentAsDefaultOutputFolderPath(
        data.value(u"isSetCurrentAsDefaultOutputFolderPath"_s).toBool());
    setIsOpenFolderAfterConversion(data.value(u"isOpenFolderAfterConversion"_s).toBool());
    setOutputFolderPath(data.value(u"outputFolderPath"_s).toString());
    setSeparator(data.value(u"separator"_s).toString());
    bool isNumber = false;
    const int quality = data.value(u"jpegQuality"_s).toInt(&isNumber);
    setJpegQuality(isNumber ? quality : bestJpegQuality);
    setTiffCompressionIndex(data.value(u"tiffCompressionIndex"_s).toInt());
    setIsSplitTIFFIntoSinglePages(data.value(u"isSplitTIFFIntoSinglePages"_s).toBool());
    setIsClearProcessedFiles(data.value(u"isClearProcessedFiles"_s).toBool());
}

void Settings::applyFolderRule()
{
    if (m_outputFolderPath.isEmpty())
        setIsSetCurrentAsDefaultOutputFolderPath(false);
    else if (!m_isSetCurrentAsDefaultOutputFolderPath)
        setOutputFolderPath(u""_s);
}

void Settings::synchronize()
{
    if (!m_store)
        return;
    try {
        if (const std::optional<Pairs> data = getData()) {
            QVariantMap dictionary;
            for (const auto& [key, value] : *data)
                dictionary.insert(key, value);
            m_store->setObject(storeKey, dictionary);
        }
    } catch (const std::exception& error) {
        systemLogError(u"Settings=>synchronize"_s, error);
    }
    m_store->synchronize(); // which tells of a failure itself
}

void Settings::encodeWithCoder(QDataStream& coder) const
{
    KeyedEncoder encoder;
    encoder.encodeInt(m_outputType, "outputType");
    encoder.encodeBool(m_isSetCurrentAsDefaultOutputFolderPath,
                       "isSetCurrentAsDefaultOutputFolderPath");
    encoder.encodeBool(m_isOpenFolderAfterConversion, "isOpenFolderAfterConversion");
    encoder.encodeObject(m_outputFolderPath, "outputFolderPath");
    encoder.encodeObject(m_separator, "separator");
    encoder.encodeInt(m_jpegQuality, "jpegQuality");
    encoder.encodeInt(m_tiffCompressionIndex, "tiffCompressionIndex");
    encoder.encodeBool(m_isSplitTIFFIntoSinglePages, "isSplitTIFFIntoSinglePages");
    encoder.encodeBool(m_isClearProcessedFiles, "isClearProcessedFiles");
    encoder.writeTo(coder);
}

bool Settings::initWithCoder(QDataStream& coder)
{
    const std::optional<KeyedDecoder> decoder = KeyedDecoder::readFrom(coder);
    if (!decoder)
        return false;
    setOutputType(decoder->decodeInt("outputType"));
    setIsSetCurrentAsDefaultOutputFolderPath(
        decoder->decodeBool("isSetCurrentAsDefaultOutputFolderPath"));
    setIsOpenFolderAfterConversion(decoder->decodeBool("isOpenFolderAfterConversion"));
    setOutputFolderPath(decoder->decodeObject("outputFolderPath"));
    setSeparator(decoder->decodeObject("separator"));
    setJpegQuality(decoder->decodeInt("jpegQuality"));
    setTiffCompressionIndex(decoder->decodeInt("tiffCompressionIndex"));
    setIsSplitTIFFIntoSinglePages(decoder->decodeBool("isSplitTIFFIntoSinglePages"));
    setIsClearProcessedFiles(decoder->decodeBool("isClearProcessedFiles"));
    return true;
}

} // namespace pagestack
