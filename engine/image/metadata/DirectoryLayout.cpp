#include "engine/image/metadata/DirectoryLayout.h"

#include "engine/image/pixels/ByteOrder.h"

#include <tiffio.h>

#include <algorithm>
#include <array>

namespace pagestack {

namespace {

    constexpr unsigned typeOfOffset = TIFF_LONG;
    constexpr unsigned typeOfBigOffset = TIFF_LONG8;

    QByteArray littleEndian(std::uint64_t number, std::size_t size)
    {
        std::array<std::uint8_t, 8> bytes = {};
        putNumber(bytes, number, false);
        return { reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(size) };
    }

} // namespace

std::vector<MetadataDirectory> directoriesBelow(const PageMetadata& page)
{
    MetadataDirectory interoperability;
    interoperability.tag = TIFFTAG_INTEROPERABILITYIFD;
    interoperability.entries = page.interoperability;
    MetadataDirectory exif;
    exif.tag = TIFFTAG_EXIFIFD;
    exif.entries = page.exif;
    exif.below = { interoperability };
    MetadataDirectory gps;
    gps.tag = TIFFTAG_GPSIFD;
    gps.entries = page.gps;
    return { exif, gps };
}

/// Room at an even offset.
std::uint64_t DirectoryLayout::reserve(std::uint64_t size)
{
    const qsizetype at = (m_bytes.size() + 1) / 2 * 2;
    m_bytes.resize(at);
    m_bytes.append(static_cast<qsizetype>(size), '\0');
    return m_begin + static_cast<std::uint64_t>(at);
}

QByteArray DirectoryLayout::record(const MetadataEntry& entry)
{
    const std::size_t offsetSize = m_format.offsetBytes();
    QByteArray bytes = littleEndian(entry.tag, 2) + littleEndian(entry.type, 2)
        + littleEndian(entry.count, offsetSize);
    if (entry.bytes.size() > static_cast<qsizetype>(offsetSize)) {
        const std::uint64_t at = reserve(static_cast<std::uint64_t>(entry.bytes.size()));
        std::ranges::copy(entry.bytes, m_bytes.end() - entry.bytes.size());
        return bytes + littleEndian(at, offsetSize);
    }
    bytes += entry.bytes;
    return bytes.leftJustified(static_cast<qsizetype>(m_format.entryBytes()), '\0');
}

std::uint64_t DirectoryLayout::add(const MetadataDirectory& directory)
{
    const auto isThere = [](const MetadataDirectory& below) { return !below.entries.empty(); };
    const std::size_t count = directory.placed.size() + directory.entries.size()
        + static_cast<std::size_t>(std::ranges::count_if(directory.below, isThere));
    const std::uint64_t offset = reserve(m_format.linkAt(0, count) + m_format.offsetBytes());
    std::vector<QByteArray> records = directory.placed;
    for (const MetadataEntry& entry : directory.entries)
        records.push_back(record(entry));
    const unsigned type = m_format.isBigTiff ? typeOfBigOffset : typeOfOffset;
    for (const MetadataDirectory& below : directory.below)
        if (isThere(below))
            records.push_back(
                record({ below.tag, type, 1, littleEndian(add(below), m_format.offsetBytes()) }));
    std::ranges::stable_sort(records, {}, [](const QByteArray& bytes) {
        return static_cast<unsigned char>(bytes.at(0))
            | static_cast<unsigned>(static_cast<unsigned char>(bytes.at(1))) << 8U;
    });
    QByteArray text = littleEndian(count, m_format.countBytes());
    for (const QByteArray& bytes : records)
        text += bytes;
    std::ranges::copy(text, m_bytes.begin() + static_cast<qsizetype>(offset - m_begin));
    return offset;
}

} // namespace pagestack
