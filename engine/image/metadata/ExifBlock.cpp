#include "engine/image/metadata/ExifBlock.h"

#include "engine/image/metadata/DirectoryLayout.h"
#include "engine/image/metadata/MetadataTags.h"
#include "engine/image/pixels/PageSource.h"

#include <QtEndian>

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    template <typename Number>
    MetadataEntry numberEntry(unsigned tag, unsigned type, Number number)
    {
        std::array<char, sizeof(Number)> bytes = {};
        qToLittleEndian(number, bytes.data());
        return { tag, type, 1, { bytes.data(), bytes.size() } };
    }

    void setSize(std::vector<MetadataEntry>& exif, unsigned tag, int sizePx)
    {
        const auto entry = std::ranges::find(exif, tag, &MetadataEntry::tag);
        if (entry != exif.end())
            *entry = numberEntry(tag, TIFF_LONG, static_cast<std::uint32_t>(sizePx));
    }

    MetadataEntry fractionEntry(unsigned tag, double value)
    {
        constexpr std::uint32_t unit = 10000;
        const bool isWhole = value == std::floor(value) || value > 400'000;
        const std::uint32_t bottom = isWhole ? 1 : unit;
        MetadataEntry entry
            = numberEntry(tag, TIFF_RATIONAL,
                          static_cast<std::uint32_t>(std::round(std::min(value, 4e9) * bottom)));
        std::array<char, 4> bytes = {};
        qToLittleEndian(bottom, bytes.data());
        entry.bytes.append(bytes.data(), bytes.size());
        return entry;
    }

    /// Those without which Exif data are not complete.
    void addImageTags(std::vector<MetadataEntry>& tags, const Resolution& resolution)
    {
        tags.push_back(
            numberEntry<std::uint16_t>(TIFFTAG_ORIENTATION, TIFF_SHORT, ORIENTATION_TOPLEFT));
        if (resolution.unit == ResolutionUnit::None || resolution.x == 0)
            return;
        tags.push_back(fractionEntry(TIFFTAG_XRESOLUTION, resolution.x));
        tags.push_back(fractionEntry(TIFFTAG_YRESOLUTION, resolution.y));
        tags.push_back(numberEntry<std::uint16_t>(
            TIFFTAG_RESOLUTIONUNIT, TIFF_SHORT,
            resolution.unit == ResolutionUnit::Inch ? RESUNIT_INCH : RESUNIT_CENTIMETER));
    }

    /// No less than `laidOut` makes of it.
    qsizetype mostExifBytesOf(const PageMetadata& page)
    {
        // Of the file, four directories, three pointers and the tags of the image.
        constexpr qsizetype headers = 8 + 4 * 6 + 3 * 12 + 4 * 12 + 2 * 8;
        qsizetype bytes = headers;
        for (const auto* entries : { &page.tags, &page.exif, &page.interoperability, &page.gps })
            for (const MetadataEntry& entry : *entries)
                bytes += 12 + (entry.bytes.size() + 1) / 2 * 2;
        return bytes;
    }

    QByteArray laidOut(const PageMetadata& page)
    {
        const TiffFormat format;
        DirectoryLayout layout(format, format.headerBytes());
        MetadataDirectory directory;
        directory.entries = page.tags;
        directory.below = directoriesBelow(page);
        layout.add(directory);
        return QByteArray("II*\0\x08\0\0\0", 8) + layout.bytes();
    }

    /// Removes the largest value; its name, empty where there is none.
    QString removeLargest(PageMetadata& page)
    {
        std::vector<MetadataEntry>* in = nullptr;
        std::size_t largest = 0;
        for (auto* entries : { &page.tags, &page.exif, &page.interoperability, &page.gps })
            for (std::size_t i = 0; i < entries->size(); ++i)
                if (in == nullptr || entries->at(i).bytes.size() > in->at(largest).bytes.size()) {
                    in = entries;
                    largest = i;
                }
        if (in == nullptr)
            return {};
        const unsigned tag = in->at(largest).tag;
        in->erase(in->begin() + static_cast<std::ptrdiff_t>(largest));
        if (in == &page.tags)
            return metadataTag(tag) != nullptr ? metadataTag(tag)->name : u"tag %1"_s.arg(tag);
        if (in == &page.exif && tag == EXIFTAG_MAKERNOTE)
            return u"MakerNote"_s;
        return (in == &page.gps ? u"GPS tag %1"_s : u"Exif tag %1"_s).arg(tag);
    }

} // namespace

QByteArray exifBlock(const PageMetadata& page, const PageProperties& upright, qsizetype mostBytes,
                     QStringList& leftOut, bool needsDensity)
{
    const bool hasDensity = needsDensity && upright.resolution.x > 0;
    if (page.tags.empty() && page.exif.empty() && page.gps.empty() && !hasDensity)
        return {};
    PageMetadata kept = page;
    setSize(kept.exif, EXIFTAG_PIXELXDIMENSION, upright.widthPx);
    setSize(kept.exif, EXIFTAG_PIXELYDIMENSION, upright.heightPx);
    while (mostExifBytesOf(kept) > mostBytes) {
        const QString removed = removeLargest(kept);
        if (removed.isEmpty())
            break;
        leftOut.append(removed);
    }
    addImageTags(kept.tags, upright.resolution);
    return laidOut(kept);
}

} // namespace pagestack
