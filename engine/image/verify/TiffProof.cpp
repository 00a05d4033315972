#include "engine/image/verify/TiffProof.h"

#include "engine/files/StagedFile.h"
#include "engine/image/decode/StoredRows.h"
#include "engine/image/decode/StripDecoder.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/pixels/SampleMath.h"
#include "engine/image/tiff/TiffLimits.h"
#include "engine/image/tiffwriter/TiffPageWriter.h"

#include <tiffio.h>

#include <algorithm>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    using Way = TiffPageProof::Way;

    /// JPEG strips are decoded to RGB.
    bool isDecodedToRgb(const TiffPageTags& tags)
    {
        return tags.compression == COMPRESSION_JPEG && tags.photometric == PHOTOMETRIC_YCBCR
            && !tags.planesAreSeparate;
    }

    void addColorMap(PixelHash& hash, tiff* handle, const TiffPageTags& tags)
    {
        std::uint16_t* red = nullptr;
        std::uint16_t* green = nullptr;
        std::uint16_t* blue = nullptr;
        if (tags.photometric != PHOTOMETRIC_PALETTE || tags.bitsPerSample > 16
            || TIFFGetField(handle, TIFFTAG_COLORMAP, &red, &green, &blue) != 1)
            return;
        for (const std::uint16_t* channel : { red, green, blue })
            hash.add({ reinterpret_cast<const std::uint8_t*>(channel),
                       (std::size_t { 1 } << tags.bitsPerSample) * sizeof *channel });
    }

    PixelDigest meaningOf(const TiffPage& page)
    {
        const TiffPageTags& tags = page.tags();
        PixelHash hash;
        for (const int number :
             { static_cast<int>(tags.widthPx), static_cast<int>(tags.heightPx), tags.bitsPerSample,
               tags.samplesPerPixel, tags.sampleFormat, tags.orientation,
               isDecodedToRgb(tags) ? int { PHOTOMETRIC_RGB } : tags.photometric,
               static_cast<int>(tags.planesAreSeparate) })
            hash.addNumber(static_cast<std::uint64_t>(number));
        for (const std::uint16_t kind : tags.extraSamples)
            hash.addNumber(kind);
        addColorMap(hash, page.load(), tags);
        return hash.digest();
    }

    /// Planes that lie apart are compared each for itself.
    PixelDigest rowsOf(const TiffPage& page)
    {
        const TiffPageTags& tags = page.tags();
        StoredRows rows(page);
        std::vector<PixelHash> planes(static_cast<std::size_t>(tags.planes()));
        const std::uint64_t rowBits = tags.bitsOf(tags.widthPx);
        for (StoredBand band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
            for (std::size_t plane = 0; plane < planes.size(); ++plane)
                for (int i = 0; i < band.rows; ++i)
                    planes[plane].addRow(band.row(static_cast<int>(plane), i), rowBits);
        PixelHash all;
        for (const PixelHash& plane : planes) {
            all.addNumber(plane.digest().crc);
            all.addNumber(plane.digest().adler);
            all.addNumber(plane.digest().bytes);
        }
        return all.digest();
    }

    PixelDigest piecesIn(const TiffPage& page)
    {
        tiff* const handle = page.restart();
        StripDecoder decoder(page, handle);
        PixelHash hash;
        std::vector<std::uint8_t> piece;
        const std::uint32_t count = piecesOf(handle);
        for (std::uint32_t i = 0; i < count; ++i) {
            piece.assign(plainBytes(handle, page.tags(), i), 0);
            decoder.decode(i, piece);
            hash.add(piece);
        }
        return hash.digest();
    }

    void addShown(TiffPageProof& proof, const PageSource& page)
    {
        const std::unique_ptr<RowSource> rows = page.rows();
        const PixelLayout& layout = rows->layout();
        PixelHash meaning;
        for (const int number : { rows->widthPx(), rows->heightPx(), layout.bitsPerSample,
                                  static_cast<int>(layout.model), static_cast<int>(layout.alpha),
                                  page.properties().orientation })
            meaning.addNumber(static_cast<std::uint64_t>(number));
        for (const RgbColor& color : layout.palette)
            meaning.add(color);
        PixelHash samples;
        const auto rowBits = static_cast<std::uint64_t>(rows->widthPx())
            * static_cast<unsigned>(layout.channels() * layout.bitsPerSample);
        for (Band band = rows->nextBand(); band.rows > 0; band = rows->nextBand())
            for (int i = 0; i < band.rows; ++i)
                samples.addRow(band.row(i), rowBits);
        proof.meaning = meaning.digest();
        proof.samples = samples.digest();
    }

    TiffPageProof proofBy(Way way, const TiffPage& page)
    {
        TiffPageProof proof { .way = way };
        if (way == Way::Shown) {
            addShown(proof, page);
            return proof;
        }
        page.checkSize();
        proof.meaning = meaningOf(page);
        proof.samples = way == Way::Pieces ? piecesIn(page) : rowsOf(page);
        return proof;
    }

    /// A page of the same file with a reader of its own.
    TiffPage apart(const TiffPage& page)
    {
        auto reader = std::make_shared<TiffReader>(page.reader().sharedDocument());
        reader->leaveChainUnsaid();
        return TiffPage(std::move(reader), page.index(), page.treatment());
    }

    bool haveSameCoding(const TiffPage& one, const TiffPage& other)
    {
        const TiffPageTags& a = one.tags();
        const TiffPageTags& b = other.tags();
        const auto options = [](const TiffPage& page, ttag_t tag) {
            std::uint32_t value = 0;
            TIFFGetField(page.load(), tag, &value);
            return value;
        };
        const auto jpegTables = [](const TiffPage& page) {
            std::uint32_t size = 0;
            const char* bytes = nullptr;
            return page.tags().compression == COMPRESSION_JPEG
                    && TIFFGetField(page.load(), TIFFTAG_JPEGTABLES, &size, &bytes) == 1
                ? std::string(bytes, size)
                : std::string();
        };
        const bool isSwapped = one.document().isBigEndian() != other.document().isBigEndian()
            && (hasByteOrder(a.bitsPerSample) || a.bitsPerSample > 8);
        return !isSwapped && a.compression == b.compression && a.predictor == b.predictor
            && a.fillOrder == b.fillOrder && a.isTiled == b.isTiled
            && a.rowsPerStrip == b.rowsPerStrip && a.tileWidthPx == b.tileWidthPx
            && a.tileHeightPx == b.tileHeightPx && jpegTables(one) == jpegTables(other)
            && options(one, TIFFTAG_GROUP3OPTIONS) == options(other, TIFFTAG_GROUP3OPTIONS)
            && options(one, TIFFTAG_GROUP4OPTIONS) == options(other, TIFFTAG_GROUP4OPTIONS);
    }

    bool isSameStretch(const OpenTiffFile& one, std::uint64_t at, const OpenTiffFile& other,
                       std::uint64_t otherAt, std::uint64_t size)
    {
        constexpr std::uint64_t most = std::uint64_t { 256 } * 1024;
        std::vector<std::uint8_t> bytes;
        std::vector<std::uint8_t> otherBytes;
        for (std::uint64_t done = 0; done < size; done += bytes.size()) {
            bytes.resize(std::min(most, size - done));
            otherBytes.resize(bytes.size());
            one.readAt(at + done, bytes);
            other.readAt(otherAt + done, otherBytes);
            if (bytes != otherBytes)
                return false;
        }
        return true;
    }

    /// Whether the strips or tiles of the pages are the same, byte for byte, and encoded alike.
    bool isCopy(const TiffPage& one, const TiffPage& other)
    {
        tiff* const handle = one.load();
        tiff* const otherHandle = other.load();
        const std::uint32_t count = piecesOf(handle);
        if (!haveSameCoding(one, other) || piecesOf(otherHandle) != count)
            return false;
        for (std::uint32_t i = 0; i < count; ++i) {
            const std::uint64_t size = TIFFGetStrileByteCount(handle, i);
            if (size == 0 || size != TIFFGetStrileByteCount(otherHandle, i)
                || !isSameStretch(one.document(), TIFFGetStrileOffset(handle, i), other.document(),
                                  TIFFGetStrileOffset(otherHandle, i), size))
                return false;
        }
        return true;
    }

    void checkPage(const TiffPage& written, const PageSource& source, const TiffPageProof& proof)
    {
        if (proof.way == Way::Rows && source.tiffPage() != nullptr
            && meaningOf(written) == proof.meaning && isCopy(apart(*source.tiffPage()), written))
            return;
        if (proofBy(proof.way, written) != proof)
            throw std::runtime_error("its pixels are not those of the page");
    }

} // namespace

