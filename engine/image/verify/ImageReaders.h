#pragma once

#include "engine/files/ByteFile.h"
#include "engine/image/verify/ImageProof.h"

#include <QByteArray>

namespace pagestack {

// The readers decode a whole file that this program wrote, row by row, and tell what they got.
// They share nothing with the encoders. What the format does not need for its pixels is left out.
// They throw std::runtime_error, with what is wrong with the file. Any thread.

/// A file that is read for what it shows, not for a proof. The file outlives it.
struct OpenImage
{
    /// From the top, in the layout of the format; to ask for more than the last one is to ask
    /// whether the file ends as it should. Bands throw as the functions do.
    std::unique_ptr<RowSource> rows;
    QByteArray iccProfile {}; ///< empty: none
};

/// As viewers show it: with smooth colours.
OpenImage openJpeg(ByteFile& file);
OpenImage openPng(ByteFile& file);
OpenImage openGif(ByteFile& file);
OpenImage openBmp(ByteFile& file);

/// By libjpeg, of which any warning is an error, too.
ImageProof readJpeg(ByteFile& file);

/// The same by the coefficients, as a BlockProofMaker takes them.
ImageProof readJpegBlocks(ByteFile& file);

/// By libpng, with the checksums of all chunks.
ImageProof readPng(ByteFile& file);

/// By giflib.
ImageProof readGif(ByteFile& file);

/// Uncompressed BMP of 1, 8 or 24 bits a pixel, bottom row first.
ImageProof readBmp(ByteFile& file);

/// Hands out a file from its beginning to its end.
class FileSequence
{
public:
    explicit FileSequence(ByteFile& file)
        : m_file(file)
    {
    }

    /// Fills `bytes` as far as the file goes; returns how many there were.
    std::size_t read(std::span<std::uint8_t> bytes);

    /// Throws std::runtime_error unless all was read, but for `unused` bytes of the last read.
    void checkEnd(std::size_t unused = 0) const;

private:
    ByteFile& m_file;
    std::uint64_t m_offset = 0; ///< of what is not in the buffer yet
    std::vector<std::uint8_t> m_buffer;
    std::size_t m_used = 0; ///< of the buffer
};

} // namespace pagestack
