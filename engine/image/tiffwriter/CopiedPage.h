#pragma once

#include "engine/image/tiff/PlainDirectory.h"
#include "engine/image/tiffwriter/PagePosition.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace pagestack {

class OpenTiffFile;
class PageSource;
class TiffPage;
struct PageTreatment;

/// A page whose strips are copied to a TIFF file as they lie, and whose directory is made without
/// libtiff, which takes longer for it than for all the rest. The file is the one that libtiff
/// would write, byte for byte.
struct CopiedPage
{
    PlainDirectory read;
    bool keepsTexts = false; ///< and its page number
};

/// The directory of a copied page, for its place in a file.
struct CopiedDirectory
{
    std::uint64_t offset = 0; ///< behind the strips
    std::vector<std::uint8_t> bytes;
    std::uint64_t linkAt = 0; ///< where the offset of the next directory has to be written
    std::optional<std::uint64_t> pageNumberAt; ///< where the value of PageNumber lies
};

/// None for a page that has to be encoded, has a directory that is not plain, or is no page of a
/// TIFF file. `compression` is the wanted value of the Compression tag.
std::optional<CopiedPage> copiedPage(const PageSource& page, int compression);

/// The directory for strips that lie in a classic file from `begin` on, one behind the other.
/// `source` is the page itself.
CopiedDirectory copiedDirectory(const CopiedPage& page, const TiffPage& source,
                                PagePosition position, std::uint64_t begin);

} // namespace pagestack
