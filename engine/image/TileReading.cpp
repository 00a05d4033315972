#include "engine/image/TileReading.h"

#include "engine/image/TiffPageTags.h"

#include <tiffio.h>

#include <algorithm>

namespace pagestack {

namespace {

    bool decode(TIFF* handle, std::uint32_t index, std::span<std::uint8_t> to, std::uint8_t before)
    {
        std::fill(to.begin(), to.end(), before);
        const auto size = static_cast<tmsize_t>(to.size());
        return TIFFReadEncodedTile(handle, index, to.data(), size) == size;
    }

} // namespace

bool readTile(tiff* handle, const TiffPageTags& tags, std::uint32_t index,
              std::span<std::uint8_t> to, std::vector<std::uint8_t>& scratch)
{
    if (!decode(handle, index, to, 0))
        return false;
    if (!tags.isFax() || tags.samplesInPlane() > 1)
        return true;
    // libtiff 4.5 calls it a success when the data of a fax tile end between two rows, and leaves
    // the other rows as they were: they differ when it starts from other bytes.
    scratch.resize(to.size());
    return decode(handle, index, scratch, 0xFF)
        && std::equal(to.begin(), to.end(), scratch.begin());
}

} // namespace pagestack
