#include "engine/image/tiffwriter/TiffMetadata.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/image/metadata/DirectoryLayout.h"
#include "engine/image/metadata/MetadataReader.h"
#include "engine/image/metadata/MetadataTags.h"
#include "engine/image/pixels/ByteOrder.h"
#include "engine/image/tiff/TiffStream.h"

#include <tiffio.h>

#include <set>
#include <stdexcept>

namespace pagestack {

namespace {

    std::vector<std::uint8_t> bytesAt(TiffStream& file, std::uint64_t offset, std::uint64_t size)
    {
        std::vector<std::uint8_t> bytes(size);
        if (file.read(offset, bytes) != size)
            throw std::runtime_error("the directory that was written cannot be read");
        return bytes;
    }

    std::uint64_t numberAt(TiffStream& file, std::uint64_t offset, std::size_t size)
    {
        return numberIn(bytesAt(file, offset, size), false);
    }

} // namespace

PageMetadata tiffMetadata(const TiffPage& page, bool isShown)
{
    PageMetadata read = readMetadata(page.document(), page.directory(), MetadataUse::Tiff);
    if (page.change().becomesSrgb)
        read.describeSrgb();
    const bool isStripped = page.treatment().stripsMetadata;
    std::erase_if(read.tiffTags, [=](const MetadataEntry& entry) {
        return metadataTag(entry.tag)->isOfSamples ? isShown : isStripped;
    });
    return isStripped ? PageMetadata { .tiffTags = std::move(read.tiffTags) } : read;
}

std::uint64_t extendDirectory(TiffStream& file, const TiffFormat& format, std::uint64_t offset,
                              const PageMetadata& more)
{
    MetadataDirectory directory;
    std::set<unsigned> tags;
    const std::uint64_t count = numberAt(file, offset, format.countBytes());
    for (std::uint64_t at = offset + format.countBytes(), last = format.linkAt(offset, count);
         at < last; at += format.entryBytes()) {
        const std::vector<std::uint8_t> record = bytesAt(file, at, format.entryBytes());
        directory.placed.emplace_back(reinterpret_cast<const char*>(record.data()),
                                      static_cast<qsizetype>(record.size()));
        tags.insert(static_cast<unsigned>(numberIn(std::span(record).first(2), false)));
    }
    for (const MetadataEntry& entry : more.tiffTags)
        if (!tags.contains(entry.tag))
            directory.entries.push_back(entry);
    directory.below = directoriesBelow(more);
    const std::uint64_t begin = (file.sizeBytes() + 1) / 2 * 2;
    DirectoryLayout layout(format, begin);
    const std::uint64_t added = layout.add(directory);
    file.write(begin,
               { reinterpret_cast<const std::uint8_t*>(layout.bytes().constData()),
                 static_cast<std::size_t>(layout.bytes().size()) });
    return added;
}

} // namespace pagestack
