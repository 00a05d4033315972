#include "engine/image/tiff/TiffLimits.h"

#include "engine/image/pixels/ByteOrder.h"
#include "engine/image/tiff/TiffPageTags.h"
#include "engine/image/tiff/TiffReader.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace pagestack {

namespace {

    constexpr std::uint32_t longestFaxRowPx = 4 * 1024 * 1024; // 16 bytes each in libtiff's tables

    // Beyond this a page has to bring a byte for every `mostDecodedPerByte` of its pixels, or a
    // file of some kilobytes would keep a run busy for hours and fill the disk. Blank areas of real
    // pages of that size, plans or printing plates, stay far below it.
    constexpr std::uint64_t largestSparsePage = std::uint64_t { 1024 } * 1024 * 1024;
    constexpr std::uint64_t mostDecodedPerByte = 1000;

    constexpr std::uint64_t largestJbigPage = std::uint64_t { 64 } * 1024 * 1024;

    // Some profiles and texts have many megabytes.
    constexpr std::uint64_t mostValueBytes = std::uint64_t { 64 } * 1024 * 1024;

    const TiffTagValue* tableOf(const TiffDirectory& directory, unsigned stripTag, unsigned tileTag)
    {
        const TiffTagValue* strips = directory.find(stripTag);
        return strips != nullptr ? strips : directory.find(tileTag);
    }

    /// The most bytes that one encoded byte can decode to; 0: no useful bound.
    std::uint64_t highestRatio(int compression)
    {
        switch (compression) {
        case COMPRESSION_NONE:
            return 1;
        case COMPRESSION_PACKBITS:
            return 64;
        case COMPRESSION_LZW:
            return 4096; // codes of 9 to 12 bits for strings of up to 4096 bytes
        case COMPRESSION_DEFLATE:
        case COMPRESSION_ADOBE_DEFLATE:
            return 1100; // two bits for 258 bytes
        case COMPRESSION_JPEG:
        case COMPRESSION_OJPEG:
            return 4096; // some bits for the 64 samples of each of some channels
        default:
            return 0;
        }
    }

    /// libjbig holds a page as a whole, and ends the program when the size in the encoded data asks
    /// for more memory than there is. ITU-T T.82, section 6.2.2: the header of the data.
    void checkJbigHeader(TIFF* handle, const TiffPageTags& tags)
    {
        std::array<std::uint8_t, 12> head = {};
        const auto bytes = static_cast<tmsize_t>(head.size());
        if (tags.isTiled || TIFFReadRawStrip(handle, 0, head.data(), bytes) != bytes)
            throw std::runtime_error("its JBIG data are damaged");
        if (tags.fillOrder == FILLORDER_MSB2LSB)
            TIFFReverseBits(head.data(), bytes); // libtiff's notion of the order, here only
        const auto number
            = [&](std::size_t first) { return numberIn(std::span(head).subspan(first, 4), true); };
        const bool isOneLayer = head[0] == 0 && head[1] == 0 && head[2] == 1;
        if (!isOneLayer || number(4) != tags.widthPx || number(8) != tags.heightPx)
            throw std::runtime_error("its JBIG data do not have the size of the page");
        if (tags.decodedBytes() > largestJbigPage)
            throw std::runtime_error("it is too large for a page of JBIG data");
    }

    [[noreturn]] void refusePiece(const TiffPageTags& tags, std::uint32_t number, const char* fault)
    {
        throw std::runtime_error((tags.isTiled ? "tile " : "strip ") + std::to_string(number)
                                 + " of the page " + fault);
    }

    /// Looks at every strip and tile. One without offset and size is left out by the writer of a
    /// sparse file; any other place in the header is none of pixels.
    EncodedSize checkPieces(tiff* handle, const TiffPageTags& tags, std::uint64_t fileSizeBytes)
    {
        const TiffFormat format { .isBigTiff = TIFFIsBigTIFF(handle) != 0 };
        const std::uint32_t count = piecesOf(handle);
        EncodedSize sum;
        for (std::uint32_t number = 0; number < count; ++number) {
            int failed = 0;
            const std::uint64_t bytes = TIFFGetStrileByteCountWithErr(handle, number, &failed);
            const std::uint64_t offset = TIFFGetStrileOffsetWithErr(handle, number, &failed);
            if (failed != 0)
                throw std::runtime_error("the table of its strips is damaged");
            if (bytes == 0 && offset == 0) {
                sum.isSparse = true;
                continue;
            }
            if (offset < format.headerBytes())
                refusePiece(tags, number, "lies in the header of the file");
            if (offset >= fileSizeBytes)
                throw std::runtime_error("its pixels lie beyond the end of the file");
            const std::uint64_t held = std::min(bytes, fileSizeBytes - offset);
            // libtiff would go on reading what lies behind it.
            if (tags.compression == COMPRESSION_NONE && held < plainBytes(handle, tags, number))
                refusePiece(tags, number, "is smaller than its rows");
            sum.bytes += held;
            if (held > 0)
                sum.decodedBytes = std::max(sum.decodedBytes, // also where the sum overflows
                                            sum.decodedBytes + plainBytes(handle, tags, number));
        }
        return sum;
    }

