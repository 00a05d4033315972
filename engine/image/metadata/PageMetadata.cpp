#include "engine/image/metadata/PageMetadata.h"

#include <tiffio.h>

#include <algorithm>

namespace pagestack {

void PageMetadata::describeSrgb()
{
    constexpr unsigned gamma = 42240;
    interoperability.clear();
    std::erase_if(exif, [](const MetadataEntry& entry) { return entry.tag == gamma; });
    const auto space
        = std::ranges::find(exif, unsigned { EXIFTAG_COLORSPACE }, &MetadataEntry::tag);
    if (space != exif.end())
        *space = { EXIFTAG_COLORSPACE, TIFF_SHORT, 1, QByteArray("\x01\x00", 2) };
}

} // namespace pagestack
