#pragma once

#include <QByteArray>
#include <QStringList>

#include <cstdint>
#include <set>
#include <vector>

namespace pagestack {

/// A value as directories of TIFF files and Exif data hold it, its numbers little-endian.
struct MetadataEntry
{
    unsigned tag = 0;
    unsigned type = 0; ///< TIFF 6.0, section 2: 1..12
    std::uint64_t count = 0; ///< of values of the type
    QByteArray bytes {};
};

/// What a page says of itself apart from its pixels, their colour profile and density. Entries are
/// in the order of their tags, each tag once.
struct PageMetadata
{
    std::vector<MetadataEntry> tags {}; ///< of the page's directory, for that of Exif data
    std::vector<MetadataEntry> tiffTags {}; ///< those that libtiff does not bring to a TIFF file
    std::vector<MetadataEntry> exif {}; ///< of the page's Exif directory
    std::vector<MetadataEntry> interoperability {}; ///< of the one in that
    std::vector<MetadataEntry> gps {};
    QByteArray xmp {}; ///< UTF-8
    QByteArray iptc {}; ///< records of IIM
    QByteArray imageResources {}; ///< blocks of Photoshop's own

    std::set<unsigned> heldTags {}; ///< tags of the page's directory that are in here
    QStringList leftOut {}; ///< names of what could not be taken of the Exif and GPS directories

    /// The pixels are in sRGB now: Exif data that tell of a space, the interoperability rules too,
    /// by which readers take some for another one, say so.
    void describeSrgb();

    bool isEmpty() const
    {
        return tags.empty() && tiffTags.empty() && exif.empty() && gps.empty() && xmp.isEmpty()
            && iptc.isEmpty() && imageResources.isEmpty();
    }
};

} // namespace pagestack
