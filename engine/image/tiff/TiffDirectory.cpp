#include "engine/image/tiff/TiffDirectory.h"

#include "engine/image/pixels/ByteOrder.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

namespace pagestack {

namespace {

    /// Bytes of a value of each type. TIFF 6.0, section 2; those of BigTIFF from 16 on.
    constexpr std::array<std::uint64_t, 19> typeBytes { 0, 1, 1, 2, 4, 8, 1, 1, 2, 4,
                                                        8, 4, 8, 4, 0, 0, 8, 8, 8 };

} // namespace

const TiffTagValue* TiffDirectory::find(unsigned tag) const
{
    const auto value = std::ranges::find(values, tag, &TiffTagValue::tag);
    return value == values.end() ? nullptr : &*value;
}

TiffDirectory readDirectory(const ReadBytes& read, const TiffFormat& format, std::uint64_t offset)
{
    const std::size_t offsetBytes = format.offsetBytes();
    std::vector<std::uint8_t> bytes(format.countBytes());
    read(offset, bytes);
    const std::uint64_t entries = numberIn(bytes, format.isBigEndian);
    if (entries > std::numeric_limits<std::uint16_t>::max())
        throw std::runtime_error("the directory of the page is damaged");
    const std::uint64_t firstEntry = offset + bytes.size();
    bytes.resize(entries * format.entryBytes());
    read(firstEntry, bytes);

    TiffDirectory directory;
    directory.range = { offset, format.linkAt(offset, entries) + offsetBytes };
    for (std::size_t at = 0; at < bytes.size(); at += format.entryBytes()) {
        const auto field = [&](std::size_t from, std::size_t count) {
            return numberIn(std::span(bytes).subspan(at + from, count), format.isBigEndian);
        };
        const std::uint64_t type = field(2, 2);
        const std::uint64_t size = type < typeBytes.size() ? typeBytes.at(type) : 0;
        TiffTagValue value;
        value.tag = static_cast<unsigned>(field(0, 2));
        value.type = static_cast<unsigned>(type);
        value.count = field(4, offsetBytes);
        constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
        value.bytes = size != 0 && value.count > most / size ? most : value.count * size;
        const std::size_t valueAt = 4 + offsetBytes;
        value.offset
            = value.bytes <= offsetBytes ? firstEntry + at + valueAt : field(valueAt, offsetBytes);
        directory.values.push_back(value);
    }
    return directory;
}

} // namespace pagestack
