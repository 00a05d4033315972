#pragma once

#include <cstddef>
#include <cstdint>

struct tiff;

namespace pagestack {

struct TiffDirectory;
class TiffReader;
struct TiffPageTags;

constexpr std::size_t mostPages = 1'048'576; ///< of a file, which is as far as libtiff goes

/// No single table, strip or tile that libtiff holds may be larger.
constexpr std::uint64_t largestTiffAllocation = std::uint64_t { 256 } * 1024 * 1024;

/// Throws std::runtime_error if the values of the directory, which libtiff holds all at once, take
/// more than 64 MiB without those that reach out of the file, the lists of strips and tiles and the
/// layers in ImageSourceData.
void checkTagValues(const TiffDirectory& directory, std::uint64_t fileSizeBytes);

/// Number of strips or tiles of the current page, of all planes.
std::uint32_t piecesOf(tiff* handle);

/// Decoded bytes of the strip or tile `number` of the current page; the last strip of a plane may
/// have fewer rows than the others.
std::uint64_t plainBytes(tiff* handle, const TiffPageTags& tags, std::uint32_t number);

/// Throws std::runtime_error if the table of strips of page `index` is too short or gives an
/// uncompressed strip fewer bytes than its rows take. Three faults are noted in `tags` instead: one
/// entry a plane where RowsPerStrip asks for more (the strip holds all rows, as the handle is
/// told), the size 0 of an only strip, which old programs left, and uncompressed strips that have a
/// row more than they need, but for one that is filled up to RowsPerStrip rows. Less than a row may
/// fill up a block of the file.
void checkStripTable(TiffReader& reader, int index, TiffPageTags& tags);

/// What the strips and tiles of a page have in the file.
struct EncodedSize
{
    std::uint64_t bytes = 0;
    std::uint64_t decodedBytes = 0; ///< what the strips and tiles with data decode to
    bool isSparse = false; ///< some have no data
};

/// Throws std::runtime_error when the current page announces rows of more than 16 Mi pixels (4 Mi
/// of a fax page) or 16 MiB, more pixels than its strips or tiles can hold, more than 1 GiB of them
/// with less than a byte of data for every 1000 bytes, strips that lie beyond the end of a file of
/// `fileSizeBytes` or in its header, uncompressed ones that are smaller than their rows, or JBIG
/// data of another size than the page or of more than 64 MiB; to be asked before memory is taken or
/// a decoder is started.
void checkEncodedSize(tiff* handle, const TiffPageTags& tags, std::uint64_t fileSizeBytes);

/// What of it needs no look at the data, for a page that has `held` in its strips or tiles.
void checkEncodedSize(const EncodedSize& held, const TiffPageTags& tags,
                      std::uint64_t fileSizeBytes);

} // namespace pagestack
