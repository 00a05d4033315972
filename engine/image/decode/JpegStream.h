#pragma once

#include "engine/image/formats/JpegBlocks.h"
#include "engine/image/tiff/TiffDirectory.h"

#include <memory>
#include <span>

namespace pagestack {

class OpenTiffFile;

/// Reads the coefficients of JPEG streams in a file, one stream after the other, a row of MCUs at a
/// time. Any doubt about a stream, each warning of the decoder among them, is an UnfitBlocks. One
/// thread at a time.
class JpegStream
{
public:
    /// The tables that streams without tables of their own are coded with are those of the stream
    /// in `tables` (tag JPEGTables; may be empty). Both are borrowed. `bufferBytes` are read at a
    /// time.
    JpegStream(const OpenTiffFile& file, std::span<const std::uint8_t> tables,
               std::size_t bufferBytes);
    ~JpegStream();
    JpegStream(const JpegStream&) = delete;
    JpegStream& operator=(const JpegStream&) = delete;

    /// Begins the stream in `range`. Returns what it is, as its components say: one is gray, three
    /// are YCbCr. Streams of several scans are refused.
    JpegFrame begin(const FileRange& range);

    /// Puts the next row of MCUs into `to`, which has no coefficients there yet, from MCU
    /// `firstUnit` on. `to` is to be kept until the stream is finished.
    void next(JpegUnitRow& to, int firstUnit);

    /// Reads to the end of the image.
    void finish();

    // The codes instead of the coefficients.

    /// As `begin`, for `takeBytes`. Throws UnfitCodes where codes are not just those of all MCUs
    /// in their order: with restart markers, for one.
    JpegFrame beginCodes(const FileRange& range);

    /// The next bytes of the codes and of what follows them, up to `most` (not 0), valid until the
    /// next call; none at the end of the range.
    std::span<const std::uint8_t> takeBytes(std::size_t most);

private:
    class Decoder;
    std::unique_ptr<Decoder> m_decoder;
};

} // namespace pagestack
