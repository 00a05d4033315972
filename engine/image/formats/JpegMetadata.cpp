#include "engine/image/formats/JpegMetadata.h"

#include "engine/image/metadata/ExifBlock.h"
#include "engine/image/metadata/ImageResources.h"
#include "engine/image/metadata/XmpPacket.h"

#include <QtEndian>

namespace pagestack {

namespace {

    constexpr qsizetype mostSegmentBytes = 65533;

    const QByteArray exifName("Exif\0\0", 6);
    const QByteArray xmpName("http://ns.adobe.com/xap/1.0/\0", 29);
    const QByteArray extendedXmpName("http://ns.adobe.com/xmp/extension/\0", 35);
    const QByteArray resourcesName("Photoshop 3.0\0", 14);

    QByteArray bigEndian(qsizetype number)
    {
        QByteArray bytes(4, '\0');
        qToBigEndian(static_cast<std::uint32_t>(number), bytes.data());
        return bytes;
    }

    void addXmp(const QByteArray& packet, std::vector<JpegSegment>& to)
    {
        if (packet.isEmpty())
            return;
        const qsizetype most = mostSegmentBytes - xmpName.size();
        QByteArray upright = uprightXmp(packet);
        if (upright.size() > most)
            upright = withoutPadding(upright);
        const XmpParts parts = xmpParts(upright, most);
        to.push_back({ 1, xmpName + parts.standard });
        const QByteArray name = extendedXmpName + parts.digest + bigEndian(parts.extended.size());
        const qsizetype step = mostSegmentBytes - name.size() - 4;
        for (qsizetype at = 0; at < parts.extended.size(); at += step)
            to.push_back({ 1, name + bigEndian(at) + parts.extended.mid(at, step) });
    }

} // namespace

std::vector<JpegSegment> jpegSegments(const PageMetadata& page, const PageProperties& upright,
                                      QStringList& leftOut, bool hasJfifHeader)
{
    std::vector<JpegSegment> segments;
    const QByteArray exif
        = exifBlock(page, upright, mostSegmentBytes - exifName.size(), leftOut, !hasJfifHeader);
    if (!exif.isEmpty())
        segments.push_back({ 1, exifName + exif });
    addXmp(page.xmp, segments);
    // Readers put the segments together again, as with an ICC profile.
    const QByteArray resources = imageResources(page, leftOut);
    const qsizetype step = mostSegmentBytes - resourcesName.size();
    for (qsizetype at = 0; at < resources.size(); at += step)
        segments.push_back({ 13, resourcesName + resources.mid(at, step) });
    return segments;
}

} // namespace pagestack
