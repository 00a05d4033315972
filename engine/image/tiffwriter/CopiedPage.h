#pragma once

#include "engine/image/tiff/PlainDirectory.h"
#include "engine/image/tiffwriter/PagePosition.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace pagestack {

class OpenTiffFile;
class PageSource;
class TiffPage;
struct PageTreatment;

/// A page whose strips or tiles are copied to a TIFF file as they lie, one behind the other, and
/// whose directory is made without libtiff, which takes longer for it than for all the rest. The
/// file is the one that libtiff would write, byte for byte.
struct CopiedPage
{
    PlainDirectory read;
    bool keepsTexts = false; ///< and its page number
    bool keepsFillOrder = true;
    std::uint32_t rowsPerStrip = 0; ///< of the copy; 0 when tiled
    std::vector<std::uint32_t> byteCounts {}; ///< of its pieces
};

/// How the strips of a page were encoded anew.
struct NewStrips
{
    int compression = 0; ///< value of the Compression tag
    int predictor = 0; ///< of the Predictor tag
    std::uint32_t rowsPerStrip = 0;
    std::vector<PlainDirectory::Piece> strips {}; ///< where they lie in what they are read from
};

/// The directory of a copied page, for its place in a file.
struct CopiedDirectory
{
    std::uint64_t offset = 0; ///< behind the pieces
    std::vector<std::uint8_t> bytes;
    std::uint64_t linkAt = 0; ///< where the offset of the next directory has to be written
    std::optional<std::uint64_t> pageNumberAt; ///< where the value of PageNumber lies
};

/// None for a page that has to be encoded, has a directory that is not plain, or is no page of a
/// TIFF file. `compression` is the wanted value of the Compression tag.
std::optional<CopiedPage> copiedPage(const PageSource& page, int compression);

/// The page with `strips` in place of its own; none for a page whose directory is not plain, or
/// where more than the strips changes.
std::optional<CopiedPage> recodedPage(const PageSource& page, NewStrips strips);

/// The directory for pieces that lie in a classic file from `begin` on, one behind the other.
/// `source` is the page itself.
CopiedDirectory copiedDirectory(const CopiedPage& page, const TiffPage& source,
                                PagePosition position, std::uint64_t begin);

/// Where the directory lies of a page whose pieces begin at `begin`.
std::uint64_t directoryBehind(const CopiedPage& page, std::uint64_t begin);

/// Memory of this thread for `readPieces`, kept for the next of many small pages: what the system
/// has to clear costs more than what is done with it.
std::span<std::uint8_t> copyBuffer();

/// Reads `pieces` from `file`, one behind the other, into `buffer`, and calls `put` whenever it is
/// full; returns how many bytes are left in it. Throws std::runtime_error.
std::size_t readPieces(std::span<const PlainDirectory::Piece> pieces, const OpenTiffFile& file,
                       std::span<std::uint8_t> buffer,
                       const std::function<void(std::span<const std::uint8_t> bytes)>& put);

} // namespace pagestack
