#include "engine/image/tiffwriter/PageCoding.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/image/tiffwriter/EncodedPieces.h"

#include <tiffio.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr std::uint64_t smallestKeptStripBytes = std::uint64_t { 16 } * 1024;
    constexpr std::uint64_t largestKeptStripBytes = std::uint64_t { 4 } * 1024 * 1024;
    constexpr std::uint64_t wantedStripBytes = std::uint64_t { 128 } * 1024;

    void setPageNumber(tiff* to, int index, int total)
    {
        if (total <= std::numeric_limits<std::uint16_t>::max())
            setTag(to, TIFFTAG_PAGENUMBER, index, total);
    }

    /// A page by itself keeps its number, if it has one, as the place in the document that it is
    /// from: its source, or what that was part of.
    void copyPageNumber(const TiffPage& page, tiff* to)
    {
        std::uint16_t index = 0;
        std::uint16_t total = 0;
        if (page.treatment().stripsMetadata
            || TIFFGetField(page.load(), TIFFTAG_PAGENUMBER, &index, &total) != 1)
            return;
        const int pages = page.document().pageCount();
        setPageNumber(to, pages > 1 ? page.index() : index, pages > 1 ? pages : total);
    }

} // namespace

void checkTaken(bool isTaken)
{
    if (!isTaken)
        throw std::runtime_error("the page cannot be encoded");
}

void setPosition(tiff* to, const TiffPage* source, PagePosition position)
{
    const std::uint32_t type = source != nullptr ? source->tags().subfileType : 0;
    const bool isOneOfSeveral = position.total > 1;
    setTag(to, TIFFTAG_SUBFILETYPE, isOneOfSeveral ? type | FILETYPE_PAGE : type);
    if (isOneOfSeveral)
        setPageNumber(to, position.index, position.total);
    else if (source != nullptr)
        copyPageNumber(*source, to);
}

bool isFaxCompression(int compression)
{
    return compression == COMPRESSION_CCITTFAX3 || compression == COMPRESSION_CCITTFAX4;
}

int compressionFor(int wanted, bool isOneBitDeep)
{
    return isFaxCompression(wanted) && !isOneBitDeep ? COMPRESSION_NONE : wanted;
}

void setCoding(tiff* to, int compression, int predictedBits, std::uint32_t rowPx)
{
    if (compression == COMPRESSION_LZW && (predictedBits == 8 || predictedBits == 16))
        setTag(to, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    // libtiff 4.5 has no room for all the runs of a row of T.4's one-dimensional coding that
    // begins black and changes at every pixel, if its width is a multiple of 32: neither it nor
    // those who read with it could open the page. In two-dimensional coding it has.
    if (compression == COMPRESSION_CCITTFAX3 && rowPx % 32 == 0)
        setTag(to, TIFFTAG_GROUP3OPTIONS, GROUP3OPT_2DENCODING);
}

std::uint32_t outputRowsPerStrip(std::uint64_t rowBytes, std::uint32_t heightPx,
                                 std::uint32_t sourceRows)
{
    const std::uint64_t stripBytes = rowBytes * sourceRows;
    if (stripBytes <= largestKeptStripBytes
        && (sourceRows >= heightPx || stripBytes >= smallestKeptStripBytes))
        return std::min(sourceRows, heightPx);
    const std::uint64_t rows = std::max<std::uint64_t>(1, wantedStripBytes / rowBytes);
    return static_cast<std::uint32_t>(std::min<std::uint64_t>(rows, heightPx));
}

void copyPieces(tiff* to, const TiffPage& page, const EncodedPieces& pieces)
{
    page.reader().adopt(page.index(), pieces.diagnostics);
    for (const EncodedPieces::Piece& piece : pieces.pieces)
        putPiece(to, piece, [&](std::uint64_t at, auto part) {
            if (!pieces.isRoomOnly)
                pieces.bytes->readAt(at, part);
        });
}

bool tilesAreOfOddSize(const TiffPageTags& tags)
{
    return tags.isTiled && (tags.tileWidthPx % 16 != 0 || tags.tileHeightPx % 16 != 0);
}

void tellOfCompression(const TiffPage& page, int wanted, int used)
{
    if (used == wanted)
        return;
    page.messages().addLogLine(
        u"page %1 is not one bit deep and so is written without compression"_s.arg(page.index()
                                                                                   + 1));
    page.messages().addRemark(u"written without compression, since a fax compression is for "
                              "pages one bit deep; --bilevel makes them so"_s);
}

void tellOfLostCompression(const TiffPage& page)
{
    page.messages().addRemark(u"its compression could not be kept"_s);
}

} // namespace pagestack