    void checkLengthOfTable(const TiffDirectory& directory, tiff* handle, TiffPageTags& tags)
    {
        const TiffTagValue* table = tableOf(directory, TIFFTAG_STRIPOFFSETS, TIFFTAG_TILEOFFSETS);
        const std::uint32_t needed = piecesOf(handle);
        // libtiff cuts a large uncompressed strip into several, and fills a table that is too short
        // with 0.
        if (table == nullptr || table->count >= needed
            || TIFFGetStrileOffset(handle, needed - 1) != 0)
            return;
        if (tags.isTiled || table->count != static_cast<unsigned>(tags.planes()))
            throw std::runtime_error("the table of its strips is too short, "
                                     + std::to_string(table->count) + " of "
                                     + std::to_string(needed));
        tags.rowsPerStrip = tags.heightPx;
        tags.hasWrongRowsPerStrip = true;
        applyRowsPerStrip(handle, tags);
    }

    /// As the file says; libtiff takes a single uncompressed strip for many. 0 where it is missing
    /// or all ones, which stands for any number.
    std::uint64_t rowsPerStrip(const TiffDirectory& directory, const OpenTiffFile& file)
    {
        const std::uint64_t rows = file.number(directory.find(TIFFTAG_ROWSPERSTRIP)).value_or(0);
        return rows >= std::numeric_limits<std::uint32_t>::max() ? 0 : rows;
    }

    /// libtiff replaces sizes of uncompressed strips that look wrong by what the rows need, and
    /// takes what follows in the file for pixels.
    void checkPlainCounts(TiffReader& reader, int index, TiffPageTags& tags)
    {
        const OpenTiffFile& file = reader.document();
        const TiffTagValue* table
            = tableOf(reader.directory(index), TIFFTAG_STRIPBYTECOUNTS, TIFFTAG_TILEBYTECOUNTS);
        if (table == nullptr || table->count == 0 || table->bytes > file.sizeBytes())
            return;
        tiff* handle = reader.load(index);
        const std::uint64_t size = table->bytes / table->count;
        std::vector<std::uint8_t> bytes(table->bytes);
        file.readAt(table->offset, bytes);
        const auto sizeOf = [&](std::uint64_t entry) {
            return numberIn(std::span(bytes).subspan(entry * size, size), file.isBigEndian());
        };
        const auto hasRowMore = [&](std::uint32_t entry, std::uint64_t needed) {
            const std::uint64_t offset = TIFFGetStrileOffset(handle, entry);
            const std::uint64_t rowBytes = tags.planeRowBytes();
            const std::uint64_t held
                = std::min(sizeOf(entry), file.sizeBytes() - std::min(offset, file.sizeBytes()));
            return held >= needed + rowBytes && !tags.isTiled && !tags.isSubsampled()
                && held / rowBytes > rowsPerStrip(reader.directory(index), file);
        };
        // Old programs left the size of the only strip unknown.
        if (table->count == 1 && !tags.isTiled) {
            const std::uint64_t needed = TIFFVStripSize64(handle, tags.heightPx);
            tags.hasStripOfUnknownSize = sizeOf(0) == 0;
            if (!tags.hasStripOfUnknownSize && sizeOf(0) < needed)
                refusePiece(tags, 0, "is smaller than its rows");
            tags.hasRowsBehindStrips = hasRowMore(0, needed);
            return;
        }
        const std::uint64_t pieces = std::min<std::uint64_t>(piecesOf(handle), table->count);
        for (std::uint32_t number = 0; number < pieces; ++number) {
            if (TIFFGetStrileOffset(handle, number) == 0)
                continue;
            const std::uint64_t needed = plainBytes(handle, tags, number);
            if (sizeOf(number) < needed)
                refusePiece(tags, number, "is smaller than its rows");
            if (!tags.hasRowsBehindStrips)
                tags.hasRowsBehindStrips = hasRowMore(number, needed);
        }
    }

