#include "engine/image/tiffwriter/TiffTagCopy.h"

#include "engine/image/decode/TiffPage.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <span>
#include <tuple>
#include <type_traits>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr std::array<ttag_t, 11> textTags {
        TIFFTAG_DOCUMENTNAME, TIFFTAG_IMAGEDESCRIPTION, TIFFTAG_MAKE,          TIFFTAG_MODEL,
        TIFFTAG_PAGENAME,     TIFFTAG_SOFTWARE,         TIFFTAG_DATETIME,      TIFFTAG_ARTIST,
        TIFFTAG_HOSTCOMPUTER, TIFFTAG_COPYRIGHT,        TIFFTAG_TARGETPRINTER,
    };

    constexpr std::array<ttag_t, 3> blockTags {
        TIFFTAG_ICCPROFILE,
        TIFFTAG_XMLPACKET,
        TIFFTAG_PHOTOSHOP,
    };

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

    struct Name
    {
        unsigned tag = 0;
        QLatin1StringView text;
    };
    // TIFF 6.0 and its supplements, Exif 2.3, GeoTIFF 1.1, GDAL; as far as libtiff has no name for
    // them, or another one.
    constexpr std::array tagNames {
        Name { 326, "BadFaxLines"_L1 },
        Name { 327, "CleanFaxData"_L1 },
        Name { 328, "ConsecutiveBadFaxLines"_L1 },
        Name { 330, "SubIFDs"_L1 },
        Name { 342, "TransferRange"_L1 },
        Name { 700, "XMP"_L1 },
        Name { 33550, "ModelPixelScale"_L1 },
        Name { 33723, "IPTC"_L1 },
        Name { 33922, "ModelTiepoint"_L1 },
        Name { 34264, "ModelTransformation"_L1 },
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

    bool has(std::span<const ttag_t> tags, unsigned tag)
    {
        return std::ranges::find(tags, tag) != tags.end();
    }

    /// A tag whose value libtiff hands out, and takes, as these; lengths of arrays it knows from
    /// the tag or has before them.
    template <typename... Values>
    void copyTag(TIFF* from, TIFF* to, ttag_t tag)
    {
        std::tuple<Values...> held;
        std::apply(
            [=](Values&... values) {
                if (TIFFGetField(from, tag, &values...) == 1
                    && ((!std::is_pointer_v<Values> || values != Values {}) && ...))
                    TIFFSetField(to, tag, values...);
            },
            held);
    }

    /// Whether a tag of unsigned fractions can hold it: what cannot would make the page fail.
    bool isFraction(float value) { return std::isfinite(value) && value >= 0; }

    /// libtiff keeps one note that there are values for both directions: one that is missing reads
    /// as 0.
    void copyFractions(TIFF* from, TIFF* to, ttag_t across, ttag_t down, bool isSquare)
    {
        float x = 0;
        float y = 0;
        if (TIFFGetField(from, across, &x) != 1 || TIFFGetField(from, down, &y) != 1
            || !isFraction(x) || !isFraction(y))
            return;
        TIFFSetField(to, across, static_cast<double>(x));
        TIFFSetField(to, down, static_cast<double>(isSquare && y == 0 ? x : y));
    }

    void copyFractions(TIFF* from, TIFF* to, ttag_t tag, std::ptrdiff_t count)
    {
        float* values = nullptr;
        if (TIFFGetField(from, tag, &values) == 1 && values != nullptr
            && std::all_of(values, values + count, isFraction))
            TIFFSetField(to, tag, values);
    }

    /// Bytes that many files declare as numbers of 4 bytes, whose order libtiff turns round
    /// where the file has the other one. A record of it begins with 0x1C. IIM, section 1.6.
    void copyIptc(TIFF* from, TIFF* to)
    {
        std::uint32_t count = 0;
        void* block = nullptr;
        if (TIFFGetField(from, TIFFTAG_RICHTIFFIPTC, &count, &block) != 1 || block == nullptr)
            return;
        std::vector<std::uint32_t> numbers((count + 3) / 4);
        std::memcpy(numbers.data(), block, count);
        constexpr std::uint8_t mark = 0x1C;
        const auto* bytes = static_cast<const std::uint8_t*>(block);
        if (TIFFIsByteSwapped(from) != 0 && count > 3 && bytes[0] != mark && bytes[3] == mark)
            TIFFSwabArrayOfLong(numbers.data(), count / 4);
        TIFFSetField(to, TIFFTAG_RICHTIFFIPTC, count, numbers.data());
    }

    QString nameOf(TIFF* handle, unsigned tag)
    {
        if (const auto name = std::ranges::find(tagNames, tag, &Name::tag); name != tagNames.end())
            return name->text;
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
        if (has(layoutTags, tag) || (tag >= firstOldJpegTag && tag <= lastOldJpegTag))
            return true;
        if (has(valueTags, tag) && !page.change().isNone())
            return true;
        if (has(codedColorTags, tag))
            return isShown || !written.contains(TIFFTAG_YCBCRSUBSAMPLING);
        return isShown && has(interpretationTags, tag);
    }

} // namespace

