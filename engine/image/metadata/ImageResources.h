#pragma once

#include "engine/image/metadata/PageMetadata.h"

namespace pagestack {

/// The page's IPTC records and blocks of image resources as one list of such blocks; empty if there
/// are none. Those that repeat what is said elsewhere, or speak of pixels as they were, go. The
/// name "Photoshop" is added to `leftOut` if the page's blocks are damaged.
QByteArray imageResources(const PageMetadata& page, QStringList& leftOut);

} // namespace pagestack