    /// Lists as long as the page has strips or tiles, and the layers that some programs put beside
    /// the page. They are bounded as any single allocation is, and read once.
    bool isBoundedElsewhere(unsigned tag)
    {
        return tag == TIFFTAG_STRIPOFFSETS || tag == TIFFTAG_STRIPBYTECOUNTS
            || tag == TIFFTAG_TILEOFFSETS || tag == TIFFTAG_TILEBYTECOUNTS
            || tag == TIFFTAG_IMAGESOURCEDATA;
    }

} // namespace

std::uint32_t piecesOf(tiff* handle)
{
    return TIFFIsTiled(handle) != 0 ? TIFFNumberOfTiles(handle) : TIFFNumberOfStrips(handle);
}

std::uint64_t plainBytes(tiff* handle, const TiffPageTags& tags, std::uint32_t number)
{
    if (tags.isTiled)
        return TIFFTileSize64(handle);
    const std::uint32_t above = number % tags.stripsInPlane() * tags.rowsPerStrip;
    return TIFFVStripSize64(handle, std::min(tags.rowsPerStrip, tags.heightPx - above));
}

void checkTagValues(const TiffDirectory& directory, std::uint64_t fileSizeBytes)
{
    std::uint64_t sum = 0; // of values that may share their bytes
    for (const TiffTagValue& value : directory.values) {
        if (isBoundedElsewhere(value.tag) || value.offset > fileSizeBytes
            || value.bytes > fileSizeBytes - value.offset)
            continue;
        if (value.bytes > mostValueBytes - sum)
            throw std::runtime_error("its tags announce more than "
                                     + std::to_string(mostValueBytes >> 20U) + " MiB of values");
        sum += value.bytes;
    }
}

void checkStripTable(TiffReader& reader, int index, TiffPageTags& tags)
{
    checkLengthOfTable(reader.directory(index), reader.load(index), tags);
    if (tags.compression == COMPRESSION_NONE)
        checkPlainCounts(reader, index, tags);
}

namespace {

    void checkRowLength(const TiffPageTags& tags)
    {
        const bool isTooLong = tags.isFax()
            ? std::max(tags.widthPx, tags.tileWidthPx) > longestFaxRowPx
            : tags.widthPx > longestRowPx;
        if (isTooLong
            || tags.planeRowBytes() * static_cast<unsigned>(tags.planes()) > longestRowBytes)
            throw std::runtime_error("its rows of " + std::to_string(tags.widthPx)
                                     + " pixels are too long");
    }

} // namespace

void checkEncodedSize(tiff* handle, const TiffPageTags& tags, std::uint64_t fileSizeBytes)
{
    checkRowLength(tags); // before the strips, whose sizes are made of it
    checkEncodedSize(checkPieces(handle, tags, fileSizeBytes), tags, fileSizeBytes);
    if (tags.compression == COMPRESSION_JBIG)
        checkJbigHeader(handle, tags);
}

void checkEncodedSize(const EncodedSize& held, const TiffPageTags& tags,
                      std::uint64_t fileSizeBytes)
{
    checkRowLength(tags);
    if (held.decodedBytes == 0)
        throw std::runtime_error("the page has no pixel data");
    const std::uint64_t encoded = std::min(held.bytes, fileSizeBytes); // strips may share bytes
    // Tiles reach past the page, and sub-sampled strips hold less than their rows suggest.
    const std::uint64_t decoded
        = held.isSparse ? std::min(held.decodedBytes, tags.decodedBytes()) : tags.decodedBytes();
    const std::uint64_t ratio = highestRatio(tags.compression);
    // A row of a fax page takes a bit at least.
    const bool tooManyRows = tags.isFax() && decoded / tags.planeRowBytes() / 8 > encoded;
    // Sub-sampled pages hold less than their rows suggest.
    const std::uint64_t slack = tags.photometric == PHOTOMETRIC_YCBCR ? 16 : 1;
    if (tooManyRows || (ratio != 0 && decoded / ratio / slack > encoded))
        throw std::runtime_error("it announces " + std::to_string(tags.widthPx) + " x "
                                 + std::to_string(tags.heightPx) + " pixels, more than its "
                                 + std::to_string(encoded) + " bytes of data can hold");
    if (tags.decodedBytes() > largestSparsePage
        && tags.decodedBytes() / mostDecodedPerByte > encoded)
        throw std::runtime_error(
            "its " + std::to_string(encoded) + " bytes of data announce "
            + std::to_string(tags.widthPx) + " x " + std::to_string(tags.heightPx)
            + " pixels; a page of more than 1 GiB needs a byte for every 1000");
}

} // namespace pagestack
