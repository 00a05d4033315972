#include "engine/image/tiffwriter/LeftOutTags.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/image/metadata/MetadataTags.h"
#include "engine/image/metadata/PageMetadata.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <span>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    // How strips, tiles and codes lie, what is obsolete and says nothing of the image, and the page
    // number. Old-style JPEG has its tables in 512 to 521.
    constexpr std::array<ttag_t, 18> layoutTags {
        TIFFTAG_OSUBFILETYPE,    TIFFTAG_FILLORDER,   TIFFTAG_STRIPOFFSETS,   TIFFTAG_ROWSPERSTRIP,
        TIFFTAG_STRIPBYTECOUNTS, TIFFTAG_FREEOFFSETS, TIFFTAG_FREEBYTECOUNTS, TIFFTAG_GROUP3OPTIONS,
        TIFFTAG_GROUP4OPTIONS,   TIFFTAG_PAGENUMBER,  TIFFTAG_PREDICTOR,      TIFFTAG_TILEWIDTH,
        TIFFTAG_TILELENGTH,      TIFFTAG_TILEOFFSETS, TIFFTAG_TILEBYTECOUNTS, TIFFTAG_JPEGTABLES,
        TIFFTAG_IMAGEDEPTH,      TIFFTAG_TILEDEPTH,
    };
    constexpr unsigned firstOldJpegTag = 512;
    constexpr unsigned lastOldJpegTag = 521;

    // They belong to YCbCr samples, which become RGB.
    constexpr std::array<ttag_t, 3> codedColorTags {
        TIFFTAG_YCBCRCOEFFICIENTS,
        TIFFTAG_YCBCRSUBSAMPLING,
        TIFFTAG_YCBCRPOSITIONING,
    };

    constexpr std::array<ttag_t, 8> interpretationTags {
        TIFFTAG_COLORMAP,   TIFFTAG_EXTRASAMPLES, TIFFTAG_SAMPLEFORMAT, TIFFTAG_INKSET,
        TIFFTAG_WHITEPOINT, TIFFTAG_STONITS,      TIFFTAG_ICCPROFILE,   TIFFTAG_THRESHHOLDING,
    };

    // They tell of sample values and inks that changed pixels do not have.
    constexpr std::array<ttag_t, 9> valueTags {
        TIFFTAG_MINSAMPLEVALUE,    TIFFTAG_MAXSAMPLEVALUE,   TIFFTAG_GRAYRESPONSEUNIT,
        TIFFTAG_GRAYRESPONSECURVE, TIFFTAG_TRANSFERFUNCTION, TIFFTAG_PRIMARYCHROMATICITIES,
        TIFFTAG_DOTRANGE,          TIFFTAG_INKNAMES,         TIFFTAG_HALFTONEHINTS,
    };

    // What formats other than TIFF say in their own way, if at all, or what belongs to samples as
    // they were stored.
    constexpr std::array<ttag_t, 25> imageTags {
        TIFFTAG_SUBFILETYPE,       TIFFTAG_IMAGEWIDTH,     TIFFTAG_IMAGELENGTH,
        TIFFTAG_BITSPERSAMPLE,     TIFFTAG_COMPRESSION,    TIFFTAG_PHOTOMETRIC,
        TIFFTAG_CELLWIDTH,         TIFFTAG_CELLLENGTH,     TIFFTAG_ORIENTATION,
        TIFFTAG_SAMPLESPERPIXEL,   TIFFTAG_MINSAMPLEVALUE, TIFFTAG_MAXSAMPLEVALUE,
        TIFFTAG_XRESOLUTION,       TIFFTAG_YRESOLUTION,    TIFFTAG_PLANARCONFIG,
        TIFFTAG_RESOLUTIONUNIT,    TIFFTAG_HALFTONEHINTS,  TIFFTAG_INKNAMES,
        TIFFTAG_NUMBEROFINKS,      TIFFTAG_DOTRANGE,       TIFFTAG_SMINSAMPLEVALUE,
        TIFFTAG_SMAXSAMPLEVALUE,   TIFFTAG_MATTEING,       TIFFTAG_DATATYPE,
        TIFFTAG_COLORRESPONSEUNIT,
    };

    struct Name
    {
        unsigned tag = 0;
        QLatin1StringView text;
    };
    // TIFF 6.0 and its supplements, Exif 2.3; as far as libtiff has no name for them, or another
    // one.
    constexpr std::array tagNames {
        Name { 330, "SubIFDs"_L1 },
        Name { 700, "XMP"_L1 },
        Name { 33723, "IPTC"_L1 },
        Name { 34665, "ExifIFD"_L1 },
        Name { 34675, "ICCProfile"_L1 },
        Name { 34853, "GPSIFD"_L1 },
        Name { 37724, "ImageSourceData"_L1 },
        Name { 40965, "InteroperabilityIFD"_L1 },
    };

    bool isAmong(std::span<const ttag_t> tags, unsigned tag)
    {
        return std::ranges::find(tags, tag) != tags.end();
    }

    QString nameOf(TIFF* handle, unsigned tag)
    {
        if (const auto name = std::ranges::find(tagNames, tag, &Name::tag); name != tagNames.end())
            return name->text;
        if (const MetadataTag* row = metadataTag(tag))
            return row->name;
        const TIFFField* known = TIFFFindField(handle, tag, TIFF_ANY);
        const auto name = QString::fromLatin1(known != nullptr ? TIFFFieldName(known) : "Tag ");
        return name.startsWith(u"Tag ") ? u"tag %1"_s.arg(tag) : name;
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
        if (isAmong(layoutTags, tag) || (tag >= firstOldJpegTag && tag <= lastOldJpegTag))
            return true;
        if (isAmong(valueTags, tag) && !page.change().isNone())
            return true;
        if (isAmong(codedColorTags, tag))
            return isShown || !written.contains(TIFFTAG_YCBCRSUBSAMPLING);
        return isShown && isAmong(interpretationTags, tag);
    }

} // namespace

QStringList leftOutTags(const TiffPage& page, const std::set<unsigned>& written, bool isShown)
{
    QStringList left;
    for (const TiffTagValue& value : page.directory().values)
        if (!written.contains(value.tag) && !isDispensable(page, value.tag, written, isShown))
            left.append(nameOf(page.load(), value.tag));
    return left;
}

QStringList leftOutTags(const TiffPage& page, const PageMetadata* held)
{
    if (page.treatment().stripsMetadata)
        return {};
    QStringList left;
    for (const TiffTagValue& value : page.directory().values) {
        const bool isHeld = held != nullptr && held->heldTags.contains(value.tag);
        const bool isToTell = value.tag == TIFFTAG_PAGENUMBER
            || (!isAmong(imageTags, value.tag) && !isDispensable(page, value.tag, {}, true));
        if (!isHeld && isToTell)
            left.append(nameOf(page.load(), value.tag));
    }
    return held != nullptr ? left + held->leftOut : left;
}

QString leftOutText(const QStringList& names, qsizetype mostNames, QStringView fate)
{
    const QString list = QStringList(names.mid(0, mostNames)).join(u", "_s);
    return u"%1 %2 %3: %4%5"_s.arg(names.size())
        .arg(names.size() == 1 ? u"tag"_s : u"tags"_s, fate, list,
             names.size() > mostNames ? u", ..."_s : QString());
}

} // namespace pagestack
