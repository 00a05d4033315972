#include "engine/image/formats/png/PngMetadata.h"

#include "engine/image/formats/png/PixelStream.h"
#include "engine/image/formats/png/ZlibBlock.h"
#include "engine/image/metadata/ExifBlock.h"
#include "engine/image/metadata/ImageResources.h"
#include "engine/image/metadata/XmpPacket.h"

#include <QDateTime>
#include <QLocale>
#include <QStringDecoder>

#include <tiffio.h>

#include <algorithm>
#include <array>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr qsizetype mostExifBytes = 0x7FFFFFFF;

    struct Keyword
    {
        const char* word;
        unsigned tag;
        unsigned otherTag; ///< where there is none of `tag`
    };
    constexpr std::array keywords {
        Keyword { "Title", TIFFTAG_DOCUMENTNAME, TIFFTAG_PAGENAME },
        Keyword { "Author", TIFFTAG_ARTIST, 0 },
        Keyword { "Description", TIFFTAG_IMAGEDESCRIPTION, 0 },
        Keyword { "Copyright", TIFFTAG_COPYRIGHT, 0 },
        Keyword { "Creation Time", TIFFTAG_DATETIME, 0 },
        Keyword { "Software", TIFFTAG_SOFTWARE, 0 },
    };

    void writeChunk(const char (&type)[5], const QByteArray& bytes, StagedFile& file)
    {
        writePngChunk(file, type,
                      { reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                        static_cast<std::size_t>(bytes.size()) });
    }

    /// The texts of the tag, one a line; empty if it has none.
    QByteArray textOf(const PageMetadata& page, unsigned tag)
    {
        const auto entry = std::ranges::find(page.tags, tag, &MetadataEntry::tag);
        if (entry == page.tags.end()
            || entry->count != static_cast<std::uint64_t>(entry->bytes.size()))
            return {};
        QByteArray text = entry->bytes;
        while (text.endsWith('\0'))
            text.chop(1);
        return text.replace('\0', '\n');
    }

    bool isAscii(const QByteArray& text)
    {
        return std::ranges::none_of(text, [](char sign) { return (sign & 0x80) != 0; });
    }

    bool isUtf8(const QByteArray& text)
    {
        QStringDecoder decoder(QStringDecoder::Utf8, QStringConverter::Flag::Stateless);
        const QString decoded = decoder(text);
        return !decoder.hasError() && !decoded.isNull();
    }

    /// The form that the format recommends, RFC 1123; without a zone, which the tag has not. What
    /// is no date stays as it is.
    QByteArray dateText(const QByteArray& text)
    {
        QDateTime date
            = QDateTime::fromString(QString::fromLatin1(text) + u'Z', u"yyyy:MM:dd HH:mm:sst"_s);
        return date.isValid()
            ? QLocale::c().toString(date, u"ddd, dd MMM yyyy HH:mm:ss"_s).toLatin1()
            : text;
    }

    void writeUtf8(const QByteArray& keyword, const QByteArray& text, StagedFile& file)
    {
        // Not compressed, of no language, without another keyword.
        writeChunk("iTXt", keyword + QByteArray(5, '\0') + text, file);
    }

    /// The bytes of a tag have no declared encoding: UTF-8 where they can be that, else Latin-1,
    /// which is what a tEXt chunk has.
    void writeText(const QByteArray& keyword, const QByteArray& text, StagedFile& file)
    {
        if (isAscii(text) || !isUtf8(text))
            writeChunk("tEXt", keyword + '\0' + text, file);
        else
            writeUtf8(keyword, text, file);
    }

    /// The form that other programs write and read: name, length and hexadecimal digits.
    void writeRawProfile(const QByteArray& name, const QByteArray& bytes, StagedFile& file)
    {
        constexpr qsizetype digitsInLine = 72;
        QByteArray text = '\n' + name + '\n' + QByteArray::number(bytes.size()).rightJustified(8);
        for (qsizetype at = 0; at < bytes.size(); at += digitsInLine / 2)
            text += '\n' + bytes.mid(at, digitsInLine / 2).toHex();
        text += '\n';
        writeChunk("zTXt", "Raw profile type " + name + QByteArray(2, '\0') + zlibBlock(text),
                   file);
    }

} // namespace

void writePngMetadata(const PageMetadata& page, const PageProperties& upright, StagedFile& file,
                      QStringList& leftOut)
{
    const QByteArray exif = exifBlock(page, upright, mostExifBytes, leftOut);
    if (!exif.isEmpty())
        writeChunk("eXIf", exif, file);
    for (const Keyword& keyword : keywords) {
        QByteArray text = textOf(page, keyword.tag);
        if (text.isEmpty())
            text = textOf(page, keyword.otherTag);
        if (keyword.tag == TIFFTAG_DATETIME)
            text = dateText(text);
        if (!text.isEmpty())
            writeText(keyword.word, text, file);
    }
    if (!page.xmp.isEmpty())
        writeUtf8("XML:com.adobe.xmp", uprightXmp(page.xmp), file);
    const QByteArray resources = imageResources(page, leftOut);
    if (!resources.isEmpty())
        writeRawProfile(page.imageResources.isEmpty() ? "iptc" : "8bim", resources, file);
}

} // namespace pagestack
