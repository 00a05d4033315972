#include "engine/image/metadata/ImageResources.h"

#include <QtEndian>

#include <algorithm>
#include <array>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    // Photoshop File Formats, "Image Resource IDs".
    constexpr unsigned resolutionBlock = 0x03ED;
    constexpr unsigned iptcBlock = 0x0404;
    constexpr unsigned xmpBlock = 0x0424;
    /// Thumbnails and profile.
    constexpr std::array<unsigned, 3> repeatedBlocks { 0x0409, 0x040C, 0x040F };
    constexpr std::array<unsigned, 2> exifBlocks { 0x0422, 0x0423 };

    struct ResourceBlock
    {
        unsigned id = 0;
        QByteArray data {};
        QByteArray whole {}; ///< with its head
    };

    QByteArray resourceOf(unsigned id, const QByteArray& data)
    {
        QByteArray head("8BIM\0\0\0\0\0\0\0\0", 12);
        qToBigEndian(static_cast<std::uint16_t>(id), head.data() + 4);
        qToBigEndian(static_cast<std::uint32_t>(data.size()), head.data() + 8);
        return head + data + QByteArray(data.size() % 2, '\0');
    }

    /// Takes the first block off `rest`; false if there is no whole one.
    bool takeResource(QByteArrayView& rest, ResourceBlock& block)
    {
        constexpr qsizetype nameAt = 6;
        constexpr qsizetype smallest = nameAt + 2 + 4;
        if (rest.size() < smallest)
            return false;
        const qsizetype nameBytes
            = (qsizetype { static_cast<unsigned char>(rest.at(nameAt)) } + 2) / 2 * 2;
        const qsizetype dataAt = nameAt + nameBytes + 4;
        if (rest.size() < dataAt)
            return false;
        const qsizetype size = qFromBigEndian<std::uint32_t>(rest.data() + dataAt - 4);
        if (size > rest.size() - dataAt)
            return false;
        block.id = qFromBigEndian<std::uint16_t>(rest.data() + 4);
        block.data = rest.sliced(dataAt, size).toByteArray();
        block.whole = rest.first(dataAt + size).toByteArray() + QByteArray(size % 2, '\0');
        rest = rest.sliced(std::min(rest.size(), dataAt + (size + 1) / 2 * 2));
        return true;
    }

    bool isResourceWanted(const ResourceBlock& block, const PageMetadata& page)
    {
        if ((block.id == iptcBlock && !page.iptc.isEmpty())
            || (block.id == xmpBlock && !page.xmp.isEmpty())
            || (!page.exif.empty() && std::ranges::find(exifBlocks, block.id) != exifBlocks.end()))
            return false;
        // It repeats the density, which may have been rounded or turned, and its units on screen.
        return block.id != resolutionBlock
            && std::ranges::find(repeatedBlocks, block.id) == repeatedBlocks.end();
    }

} // namespace

QByteArray imageResources(const PageMetadata& page, QStringList& leftOut)
{
    QByteArray list;
    if (!page.iptc.isEmpty())
        list = resourceOf(iptcBlock, page.iptc);
    QByteArrayView rest(page.imageResources);
    ResourceBlock block;
    while (takeResource(rest, block))
        if (isResourceWanted(block, page))
            list += block.whole;
    if (std::ranges::any_of(rest, [](char byte) { return byte != '\0'; }))
        leftOut.append(u"Photoshop"_s);
    return list;
}

} // namespace pagestack
