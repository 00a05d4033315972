#pragma once

#include "engine/image/metadata/PageMetadata.h"
#include "engine/image/tiff/TiffDirectory.h"

#include <QByteArray>

#include <vector>

namespace pagestack {

/// A directory to be laid out.
struct MetadataDirectory
{
    unsigned tag = 0; ///< of the entry that points to it; 0 for the first one
    /// Entries as they stand in a file, with their values in place already.
    std::vector<QByteArray> placed;
    std::vector<MetadataEntry> entries;
    std::vector<MetadataDirectory> below; ///< those without entries are left out
};

/// The directories of the page's Exif and GPS data.
std::vector<MetadataDirectory> directoriesBelow(const PageMetadata& page);

/// Little-endian directories with their values, for a stretch of a file from `begin` on, an even
/// offset.
class DirectoryLayout
{
public:
    DirectoryLayout(const TiffFormat& format, std::uint64_t begin)
        : m_format(format)
        , m_begin(begin)
    {
    }

    /// Adds the directory, then its values, then those below; returns its offset. Whether offsets
    /// of the format reach so far is for who writes it to see.
    std::uint64_t add(const MetadataDirectory& directory);

    const QByteArray& bytes() const { return m_bytes; }

private:
    QByteArray record(const MetadataEntry& entry);
    std::uint64_t reserve(std::uint64_t size);

    TiffFormat m_format;
    std::uint64_t m_begin;
    QByteArray m_bytes;
};

} // namespace pagestack
