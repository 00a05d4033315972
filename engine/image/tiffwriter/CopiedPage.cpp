#include "engine/image/tiffwriter/CopiedPage.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/image/tiff/TiffLimits.h"
#include "engine/image/tiffwriter/ClassicDirectory.h"
#include "engine/image/tiffwriter/PageCoding.h"
#include "engine/threads/StopScope.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

namespace pagestack {

namespace {

    constexpr std::uint32_t mostNewStrips = 8192; // many pages are held at once
    constexpr std::uint64_t mostIn16Bits = std::numeric_limits<std::uint16_t>::max();

    std::uint64_t plainPieceBytes(const TiffPageTags& tags, std::size_t number)
    {
        const std::uint64_t above = number * tags.rowsPerStrip;
        const std::uint64_t rows = tags.isTiled
            ? tags.tileHeightPx
            : std::min<std::uint64_t>(tags.rowsPerStrip, tags.heightPx - above);
        const std::uint32_t widthPx = tags.isTiled ? tags.tileWidthPx : tags.widthPx;
        if (tags.photometric != PHOTOMETRIC_YCBCR)
            return (tags.bitsOf(widthPx) + 7) / 8 * rows;
        const auto across = static_cast<unsigned>(tags.horizontalSubsampling);
        const auto down = static_cast<unsigned>(tags.verticalSubsampling);
        return ((std::uint64_t { widthPx } + across - 1) / across) * ((rows + down - 1) / down)
            * (across * down + 2);
    }

    /// libtiff takes a single strip of uncompressed rows for many small ones.
    std::uint32_t newRowsPerStrip(const TiffPageTags& tags)
    {
        constexpr std::uint64_t smallStripBytes = 8192;
        const std::uint64_t rowBytes = tags.planeRowBytes();
        std::uint64_t rows = tags.rowsPerStrip;
        if (tags.stripsInPlane() == 1)
            rows = std::clamp<std::uint64_t>(smallStripBytes / rowBytes, 1, rows);
        return outputRowsPerStrip(rowBytes, tags.heightPx, static_cast<std::uint32_t>(rows));
    }

    /// Uncompressed rows that lie in the file as they go into new strips.
    bool hasWholeRows(const PlainDirectory& read)
    {
        for (std::size_t i = 0; i < read.pieces.size(); ++i)
            if (read.pieces[i].bytes != plainPieceBytes(read.tags, i))
                return false;
        return read.tags.heightPx / newRowsPerStrip(read.tags) < mostNewStrips;
    }

    /// Several threads are to have something of a strip that is as large as a page.
    void divideStrips(PlainDirectory& read)
    {
        constexpr std::uint64_t most = std::uint64_t { 1024 } * 1024;
        std::vector<PlainDirectory::Piece> parts;
        for (const auto& [offset, bytes] : read.pieces)
            for (std::uint64_t done = 0; done < bytes; done += most)
                parts.push_back({ offset + done, std::min(most, bytes - done) });
        read.pieces = std::move(parts);
    }

    std::vector<std::uint32_t> byteCounts(const std::vector<PlainDirectory::Piece>& pieces)
    {
        std::vector<std::uint32_t> counts;
        counts.reserve(pieces.size());
        for (const PlainDirectory::Piece& piece : pieces)
            counts.push_back(static_cast<std::uint32_t>(piece.bytes));
        return counts;
    }

    /// Of an uncompressed page, whose rows lie one behind the other.
    std::vector<std::uint32_t> byteCounts(std::uint64_t all, std::uint64_t each)
    {
        std::vector<std::uint32_t> counts;
        for (std::uint64_t done = 0; done < all; done += each)
            counts.push_back(static_cast<std::uint32_t>(std::min(each, all - done)));
        return counts;
    }

    /// What else may be said of a page is for who reads it by libtiff.
    bool saysMore(const PageTreatment& treatment)
    {
        return treatment.convertsToSrgb || treatment.expectedDpi != 0;
    }

