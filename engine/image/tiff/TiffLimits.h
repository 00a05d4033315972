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

/// Throws std::runtime_error when the values in the directory, which libtiff holds all at once, are
/// more than 64 MiB: without those that reach out of the file, the lists of strips and tiles and
/// the layers in ImageSourceData.
void checkTagValues(const TiffDirectory& directory, std::uint64_t fileSizeBytes);

/// Number of strips or tiles of the current page, of all planes.
std::uint32_t piecesOf(tiff* handle);

/// Decoded bytes of the strip or tile `number` of the current page; the last strip of a plane may
/// have fewer rows than the others.
std::uint64_t plainBytes(tiff* handle, const TiffPageTags& tags, std::uint32_t number);

/// Checks that the table of offsets of page `index` has an entry for each strip or tile. If it has
/// just one a plane, RowsPerStrip is wrong and the strip holds all rows, which `tags` and the
/// handle are told. Throws std::runtime_error for any other table that is too short, or that gives
/// a strip of an uncompressed page fewer bytes than its rows take. (Old programs left the size of
/// the only strip 0: `tags` are told.)
void checkStripTable(TiffReader& reader, int index, TiffPageTags& tags);

/// Throws std::runtime_error when the current page announces rows of more than 16 Mi pixels (4 Mi
/// of a fax page) or 16 MiB, more pixels than its strips or tiles can hold, more than 1 GiB of them
/// with less than a byte of data for every 1000 bytes, strips that lie beyond the end of a file of
/// `fileSizeBytes` or in its header, uncompressed ones that are smaller than their rows, or JBIG
/// data of another size than the page or of more than 64 MiB; to be asked before memory is taken or
/// a decoder is started.
void checkEncodedSize(tiff* handle, const TiffPageTags& tags, std::uint64_t fileSizeBytes);

} // namespace pagestack
