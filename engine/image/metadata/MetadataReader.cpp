#include "engine/image/metadata/MetadataReader.h"

#include "engine/image/metadata/MetadataTags.h"
#include "engine/image/pixels/ByteOrder.h"
#include "engine/image/tiff/OpenTiffFile.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <optional>
#include <stdexcept>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr std::uint64_t mostTagBytes = std::uint64_t { 16 } * 1024 * 1024;
    constexpr std::uint64_t mostMetadataBytes = std::uint64_t { 64 } * 1024 * 1024;
    constexpr std::size_t mostDirectoryEntries = 1000;

    /// Of a number of a value; a fraction is two numbers. 0: a type that is not taken along.
    std::size_t numberBytes(unsigned type)
    {
        constexpr std::array<std::size_t, 13> sizes { 0, 1, 1, 2, 4, 4, 1, 1, 2, 4, 4, 4, 8 };
        return type < sizes.size() ? sizes.at(type) : 0;
    }

    void reverseNumbers(QByteArray& bytes, std::size_t numberSize)
    {
        const auto step = static_cast<qsizetype>(numberSize);
        for (qsizetype at = 0; at + step <= bytes.size(); at += step)
            std::reverse(bytes.begin() + at, bytes.begin() + at + step);
    }

    /// Notes of cameras whose offsets, if they have any, count from their own beginning, as those
    /// who document them found. Others count from that of the file, which moves.
    bool isMovableNote(const QByteArray& note)
    {
        static const std::array starts {
            "Nikon\0\2"_ba, "OLYMPUS\0"_ba,   "OM SYSTEM\0"_ba,
            "FUJIFILM"_ba,  "Apple iOS\0"_ba, "PENTAX \0"_ba,
        };
        return std::ranges::any_of(starts,
                                   [&](const QByteArray& start) { return note.startsWith(start); });
    }

    class PageMetadataReader
    {
    public:
        PageMetadataReader(const OpenTiffFile& file, const TiffDirectory& directory)
            : m_file(file)
            , m_directory(directory)
            , m_ranges { { 0, file.chain().format.headerBytes() }, directory.range }
        {
        }

        PageMetadata read(MetadataUse use)
        {
            for (const TiffTagValue& value : m_directory.values)
                take(value, use);
            for (auto* entries : { &m_found.tags, &m_found.tiffTags })
                sort(*entries);
            return std::move(m_found);
        }

    private:
        using Entries = std::vector<MetadataEntry>;

        void take(const TiffTagValue& value, MetadataUse use)
        {
            const bool isShown = use == MetadataUse::Shown;
            switch (value.tag) {
            case TIFFTAG_EXIFIFD:
                return note(value, takeDirectory(value, "Exif"_L1, m_found.exif));
            case TIFFTAG_GPSIFD:
                return note(value, takeDirectory(value, "GPS"_L1, m_found.gps));
            case TIFFTAG_XMLPACKET:
                return note(value, isShown && takeBlock(value, m_found.xmp));
            case TIFFTAG_RICHTIFFIPTC:
                return note(value, isShown && takeBlock(value, m_found.iptc));
            case TIFFTAG_PHOTOSHOP:
                return note(value, isShown && takeBlock(value, m_found.imageResources));
            default:
                break;
            }
            const MetadataTag* tag = metadataTag(value.tag);
            if (tag == nullptr || !(isShown ? tag->isForExif : tag->isForTiff))
                return;
            if (std::optional<MetadataEntry> held = entry(value)) {
                (isShown ? m_found.tags : m_found.tiffTags).push_back(*std::move(held));
                note(value, true);
            }
        }

        void note(const TiffTagValue& value, bool isHeld)
        {
            if (isHeld)
                m_found.heldTags.insert(value.tag);
        }

        /// None where the file does not have it, or has more than should be held.
        std::optional<QByteArray> bytesOf(const TiffTagValue& value)
        {
            const std::uint64_t size = m_file.sizeBytes();
            if (value.bytes == 0 || value.bytes > mostTagBytes
                || value.bytes > mostMetadataBytes - m_bytes || value.offset > size
                || value.bytes > size - value.offset)
                return std::nullopt;
            QByteArray bytes(static_cast<qsizetype>(value.bytes), Qt::Uninitialized);
            try {
                m_file.readAt(value.offset,
                              { reinterpret_cast<std::uint8_t*>(bytes.data()), value.bytes });
            } catch (const std::runtime_error&) {
                return std::nullopt; // the name of the tag says so
            }
            m_bytes += value.bytes;
            return bytes;
        }

        std::optional<MetadataEntry> entry(const TiffTagValue& value)
        {
            const std::size_t numberSize = numberBytes(value.type);
            std::optional<QByteArray> bytes = numberSize == 0 ? std::nullopt : bytesOf(value);
            if (!bytes)
                return std::nullopt;
            if (m_file.isBigEndian())
                reverseNumbers(*bytes, numberSize);
            return MetadataEntry { value.tag, value.type, value.count, *std::move(bytes) };
        }

        bool takeBlock(const TiffTagValue& value, QByteArray& block)
        {
            std::optional<QByteArray> bytes = bytesOf(value);
            if (!bytes)
                return false;
            // Records begin with this mark; some programs turned them round as numbers of 4 bytes.
            // IIM, section 1.6.
            constexpr char mark = 0x1C;
            if (value.tag == TIFFTAG_RICHTIFFIPTC && bytes->size() > 3 && bytes->at(0) != mark
                && bytes->at(3) == mark)
                reverseNumbers(*bytes, 4);
            while (value.tag == TIFFTAG_XMLPACKET && bytes->endsWith('\0'))
                bytes->chop(1);
            if (bytes->isEmpty() || (value.tag == TIFFTAG_XMLPACKET && bytes->contains('\0')))
                return false; // no UTF-8
            block = *std::move(bytes);
            return true;
        }

        bool takeDirectory(const TiffTagValue& pointer, QLatin1StringView name, Entries& entries)
        {
            const std::optional<TiffDirectory> directory = subDirectory(pointer);
            if (!directory)
                return false;
            for (const TiffTagValue& value : directory->values)
                takeEntry(value, name, entries);
            sort(entries);
            return !entries.empty();
        }

        void takeEntry(const TiffTagValue& value, QLatin1StringView name, Entries& entries)
        {
            if (&entries == &m_found.exif && value.tag == TIFFTAG_INTEROPERABILITYIFD) {
                if (!takeDirectory(value, "Interoperability"_L1, m_found.interoperability))
                    m_found.leftOut.append(u"InteroperabilityIFD"_s);
                return;
            }
            const bool isNote = &entries == &m_found.exif && value.tag == EXIFTAG_MAKERNOTE;
            std::optional<MetadataEntry> held = entry(value);
            if (held && (!isNote || isMovableNote(held->bytes)))
                entries.push_back(*std::move(held));
            else
                m_found.leftOut.append(isNote ? u"MakerNote"_s
                                              : u"%1 tag %2"_s.arg(name).arg(value.tag));
        }

        /// None where the file has no directory, or one that overlaps another one of the page: it
        /// could lead back.
        std::optional<TiffDirectory> subDirectory(const TiffTagValue& pointer)
        {
            const std::optional<QByteArray> bytes
                = pointer.count == 1 ? bytesOf(pointer) : QByteArray();
            if (!bytes || (bytes->size() != 4 && bytes->size() != 8))
                return std::nullopt;
            const std::uint64_t offset
                = numberIn({ reinterpret_cast<const std::uint8_t*>(bytes->constData()),
                             static_cast<std::size_t>(bytes->size()) },
                           m_file.isBigEndian());
            try {
                TiffDirectory directory = m_file.subDirectory(offset);
                const FileRange& range = directory.range;
                if (directory.values.size() > mostDirectoryEntries
                    || std::ranges::any_of(m_ranges, [&](const FileRange& other) {
                           return range.begin < other.end && other.begin < range.end;
                       }))
                    return std::nullopt;
                m_ranges.push_back(range);
                return directory;
            } catch (const std::runtime_error&) {
                return std::nullopt; // the name of the tag says so
            }
        }

        /// The first of several entries of one tag counts, as everywhere.
        static void sort(Entries& entries)
        {
            std::ranges::stable_sort(entries, {}, &MetadataEntry::tag);
            const auto isSame = [](const MetadataEntry& one, const MetadataEntry& other) {
                return one.tag == other.tag;
            };
            entries.erase(std::unique(entries.begin(), entries.end(), isSame), entries.end());
        }

        const OpenTiffFile& m_file;
        const TiffDirectory& m_directory;
        PageMetadata m_found;
        std::vector<FileRange> m_ranges; ///< of directories
        std::uint64_t m_bytes = 0; ///< held so far
    };

} // namespace

PageMetadata readMetadata(const OpenTiffFile& file, const TiffDirectory& directory, MetadataUse use)
{
    return PageMetadataReader(file, directory).read(use);
}

} // namespace pagestack