TiffPageProof proofOf(const PageSource& page)
{
    if (const TiffPage* known = page.tiffPage()) {
        const TiffPage own = apart(*known);
        const bool isBlocks = keepsSamples(own) && own.tags().isSubsampled();
        return proofBy(isBlocks ? Way::Pieces : keepsSamples(own) ? Way::Rows : Way::Shown, own);
    }
    TiffPageProof proof { .way = Way::Shown };
    addShown(proof, page);
    return proof;
}

void TiffProof::add(std::shared_ptr<const PageSource> page, const TiffPageProof& proof)
{
    m_pages.push_back({ std::move(page), proof });
}

void TiffProof::check(StagedFile& file) const
{
    const auto document = std::make_shared<const OpenTiffFile>(u"the file"_s, file);
    if (!document->chainFault().isEmpty())
        throw std::runtime_error(document->chainFault().toStdString());
    const auto pages = static_cast<std::size_t>(document->pageCount());
    if (pages != m_pages.size())
        throw std::runtime_error("it has " + std::to_string(pages) + " pages in place of "
                                 + std::to_string(m_pages.size()));
    const auto reader = std::make_shared<TiffReader>(document);
    for (std::size_t i = 0; i < pages; ++i) {
        try {
            checkPage(TiffPage(reader, static_cast<int>(i)), *m_pages[i].source, m_pages[i].proof);
        } catch (const std::runtime_error& error) {
            if (pages == 1)
                throw;
            throw std::runtime_error("page " + std::to_string(i + 1) + ": " + error.what());
        }
    }
}

} // namespace pagestack
