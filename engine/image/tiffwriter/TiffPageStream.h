#pragma once

#include "engine/image/tiff/TiffStream.h"

#include <cstdint>
#include <string>

namespace pagestack {

class ByteFile;

/// A TIFF file in the making, of which libtiff writes one page at a time: libtiff sees a file whose
/// header is `header` and whose other bytes are those of `staged`, so that a page's strips and
/// directory land at its end with offsets that hold for it.
struct TiffPageStream
{
    ByteFile& staged;
    std::string header; ///< what libtiff wrote into the header; its directory offset is the page's
    std::uint64_t limitBytes; ///< `staged` may not become larger
    bool isFull = false; ///< it would have become larger
    std::string writeError; ///< why `staged` took no more; empty while all is well
};

/// Opens a handle that writes one page into `sink`, little-endian, as BigTIFF if asked.
/// `messages` and `sink` must outlive it. Throws std::runtime_error with the reason.
TiffHandle openTiffPageForWriting(TiffPageStream& sink, bool bigTiff, TiffMessages& messages);

} // namespace pagestack
