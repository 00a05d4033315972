#include "engine/image/tiffwriter/EncodedPieces.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/image/tiff/TiffLimits.h"
#include "engine/image/tiffwriter/TiffPageStream.h"
#include "engine/image/tiffwriter/TiffPageWriter.h"

#include <tiffio.h>

#include <algorithm>
#include <stdexcept>

namespace pagestack {

namespace {

    constexpr std::uint64_t partBytes = std::uint64_t { 256 } * 1024;

    std::vector<EncodedPieces::Piece> writtenPieces(TIFF* handle)
    {
        std::vector<EncodedPieces::Piece> pieces;
        const std::uint32_t count = piecesOf(handle);
        for (std::uint32_t i = 0; i < count; ++i)
            pieces.push_back(
                { i, TIFFGetStrileOffset(handle, i), TIFFGetStrileByteCount(handle, i) });
        std::ranges::sort(pieces, {}, &EncodedPieces::Piece::offset);
        return pieces;
    }

    /// The page as it was written to `handle`, if its compression has no more to say than that.
    std::optional<CopiedPage> recodedPageOf(const PageSource& page, TIFF* handle,
                                            const std::vector<EncodedPieces::Piece>& pieces)
    {
        NewStrips written { .predictor = PREDICTOR_NONE };
        std::uint16_t number = 0;
        if (TIFFIsTiled(handle) != 0 || TIFFGetField(handle, TIFFTAG_COMPRESSION, &number) != 1
            || TIFFGetField(handle, TIFFTAG_ROWSPERSTRIP, &written.rowsPerStrip) != 1)
            return std::nullopt;
        written.compression = number;
        if (written.compression == COMPRESSION_LZW
            && TIFFGetField(handle, TIFFTAG_PREDICTOR, &number) == 1)
            written.predictor = number;
        else if (written.compression != COMPRESSION_NONE
                 && written.compression != COMPRESSION_PACKBITS)
            return std::nullopt;
        for (const EncodedPieces::Piece& piece : pieces) {
            if (piece.index != written.strips.size())
                return std::nullopt;
            written.strips.push_back({ piece.offset, piece.size });
        }
        return recodedPage(page, std::move(written));
    }

} // namespace

EncodedPieces encodePieces(const PageSource& page, int compression)
{
    EncodedPieces encoded;
    encoded.copy = copiedPage(page, compression);
    if (encoded.copy || !isRecoded(page, compression))
        return encoded;
    const TiffFormat format { .isBigTiff = true }; // the pieces have no limit here
    auto bytes = std::make_shared<ByteSpool>();
    bytes->writeAt(0, std::vector<std::uint8_t>(format.headerBytes()));
    TiffPageStream sink(*bytes, format);
    page.tiffPage()->messages().takeDiagnostics(); // the tags are read once more for the file
    TiffMessages messages(QStringLiteral("page"));
    const TiffHandle handle = openTiff(sink, "w8", messages);
    writeTiffPage(handle.get(), page, compression, {}, {});
    if (TIFFFlushData(handle.get()) == 0 || messages.failed())
        messages.fail("the page cannot be encoded");
    encoded.pieces = writtenPieces(handle.get());
    encoded.recoded = recodedPageOf(page, handle.get(), encoded.pieces);
    encoded.bytes = std::move(bytes);
    encoded.diagnostics = page.tiffPage()->messages().takeDiagnostics();
    return encoded;
}

void putPiece(tiff* handle, const EncodedPieces::Piece& piece, const ReadBytes& read)
{
    const auto write = TIFFIsTiled(handle) != 0 ? TIFFWriteRawTile : TIFFWriteRawStrip;
    // Kept, for the next of many small pieces: memory that the system has to clear costs more than
    // what is done with it here.
    thread_local std::vector<std::uint8_t> buffer;
    if (const auto most = std::min(partBytes, piece.size); buffer.size() < most)
        buffer.resize(most);
    for (std::uint64_t done = 0; done < piece.size;) {
        const auto part = std::span(buffer).first(std::min(partBytes, piece.size - done));
        read(piece.offset + done, part);
        const auto size = static_cast<tmsize_t>(part.size());
        // A further part of the piece that was written last is appended to it.
        if (write(handle, piece.index, part.data(), size) != size)
            throw std::runtime_error("the page cannot be encoded");
        done += part.size();
    }
}

} // namespace pagestack