    /// As for those that libtiff copies: see SampleCopy.
    bool hasSoundPieces(const PlainDirectory& read, const OpenTiffFile& file)
    {
        if (read.pieceBytes > file.sizeBytes() || tilesAreOfOddSize(read.tags))
            return false;
        if (read.tags.compression == COMPRESSION_NONE)
            return !read.tags.isTiled && hasWholeRows(read);
        for (std::size_t i = 0; i < read.pieces.size(); ++i)
            if (read.pieces[i].bytes > mostIn16Bits
                && plainPieceBytes(read.tags, i) <= mostIn16Bits)
                return false;
        if (read.tags.compression != COMPRESSION_LZW || read.pieces.front().bytes < 2)
            return true;
        std::array<std::uint8_t, 2> start = {};
        file.readAt(read.pieces.front().offset, start);
        return start[0] != 0 || (start[1] & 1U) == 0; // else its codes have the old bit order
    }

    /// In 16 bits where libtiff trusts that no piece of several grows to more: compressed ones of
    /// less than a tenth of that.
    void addByteCounts(ClassicDirectory& directory, const CopiedPage& page)
    {
        const PlainDirectory& read = page.read;
        const std::vector<std::uint32_t>& counts = page.byteCounts;
        constexpr std::array trusted { COMPRESSION_LZW, COMPRESSION_ADOBE_DEFLATE,
                                       COMPRESSION_DEFLATE, COMPRESSION_JPEG };
        const bool isPlain = read.tags.compression == COMPRESSION_NONE;
        const bool isTrusted = std::ranges::find(trusted, read.tags.compression) != trusted.end()
            && plainPieceBytes(read.tags, 0) < mostIn16Bits / 10;
        const bool isSmall
            = counts.size() > 1 && (isPlain ? counts.front() <= mostIn16Bits : isTrusted);
        const unsigned tag = read.tags.isTiled ? TIFFTAG_TILEBYTECOUNTS : TIFFTAG_STRIPBYTECOUNTS;
        if (isSmall)
            directory.addShorts(tag, std::vector<int>(counts.begin(), counts.end()));
        else
            directory.addLongs(tag, counts);
    }

    void addPageNumber(ClassicDirectory& directory, const CopiedPage& page, const TiffPage& source,
                       PagePosition position)
    {
        const int pages = source.document().pageCount();
        std::optional<std::pair<int, int>> number;
        if (position.total > 1)
            number = { position.index, position.total };
        else if (page.keepsTexts && page.read.pageNumber)
            number = pages > 1 ? std::pair { source.index(), pages } : *page.read.pageNumber;
        if (number && number->second <= static_cast<int>(mostIn16Bits))
            directory.addShorts(TIFFTAG_PAGENUMBER, std::array { number->first, number->second });
    }