void copyDescriptiveTags(tiff* from, tiff* to)
{
    for (const ttag_t tag : textTags)
        copyTag<char*>(from, to, tag);
    for (const ttag_t tag : blockTags)
        copyTag<std::uint32_t, void*>(from, to, tag);
    copyIptc(from, to);
    copyFractions(from, to, TIFFTAG_XRESOLUTION, TIFFTAG_YRESOLUTION, true);
    copyFractions(from, to, TIFFTAG_XPOSITION, TIFFTAG_YPOSITION, false);
    copyTag<std::uint16_t>(from, to, TIFFTAG_RESOLUTIONUNIT);
}

void copyInterpretationTags(tiff* from, tiff* to)
{
    copyTag<std::uint16_t*, std::uint16_t*, std::uint16_t*>(from, to, TIFFTAG_COLORMAP);
    copyTag<std::uint16_t, std::uint16_t*>(from, to, TIFFTAG_EXTRASAMPLES);
    for (const ttag_t tag : { TIFFTAG_SAMPLEFORMAT, TIFFTAG_MINSAMPLEVALUE, TIFFTAG_MAXSAMPLEVALUE,
                              TIFFTAG_INKSET, TIFFTAG_THRESHHOLDING })
        copyTag<std::uint16_t>(from, to, tag);
    copyTag<std::uint16_t, std::uint16_t>(from, to, TIFFTAG_HALFTONEHINTS);
    copyTag<std::uint16_t, std::uint16_t>(from, to, TIFFTAG_DOTRANGE);
    copyFractions(from, to, TIFFTAG_WHITEPOINT, 2);
    copyFractions(from, to, TIFFTAG_PRIMARYCHROMATICITIES, 6);
    copyFractions(from, to, TIFFTAG_REFERENCEBLACKWHITE, 6);
    std::uint16_t photometric = 0;
    if (TIFFGetField(from, TIFFTAG_PHOTOMETRIC, &photometric) != 1
        || photometric != PHOTOMETRIC_YCBCR)
        return;
    copyFractions(from, to, TIFFTAG_YCBCRCOEFFICIENTS, 3);
    copyTag<std::uint16_t, std::uint16_t>(from, to, TIFFTAG_YCBCRSUBSAMPLING);
    copyTag<std::uint16_t>(from, to, TIFFTAG_YCBCRPOSITIONING);
}

QStringList leftOutTags(const TiffPage& page, const std::set<unsigned>& written, bool isShown)
{
    QStringList left;
    for (const TiffTagValue& value : page.directory().values)
        if (!written.contains(value.tag) && !isDispensable(page, value.tag, written, isShown))
            left.append(nameOf(page.load(), value.tag));
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
        if (!has(textTags, value.tag) || value.bytes != value.count)
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
