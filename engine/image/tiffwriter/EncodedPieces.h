#pragma once

#include "engine/files/ByteSpool.h"
#include "engine/image/tiff/TiffDirectory.h"
#include "engine/image/tiffwriter/CopiedPage.h"
#include "engine/log/Diagnostic.h"

#include <memory>
#include <optional>
#include <vector>

struct tiff;

namespace pagestack {

class PageSource;

/// The strips or tiles of a page, encoded apart from the TIFF file that they are copied to when it
/// is the page's turn.
struct EncodedPieces
{
    struct Piece
    {
        std::uint32_t index; ///< of the strip or tile
        std::uint64_t offset; ///< in what it is read from
        std::uint64_t size;
    };
    std::vector<Piece> pieces; ///< in the order in which an encoder writes them
    std::shared_ptr<ByteSpool> bytes;
    bool isRoomOnly = false; ///< somebody else brings the bytes: there is only room made for them
    PageDiagnostics diagnostics; ///< of the page's pixels
    /// A page to be copied from its source instead; nothing was found then.
    std::optional<CopiedPage> copy;
    /// The page with the pieces as its strips, where no libtiff is needed to write them.
    std::optional<CopiedPage> recoded;
};

/// Encodes the samples of `page`, or its pixels where they are changed, with `compression`, a value
/// of the Compression tag. Returns empty pieces (a null `bytes`) if the strips can be copied, with
/// `copy` if that needs no libtiff, or written without encoding, or if the page is written as it is
/// shown, unchanged. Throws
/// std::runtime_error when the page cannot be decoded or encoded.
EncodedPieces encodePieces(const PageSource& page, int compression);

/// Copies a strip or tile, which `read` gives, to `handle`, a handle for writing that has the
/// page's tags; in parts, since one can be as large as a file. Throws std::runtime_error.
void putPiece(tiff* handle, const EncodedPieces::Piece& piece, const ReadBytes& read);

} // namespace pagestack