    /// In the order in which libtiff lays values out.
    ClassicDirectory directoryOf(const CopiedPage& page, const TiffPage& source,
                                 PagePosition position, std::uint64_t begin)
    {
        const PlainDirectory& read = page.read;
        const TiffPageTags& tags = read.tags;
        const auto samples = static_cast<std::size_t>(tags.samplesPerPixel);
        ClassicDirectory directory;
        directory.addNumber(TIFFTAG_IMAGEWIDTH, tags.widthPx);
        directory.addNumber(TIFFTAG_IMAGELENGTH, tags.heightPx);
        if (tags.isTiled) {
            directory.addNumber(TIFFTAG_TILEWIDTH, tags.tileWidthPx);
            directory.addNumber(TIFFTAG_TILELENGTH, tags.tileHeightPx);
        }
        if (read.hasResolution) {
            directory.addWholeFractions(
                TIFFTAG_XRESOLUTION, std::array { static_cast<std::uint32_t>(tags.resolution.x) });
            directory.addWholeFractions(
                TIFFTAG_YRESOLUTION, std::array { static_cast<std::uint32_t>(tags.resolution.y) });
        }
        directory.addLong(TIFFTAG_SUBFILETYPE,
                          position.total > 1 ? tags.subfileType | FILETYPE_PAGE : tags.subfileType);
        directory.addShorts(TIFFTAG_BITSPERSAMPLE, std::vector(samples, tags.bitsPerSample));
        directory.addShort(TIFFTAG_COMPRESSION, tags.compression);
        directory.addShort(TIFFTAG_PHOTOMETRIC, tags.photometric);
        if (page.keepsFillOrder)
            directory.addShort(TIFFTAG_FILLORDER, tags.fillOrder);
        directory.addShort(TIFFTAG_ORIENTATION, tags.orientation);
        directory.addShort(TIFFTAG_SAMPLESPERPIXEL, tags.samplesPerPixel);
        if (!tags.isTiled)
            directory.addNumber(TIFFTAG_ROWSPERSTRIP, page.rowsPerStrip);
        directory.addShort(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        if (read.resolutionUnit)
            directory.addShort(TIFFTAG_RESOLUTIONUNIT, *read.resolutionUnit);
        addPageNumber(directory, page, source, position);
        addByteCounts(directory, page);
        std::vector<std::uint32_t> offsets;
        for (const std::uint32_t bytes : page.byteCounts) {
            offsets.push_back(static_cast<std::uint32_t>(begin));
            begin += bytes;
        }
        directory.addLongs(tags.isTiled ? TIFFTAG_TILEOFFSETS : TIFFTAG_STRIPOFFSETS, offsets);
        if (read.hasSampleFormat)
            directory.addShorts(TIFFTAG_SAMPLEFORMAT, std::vector(samples, tags.sampleFormat));
        if (read.hasSubsampling)
            directory.addShorts(
                TIFFTAG_YCBCRSUBSAMPLING,
                std::array { tags.horizontalSubsampling, tags.verticalSubsampling });
        if (read.samplePositions)
            directory.addShort(TIFFTAG_YCBCRPOSITIONING, *read.samplePositions);
        if (!read.blackAndWhite.empty())
            directory.addWholeFractions(TIFFTAG_REFERENCEBLACKWHITE, read.blackAndWhite);
        if (!read.jpegTables.empty())
            directory.addBytes(TIFFTAG_JPEGTABLES, read.jpegTables);
        if (read.faxOptions)
            directory.addLong(tags.compression == COMPRESSION_CCITTFAX3 ? TIFFTAG_GROUP3OPTIONS
                                                                        : TIFFTAG_GROUP4OPTIONS,
                              *read.faxOptions);
        if (tags.predictor != PREDICTOR_NONE)
            directory.addShort(TIFFTAG_PREDICTOR, tags.predictor);
        for (const PlainDirectory::Text& text : read.texts)
            if (page.keepsTexts)
                directory.addText(text.tag,
                                  { reinterpret_cast<const std::uint8_t*>(text.bytes.data()),
                                    static_cast<std::size_t>(text.bytes.size()) });
        return directory;
    }

} // namespace

std::optional<CopiedPage> copiedPage(const PageSource& page, int compression)
try {
    const TiffPage* source = page.tiffPage();
    if (source == nullptr)
        return std::nullopt;
    const PageTreatment& treatment = source->treatment();
    if (saysMore(treatment))
        return std::nullopt;
    std::optional<PlainDirectory> read = plainDirectory(source->document(), source->index());
    if (!read || (!treatment.keepsCompression && read->tags.compression != compression)
        || becomesBilevel(read->tags, treatment)
        // JPEG data may have Exif and comments of their own.
        || (treatment.stripsMetadata && read->tags.compression == COMPRESSION_JPEG)
        || (source->document().isBigEndian() && read->tags.bitsPerSample > 8)
        || !hasSoundPieces(*read, source->document()))
        return std::nullopt;
    CopiedPage copied { .read = std::move(*read), .keepsTexts = !treatment.stripsMetadata };
    const TiffPageTags& tags = copied.read.tags;
    copied.rowsPerStrip = tags.rowsPerStrip;
    if (tags.compression == COMPRESSION_NONE) {
        copied.keepsFillOrder = false;
        copied.rowsPerStrip = newRowsPerStrip(tags);
        copied.byteCounts
            = byteCounts(copied.read.pieceBytes, tags.planeRowBytes() * copied.rowsPerStrip);
        divideStrips(copied.read);
    } else {
        copied.byteCounts = byteCounts(copied.read.pieces);
    }
    return copied;
} catch (const std::runtime_error&) {
    return std::nullopt;
}

std::optional<CopiedPage> recodedPage(const PageSource& page, NewStrips strips)
try {
    const TiffPage* source = page.tiffPage();
    if (source == nullptr || saysMore(source->treatment()) || source->treatment().keepsCompression
        || !source->change().isNone())
        return std::nullopt;
    std::optional<PlainDirectory> read = plainDirectory(source->document(), source->index());
    if (!read || read->tags.isTiled || read->tags.compression == COMPRESSION_JPEG)
        return std::nullopt;
    TiffPageTags& tags = read->tags;
    tags.compression = strips.compression;
    tags.predictor = strips.predictor;
    tags.rowsPerStrip = strips.rowsPerStrip;
    read->faxOptions.reset();
    read->pieceBytes = 0;
    for (const PlainDirectory::Piece& strip : strips.strips)
        read->pieceBytes += strip.bytes;
    std::vector<std::uint32_t> counts = byteCounts(strips.strips);
    read->pieces = std::move(strips.strips);
    return CopiedPage { .read = std::move(*read),
                        .keepsTexts = !source->treatment().stripsMetadata,
                        .keepsFillOrder = false,
                        .rowsPerStrip = strips.rowsPerStrip,
                        .byteCounts = std::move(counts) };
} catch (const std::runtime_error&) {
    return std::nullopt;
}

CopiedDirectory copiedDirectory(const CopiedPage& page, const TiffPage& source,
                                PagePosition position, std::uint64_t begin)
{
    ClassicDirectory directory = directoryOf(page, source, position, begin);
    CopiedDirectory laid;
    laid.offset = directoryBehind(page, begin);
    laid.bytes = directory.bytesAt(static_cast<std::uint32_t>(laid.offset));
    laid.linkAt = laid.offset + directory.linkAt();
    if (const std::optional<std::size_t> at = directory.valueAt(TIFFTAG_PAGENUMBER))
        laid.pageNumberAt = laid.offset + *at;
    return laid;
}

std::uint64_t directoryBehind(const CopiedPage& page, std::uint64_t begin)
{
    return (begin + page.read.pieceBytes + 1) / 2 * 2;
}

std::span<std::uint8_t> copyBuffer()
{
    constexpr std::size_t bufferBytes = std::size_t { 256 } * 1024;
    thread_local std::vector<std::uint8_t> buffer(bufferBytes);
    return buffer;
}

std::size_t readPieces(std::span<const PlainDirectory::Piece> pieces, const OpenTiffFile& file,
                       std::span<std::uint8_t> buffer,
                       const std::function<void(std::span<const std::uint8_t> bytes)>& put)
{
    std::size_t held = 0;
    for (const PlainDirectory::Piece& piece : pieces)
        for (std::uint64_t done = 0; done < piece.bytes;) {
            StopScope::leavePageIfStopped();
            if (held == buffer.size()) {
                put(buffer);
                held = 0;
            }
            const auto part = buffer.subspan(
                held, std::min<std::uint64_t>(buffer.size() - held, piece.bytes - done));
            file.readAt(piece.offset + done, part);
            done += part.size();
            held += part.size();
        }
    return held;
}

} // namespace pagestack
