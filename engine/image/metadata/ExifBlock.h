#pragma once

#include "engine/image/metadata/PageMetadata.h"

namespace pagestack {

struct PageProperties;

/// Exif data (2.32, section 4.5) for the image of an `upright` page, from its byte order on; empty
/// if the page says nothing that belongs there, but for its resolution where that `needsDensity`,
/// for which there is no other place then. The names of values that are left out since there
/// would be more than `mostBytes`, the largest first, are added to `leftOut`.
QByteArray exifBlock(const PageMetadata& page, const PageProperties& upright, qsizetype mostBytes,
                     QStringList& leftOut, bool needsDensity = false);

} // namespace pagestack
