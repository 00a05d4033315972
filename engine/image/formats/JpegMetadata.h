#pragma once

#include <QByteArray>
#include <QStringList>

#include <vector>

namespace pagestack {

struct PageMetadata;
struct PageProperties;

/// A marker segment of a JPEG file, without marker and length.
struct JpegSegment
{
    int application = 0; ///< number of the APPn marker
    QByteArray bytes {};
};

/// What the page says of itself, for the file of the `upright` page: Exif data and XMP in APP1
/// (Exif 2.32, section 4.7.2; XMP part 3, section 1.1.3), IPTC records and image resources in
/// APP13. The names of what they cannot hold are added to `leftOut`. Without a JFIF header the
/// resolution is in the Exif data, whatever else the page says.
std::vector<JpegSegment> jpegSegments(const PageMetadata& page, const PageProperties& upright,
                                      QStringList& leftOut, bool hasJfifHeader = true);

} // namespace pagestack
