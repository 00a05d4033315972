#pragma once

#include <QString>

namespace pagestack {

/// A tag of a page's directory that says something of the page.
struct MetadataTag
{
    unsigned tag = 0;
    QLatin1StringView name;
    bool isForExif = false; ///< stands in the first directory of Exif data as well
    bool isForTiff = false; ///< is put into TIFF files as it is; libtiff copies the others
    bool isOfSamples = false; ///< belongs to samples that are kept as they are
};

/// The row of the tag; null when it is none of these.
const MetadataTag* metadataTag(unsigned tag);

} // namespace pagestack
