#pragma once

#include "engine/image/tiffwriter/PagePosition.h"

#include <cstdint>

struct tiff;

namespace pagestack {

class TiffPage;
struct EncodedPieces;
struct TiffPageTags;

// What libtiff is told of a page, whether its samples are written as they are or as they are shown.

/// Throws std::runtime_error unless libtiff has taken what it was given.
void checkTaken(bool isTaken);

/// Sets a tag of a libtiff handle, whose header is for who calls this.
template <typename Handle, typename... Values>
void setTag(Handle* to, unsigned tag, Values... values)
{
    checkTaken(TIFFSetField(to, tag, values...) == 1);
}

/// The kind of the page and its number; those of `source`, if it is there, as far as they hold.
void setPosition(tiff* to, const TiffPage* source, PagePosition position);

/// Whether the wanted compression, a value of the Compression tag, is one for fax machines.
bool isFaxCompression(int compression);

/// The compression for pixels that may be too deep for the one that is wanted.
int compressionFor(int wanted, bool isOneBitDeep);

/// Sets what LZW and fax coding need for rows of `rowPx` pixels; `predictedBits` are those of a
/// sample, 0 for samples that no predictor suits.
void setCoding(tiff* to, int compression, int predictedBits, std::uint32_t rowPx);

/// Rows of a strip in the output: as they were, unless strips are so small that their number costs
/// more than it gives, or so large that readers have to hold much of the page.
std::uint32_t outputRowsPerStrip(std::uint64_t rowBytes, std::uint32_t heightPx,
                                 std::uint32_t sourceRows);

/// Copies strips or tiles that were encoded ahead, with what was found then.
void copyPieces(tiff* to, const TiffPage& page, const EncodedPieces& pieces);

/// TIFF 6.0, section 15: the sides of a tile are multiples of 16. Some files have others.
bool tilesAreOfOddSize(const TiffPageTags& tags);

/// That the page has no compression, unless it is the wanted one. Told by who encodes the page, so
/// that it is told once; when its pass, which forgets what was said before, is begun.
void tellOfCompression(const TiffPage& page, int wanted, int used);
/// That it has not the one of its source; in the same way.
void tellOfLostCompression(const TiffPage& page);

} // namespace pagestack
