#include "engine/image/TiffPieces.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/image/TiffPageSink.h"
#include "engine/image/TiffPageWriter.h"

#include <tiffio.h>

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace pagestack {

namespace {

    constexpr std::size_t headerBytes = 16; // of a BigTIFF file: the pieces have no limit here
    constexpr std::uint64_t partBytes = std::uint64_t { 4 } * 1024 * 1024;

    std::vector<TiffPieces::Piece> writtenPieces(TIFF* handle)
    {
        std::vector<TiffPieces::Piece> pieces;
        const std::uint32_t count
            = TIFFIsTiled(handle) != 0 ? TIFFNumberOfTiles(handle) : TIFFNumberOfStrips(handle);
        for (std::uint32_t i = 0; i < count; ++i)
            pieces.push_back(
                { i, TIFFGetStrileOffset(handle, i), TIFFGetStrileByteCount(handle, i) });
        std::sort(pieces.begin(), pieces.end(),
                  [](const auto& a, const auto& b) { return a.offset < b.offset; });
        return pieces;
    }

} // namespace

TiffPieces encodeTiffPieces(const TiffPage& page, int compression)
{
    TiffPieces encoded;
    if (!isRecoded(page, compression))
        return encoded;
    auto bytes = std::make_unique<ByteSpool>();
    bytes->writeAt(0, std::vector<std::uint8_t>(headerBytes));
    TiffPageSink sink {
        *bytes, std::string(headerBytes, '\0'), std::numeric_limits<std::uint64_t>::max(), false, {}
    };
    // A quota of no lines: what there is to be said of the tags is said where the file is written.
    TiffMessages messages(QStringLiteral("page"), std::make_shared<LogQuota>(0, QString()));
    const TiffHandle handle = openTiffPageForWriting(sink, true, messages);
    writeTiffPage(handle.get(), page, compression, {});
    if (TIFFFlushData(handle.get()) == 0 || messages.failed())
        messages.fail("the page cannot be encoded");
    encoded.pieces = writtenPieces(handle.get());
    encoded.bytes = std::move(bytes);
    return encoded;
}

void putTiffPieces(tiff* handle, const TiffPieces& pieces)
{
    const auto write = TIFFIsTiled(handle) != 0 ? TIFFWriteRawTile : TIFFWriteRawStrip;
    std::vector<std::uint8_t> part;
    for (const TiffPieces::Piece& piece : pieces.pieces) {
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
