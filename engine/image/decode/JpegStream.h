#pragma once

#include "engine/image/formats/JpegBlocks.h"
#include "engine/image/tiff/TiffDirectory.h"

#include <memory>
#include <optional>
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

    /// After `begin`: has `endOfCodes` take the place of `finish`.
    void prepareEndOfCodes();

    /// Puts the next row of MCUs into `to`, which has no coefficients there yet, from MCU
    /// `firstUnit` on. `to` is to be kept until the stream is finished.
    void next(JpegUnitRow& to, int firstUnit);

    /// Reads to the end of the image.
    void finish();

    /// After the last row: where its coded data lie, if all of them up to the end of the image are
    /// codes of its MCUs.
    std::optional<FileRange> endOfCodes();

    /// MCUs between its restart markers; 0: there are none.
    unsigned restartInterval() const;
    /// Whether the components are coded in their order.
    bool isInOrder() const;

private:
    class Decoder;
    std::unique_ptr<Decoder> m_decoder;
};

} // namespace pagestack
