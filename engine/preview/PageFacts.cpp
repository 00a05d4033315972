#include "engine/preview/PageFacts.h"

#include "engine/image/decode/ColorTransform.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/metadata/MetadataReader.h"
#include "engine/image/metadata/MetadataTags.h"
#include "engine/image/pixels/UprightRows.h"

#include <tiffio.h>

#include <algorithm>
#include <array>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr qsizetype longestText = 400;

    struct Name
    {
        int value = 0;
        QLatin1StringView name;
    };

    constexpr std::array compressions {
        Name { COMPRESSION_CCITTRLE, "CCITT RLE"_L1 },
        Name { COMPRESSION_CCITTFAX3, "CCITT G3"_L1 },
        Name { COMPRESSION_CCITTFAX4, "CCITT G4"_L1 },
        Name { COMPRESSION_LZW, "LZW"_L1 },
        Name { COMPRESSION_OJPEG, "JPEG, old style"_L1 },
        Name { COMPRESSION_JPEG, "JPEG"_L1 },
        Name { COMPRESSION_ADOBE_DEFLATE, "Deflate"_L1 },
        Name { COMPRESSION_CCITTRLEW, "CCITT RLE"_L1 },
        Name { COMPRESSION_PACKBITS, "PackBits"_L1 },
        Name { COMPRESSION_THUNDERSCAN, "ThunderScan"_L1 },
        Name { COMPRESSION_PIXARLOG, "PixarLog"_L1 },
        Name { COMPRESSION_DEFLATE, "Deflate"_L1 },
        Name { COMPRESSION_JBIG, "JBIG"_L1 },
        Name { COMPRESSION_SGILOG, "SGI Log"_L1 },
        Name { COMPRESSION_SGILOG24, "SGI Log 24"_L1 },
        Name { COMPRESSION_LERC, "LERC"_L1 },
        Name { COMPRESSION_LZMA, "LZMA"_L1 },
        Name { COMPRESSION_ZSTD, "ZSTD"_L1 },
        Name { COMPRESSION_WEBP, "WebP"_L1 },
    };

    constexpr std::array colorModels {
        Name { PHOTOMETRIC_MINISWHITE, "gray, 0 is white"_L1 },
        Name { PHOTOMETRIC_MINISBLACK, "gray"_L1 },
        Name { PHOTOMETRIC_RGB, "RGB"_L1 },
        Name { PHOTOMETRIC_PALETTE, "palette"_L1 },
        Name { PHOTOMETRIC_MASK, "mask"_L1 },
        Name { PHOTOMETRIC_SEPARATED, "CMYK"_L1 },
        Name { PHOTOMETRIC_YCBCR, "YCbCr"_L1 },
        Name { PHOTOMETRIC_CIELAB, "L*a*b*"_L1 },
        Name { PHOTOMETRIC_ICCLAB, "L*a*b*, ICC"_L1 },
        Name { PHOTOMETRIC_LOGL, "LogL"_L1 },
        Name { PHOTOMETRIC_LOGLUV, "LogLuv"_L1 },
    };

    template <typename Names>
    QString nameIn(const Names& names, int value)
    {
        const auto found = std::ranges::find(names, value, &Name::value);
        return found == names.end() ? QString::number(value) : QString(found->name);
    }

    QString colorOf(const TiffPageTags& tags)
    {
        const bool isBilevel = tags.isOneBitDeep() && tags.photometric <= PHOTOMETRIC_MINISBLACK;
        return isBilevel ? u"black and white"_s : nameIn(colorModels, tags.photometric);
    }

    QString textOf(const QByteArray& bytes)
    {
        // What a damaged file says may have no end mark.
        const qsizetype end = bytes.indexOf('\0');
        const QByteArray text = end < 0 ? bytes : bytes.left(end);
        const QString shown = QString::fromUtf8(text).simplified();
        return shown.size() <= longestText ? shown : shown.left(longestText) + u'\u2026';
    }

    void addMetadata(const TiffPage& page, PageFacts& facts)
    {
        const PageMetadata metadata
            = readMetadata(page.document(), page.directory(), MetadataUse::Shown);
        for (const MetadataEntry& entry : metadata.tags) {
            const MetadataTag* const known = metadataTag(entry.tag);
            const QString name = known == nullptr ? QString::number(entry.tag) : known->name;
            if (entry.type == TIFF_ASCII)
                facts.texts.append({ name, textOf(entry.bytes) });
            else
                facts.others.append(name);
        }
        const std::pair<QLatin1StringView, bool> blocks[]
            = { { "Exif"_L1, !metadata.exif.empty() },
                { "GPS"_L1, !metadata.gps.empty() },
                { "XMP"_L1, !metadata.xmp.isEmpty() },
                { "IPTC"_L1, !metadata.iptc.isEmpty() } };
        for (const auto& [name, isThere] : blocks)
            if (isThere)
                facts.others.append(name);
    }

} // namespace

PageExtent extentOf(const QString& path)
{
    const TiffPage page(std::make_shared<TiffReader>(std::make_shared<const OpenTiffFile>(path)),
                        0);
    const PageProperties upright = uprightProperties(page.properties());
    return { QSize(upright.widthPx, upright.heightPx), upright.resolution };
}

PageFacts factsOf(const std::shared_ptr<const OpenTiffFile>& file, int index)
{
    const TiffPage page(std::make_shared<TiffReader>(file), index);
    const TiffPageTags& tags = page.tags();
    const PageProperties upright = uprightProperties(page.properties());
    PageFacts facts;
    facts.pages = file->pageCount();
    facts.chainFault = file->chainFault();
    facts.sizePx = QSize(upright.widthPx, upright.heightPx);
    facts.resolution = upright.resolution;
    facts.bitsPerSample = tags.bitsPerSample;
    facts.samplesPerPixel = tags.samplesPerPixel;
    if (tags.compression != COMPRESSION_NONE)
        facts.compression = nameIn(compressions, tags.compression);
    facts.color = colorOf(tags);
    facts.profile = tags.iccProfile.isEmpty() ? QString() : profileName(tags.iccProfile);
    if (!tags.iccProfile.isEmpty() && facts.profile.isEmpty())
        facts.profile = u"ICC"_s;
    addMetadata(page, facts);
    return facts;
}

} // namespace pagestack
