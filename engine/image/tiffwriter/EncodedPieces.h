#pragma once

#include "engine/files/ByteSpool.h"
#include "engine/support/SystemLog.h"

#include <memory>
#include <vector>

struct tiff;

namespace pagestack {

class TiffPage;

/// The strips or tiles of a page as they are to stand in a TIFF file, encoded apart from it, so
/// that only copying is left to be done in the order of the pages.
struct EncodedPieces
{
    struct Piece
    {
        std::uint32_t index; ///< of the strip or tile
        std::uint64_t offset; ///< in `bytes`
        std::uint64_t size;
    };
    std::vector<Piece> pieces; ///< in the order in which an encoder writes them
    std::unique_ptr<ByteSpool> bytes;
    HeldLines complaints; ///< what was said of the page's pixels; to be written with the pieces
};

/// Encodes the samples of `page` with `compression`, a value of the Compression tag. Nothing (a
/// null `bytes`) when there is no work to be taken from whoever writes the file: when its strips
/// can be copied as they lie or have no compression, or when it is written as it is shown. Throws
/// std::runtime_error when the page cannot be decoded or encoded. What is said of its pixels goes
/// to the system log; `complaints` stays empty.
EncodedPieces encodePieces(const TiffPage& page, int compression);

/// Writes the pieces to `handle`, a handle for writing that has the page's tags.
/// Throws std::runtime_error.
void putPieces(tiff* handle, const EncodedPieces& pieces);

} // namespace pagestack
