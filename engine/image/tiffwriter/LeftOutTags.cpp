#include "engine/image/tiffwriter/LeftOutTags.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/image/tiffwriter/TiffTagCopy.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    // How strips, tiles and codes lie, what is obsolete and says nothing of the image, and the page
    // number. Old-style JPEG has its tables in 512 to 521.
    constexpr std::array<unsigned, 18> layoutTags {
        TIFFTAG_OSUBFILETYPE,    TIFFTAG_FILLORDER,   TIFFTAG_STRIPOFFSETS,   TIFFTAG_ROWSPERSTRIP,
        TIFFTAG_STRIPBYTECOUNTS, TIFFTAG_FREEOFFSETS, TIFFTAG_FREEBYTECOUNTS, TIFFTAG_GROUP3OPTIONS,
        TIFFTAG_GROUP4OPTIONS,   TIFFTAG_PAGENUMBER,  TIFFTAG_PREDICTOR,      TIFFTAG_TILEWIDTH,
        TIFFTAG_TILELENGTH,      TIFFTAG_TILEOFFSETS, TIFFTAG_TILEBYTECOUNTS, TIFFTAG_JPEGTABLES,
        TIFFTAG_IMAGEDEPTH,      TIFFTAG_TILEDEPTH,
    };
    constexpr unsigned firstOldJpegTag = 512;
    constexpr unsigned lastOldJpegTag = 521;

    // They belong to YCbCr samples, which become RGB.
    constexpr std::array<unsigned, 3> codedColorTags {
        TIFFTAG_YCBCRCOEFFICIENTS,
        TIFFTAG_YCBCRSUBSAMPLING,
        TIFFTAG_YCBCRPOSITIONING,
    };

    constexpr std::array<unsigned, 8> interpretationTags {
        TIFFTAG_COLORMAP,   TIFFTAG_EXTRASAMPLES, TIFFTAG_SAMPLEFORMAT, TIFFTAG_INKSET,
        TIFFTAG_WHITEPOINT, TIFFTAG_STONITS,      TIFFTAG_ICCPROFILE,   TIFFTAG_THRESHHOLDING,
    };

    struct Name
    {
        unsigned tag = 0;
        QLatin1StringView text;
    };
    // TIFF 6.0 and its supplements, Exif 2.3, GeoTIFF 1.1, GDAL.
    constexpr std::array names {
        Name { 264, "CellWidth"_L1 },
        Name { 265, "CellLength"_L1 },
        Name { 269, "DocumentName"_L1 },
        Name { 270, "ImageDescription"_L1 },
        Name { 271, "Make"_L1 },
        Name { 272, "Model"_L1 },
        Name { 280, "MinSampleValue"_L1 },
        Name { 281, "MaxSampleValue"_L1 },
        Name { 282, "XResolution"_L1 },
        Name { 283, "YResolution"_L1 },
        Name { 285, "PageName"_L1 },
        Name { 286, "XPosition"_L1 },
        Name { 287, "YPosition"_L1 },
        Name { 290, "GrayResponseUnit"_L1 },
        Name { 291, "GrayResponseCurve"_L1 },
        Name { 301, "TransferFunction"_L1 },
        Name { 305, "Software"_L1 },
        Name { 306, "DateTime"_L1 },
        Name { 315, "Artist"_L1 },
        Name { 316, "HostComputer"_L1 },
        Name { 326, "BadFaxLines"_L1 },
        Name { 327, "CleanFaxData"_L1 },
        Name { 328, "ConsecutiveBadFaxLines"_L1 },
        Name { 330, "SubIFDs"_L1 },
        Name { 333, "InkNames"_L1 },
        Name { 334, "NumberOfInks"_L1 },
        Name { 340, "SMinSampleValue"_L1 },
        Name { 341, "SMaxSampleValue"_L1 },
        Name { 342, "TransferRange"_L1 },
        Name { 346, "Indexed"_L1 },
        Name { 532, "ReferenceBlackWhite"_L1 },
        Name { 700, "XMP"_L1 },
        Name { 33432, "Copyright"_L1 },
        Name { 33550, "ModelPixelScale"_L1 },
        Name { 33723, "IPTC"_L1 },
        Name { 33922, "ModelTiepoint"_L1 },
        Name { 34264, "ModelTransformation"_L1 },
        Name { 34377, "Photoshop"_L1 },
        Name { 34665, "ExifIFD"_L1 },
        Name { 34675, "ICCProfile"_L1 },
        Name { 34735, "GeoKeyDirectory"_L1 },
        Name { 34736, "GeoDoubleParams"_L1 },
        Name { 34737, "GeoAsciiParams"_L1 },
        Name { 34853, "GPSIFD"_L1 },
        Name { 37724, "ImageSourceData"_L1 },
        Name { 40965, "InteroperabilityIFD"_L1 },
        Name { 42112, "GDAL_METADATA"_L1 },
        Name { 42113, "GDAL_NODATA"_L1 },
    };

    template <std::size_t count>
    bool has(const std::array<unsigned, count>& tags, unsigned tag)
    {
        return std::find(tags.begin(), tags.end(), tag) != tags.end();
    }

    QString nameOf(unsigned tag)
    {
        const auto* const name = std::find_if(names.begin(), names.end(),
                                              [=](const Name& entry) { return entry.tag == tag; });
        return name == names.end() ? u"tag %1"_s.arg(tag) : QString(name->text);
    }

    /// Whether ReferenceBlackWhite says what holds for JPEG data without it.
    bool isPlainReference(const TiffPage& page)
    {
        constexpr std::array<float, 6> plain { 0, 255, 128, 255, 128, 255 };
        float* values = nullptr;
        return TIFFGetField(page.load(), TIFFTAG_REFERENCEBLACKWHITE, &values) == 1
            && values != nullptr && std::equal(plain.begin(), plain.end(), values);
    }

    bool isDispensable(const TiffPage& page, unsigned tag, const std::set<unsigned>& written,
                       bool isShown)
    {
        if (tag == TIFFTAG_REFERENCEBLACKWHITE)
            return isShown || isPlainReference(page);
        if (has(layoutTags, tag) || (tag >= firstOldJpegTag && tag <= lastOldJpegTag))
            return true;
        if (has(codedColorTags, tag))
            return isShown || !written.contains(TIFFTAG_YCBCRSUBSAMPLING);
        return isShown && has(interpretationTags, tag);
    }

} // namespace

