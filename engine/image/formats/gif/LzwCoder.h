#pragma once

#include "engine/files/StagedFile.h"
#include "engine/image/pixels/PixelLayout.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

namespace pagestack {

/// The pixels of one GIF image on their way to the file (GIF89a, 22 and appendix F), as codes of
/// strings of pixels, each the longest that the table of strings holds. A full table starts anew.
///
/// A derived class keeps the table, in a form that suits its pixels. The file must outlive the
/// coder. One thread at a time.
class LzwCoder
{
public:
    virtual ~LzwCoder() = default;

    /// Codes the next row. Throws std::runtime_error when the file takes no more.
    virtual void putRow(const std::uint8_t* row) = 0;

    /// Writes what is left, after at least one row, and the end of the file. Throws
    /// std::runtime_error like `putRow`.
    void finish();

protected:
    static constexpr int codeLimit = 4096; ///< codes have up to 12 bits

    /// Starts the data of an image whose indexes are below 2^`indexBits`, 1 to 8.
    LzwCoder(StagedFile& file, int widthPx, int indexBits);

    int firstFreeCode() const { return m_clearCode + 2; }

    /// Writes `m_codes` and the code that empties the table; `m_nextCode` is the first free again.
    void startTable();

    const int m_widthPx;
    /// The codes found since the table was empty, each at the number of the code that was free when
    /// it was found: that number tells its width.
    std::array<std::uint16_t, codeLimit> m_codes {};
    int m_nextCode = 0; ///< the lowest that is free; `codeLimit`: the table is full
    int m_current = -1; ///< the string at the end of the pixels so far; -1: there is no pixel yet

private:
    static constexpr std::size_t blockBytes = 255; ///< of a sub-block

    void putCodes();
    void putBits(unsigned bits, int count);
    void storeByte();
    void writeBlocks(std::size_t bytes);

    StagedFile& m_file;
    int m_clearCode;
    std::uint64_t m_bits = 0; ///< the first one lowest
    int m_bitCount = 0;
    /// Not yet in sub-blocks: less than one of an earlier table and those of a table.
    std::array<std::uint8_t, blockBytes + codeLimit * 12 / 8 + 8> m_bytes {};
    std::size_t m_byteCount = 0;
};

/// For a file whose header and palette startGif has written, as the next one: rows of one bit a
/// pixel, packed from the most significant bit on.
std::unique_ptr<LzwCoder> bilevelLzw(StagedFile& file, int widthPx);

/// For rows of one byte a pixel, each an index below 2^`indexBits`.
std::unique_ptr<LzwCoder> indexLzw(StagedFile& file, int widthPx, int indexBits);

/// Begins a GIF89a file of one image and returns the coder of its rows, which are packed bits if
/// `isBilevel`, else a byte a pixel, and stay within the palette. The sides are 1 to 65535; the
/// palette has 1 to 256 colours, 2 at most for packed bits. Throws std::runtime_error.
std::unique_ptr<LzwCoder> startGif(StagedFile& file, int widthPx, int heightPx,
                                   const std::vector<RgbColor>& palette,
                                   std::optional<int> transparentIndex, bool isBilevel);

} // namespace pagestack
