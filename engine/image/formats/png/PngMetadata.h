#pragma once

#include <QStringList>

namespace pagestack {

class StagedFile;
struct PageMetadata;
struct PageProperties;

/// Appends the chunks that hold what the page says of itself, for the `upright` page: eXIf, XMP
/// and texts with the keywords of ISO/IEC 15948, clause 11.3.4.2; IPTC records and image resources
/// as the widely read texts "Raw profile type iptc" and "8bim". The names of what they cannot hold
/// are added to `leftOut`. Throws std::runtime_error when the file takes no more.
void writePngMetadata(const PageMetadata& page, const PageProperties& upright, StagedFile& file,
                      QStringList& leftOut);

} // namespace pagestack