QStringList leftOutTags(const TiffPage& page, const std::set<unsigned>& written, bool isShown)
{
    QStringList left;
    for (const TiffTagValue& value : page.directory().values)
        if (!written.contains(value.tag) && !isDispensable(page, value.tag, written, isShown))
            left.append(nameOf(value.tag));
    return left;
}

QString leftOutText(const QStringList& names, qsizetype mostNames, QStringView fate)
{
    const QString list = QStringList(names.mid(0, mostNames)).join(u", "_s);
    return u"%1 %2 %3: %4%5"_s.arg(names.size())
        .arg(names.size() == 1 ? u"tag"_s : u"tags"_s, fate, list,
             names.size() > mostNames ? u", ..."_s : QString());
}

std::vector<TextList> textLists(const TiffPage& page)
{
    std::vector<TextList> lists;
    for (const TiffTagValue& value : page.directory().values) {
        if (!isCopiedText(value.tag) || value.bytes != value.count)
            continue;
        const char* first = nullptr;
        if (TIFFGetField(page.load(), value.tag, &first) != 1 || first == nullptr
            || value.bytes <= std::strlen(first) + 1)
            continue;
        QByteArray bytes(static_cast<qsizetype>(value.bytes), '\0');
        page.document().readAt(value.offset,
                               { reinterpret_cast<std::uint8_t*>(bytes.data()), value.bytes });
        while (bytes.endsWith('\0'))
            bytes.chop(1);
        if (bytes.contains('\0'))
            lists.push_back({ value.tag, bytes.append('\0') });
    }
    return lists;
}

} // namespace pagestack
