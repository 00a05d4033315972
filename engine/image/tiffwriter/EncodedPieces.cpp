#include "engine/image/tiffwriter/EncodedPieces.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/image/tiff/TiffLimits.h"
#include "engine/image/tiffwriter/TiffPageStream.h"
#include "engine/image/tiffwriter/TiffPageWriter.h"

#include <tiffio.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace pagestack {

namespace {

    constexpr std::size_t headerBytes = 16; // of a BigTIFF file: the pieces have no limit here
    constexpr std::uint64_t partBytes = std::uint64_t { 4 } * 1024 * 1024;

    std::vector<EncodedPieces::Piece> writtenPieces(TIFF* handle)
    {
        std::vector<EncodedPieces::Piece> pieces;
        const std::uint32_t count = piecesOf(handle);
        for (std::uint32_t i = 0; i < count; ++i)
            pieces.push_back(
                { i, TIFFGetStrileOffset(handle, i), TIFFGetStrileByteCount(handle, i) });
        std::sort(pieces.begin(), pieces.end(),
                  [](const auto& a, const auto& b) { return a.offset < b.offset; });
        return pieces;
    }

} // namespace

EncodedPieces encodePieces(const PageSource& page, int compression)
{
    EncodedPieces encoded;
    if (!isRecoded(page, compression))
        return encoded;
    auto bytes = std::make_unique<ByteSpool>();
    bytes->writeAt(0, std::vector<std::uint8_t>(headerBytes));
    TiffPageStream sink {
        *bytes, std::string(headerBytes, '\0'), std::numeric_limits<std::uint64_t>::max(), false, {}
    };
    page.tiffPage()->messages().takeDiagnostics(); // the tags are read once more for the file
    TiffMessages messages(QStringLiteral("page"));
    const TiffHandle handle = openTiffPageForWriting(sink, true, messages);
    writeTiffPage(handle.get(), page, compression, {}, {});
    if (TIFFFlushData(handle.get()) == 0 || messages.failed())
        messages.fail("the page cannot be encoded");
    encoded.pieces = writtenPieces(handle.get());
    encoded.bytes = std::move(bytes);
    encoded.diagnostics = page.tiffPage()->messages().takeDiagnostics();
    return encoded;
}

void putPieces(tiff* handle, const EncodedPieces& pieces)
{
    const auto write = TIFFIsTiled(handle) != 0 ? TIFFWriteRawTile : TIFFWriteRawStrip;
    std::vector<std::uint8_t> part;
    for (const EncodedPieces::Piece& piece : pieces.pieces) {
        for (std::uint64_t done = 0; done < piece.size; done += part.size()) {
            part.resize(std::min(partBytes, piece.size - done));
            pieces.bytes->readAt(piece.offset + done, part);
            const auto size = static_cast<tmsize_t>(part.size());
            // A further part of the piece that was written last is appended to it.
            if (write(handle, piece.index, part.data(), size) != size)
                throw std::runtime_error("the page cannot be encoded");
        }
    }
}

} // namespace pagestack
