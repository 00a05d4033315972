#pragma once

#include "engine/image/metadata/PageMetadata.h"

namespace pagestack {

class OpenTiffFile;
struct TiffDirectory;

enum class MetadataUse {
    Shown, ///< for files of other formats than TIFF
    Tiff, ///< what libtiff does not copy to another TIFF file
};

/// Reads what the page with `directory` says of itself. What the file does not have, or has more of
/// than should be held (16 MiB a value, 64 MiB and 1000 entries a directory), is left out; a
/// directory that overlaps another one of the page as a whole. Throws nothing but std::bad_alloc.
PageMetadata readMetadata(const OpenTiffFile& file, const TiffDirectory& directory,
                          MetadataUse use);

} // namespace pagestack
