#pragma once

#include "engine/image/decode/JpegCodes.h"
#include "engine/image/formats/JpegBlocks.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace pagestack {

class JpegCodeWriter;
class JpegStream;

/// Takes the codes of a JPEG stream over, a row of MCUs at a time, without making coefficients of
/// them. It looks at every code: whatever is not as an encoder of baseline data writes it, be it
/// damage or merely unusual, is an UnfitCodes. One thread at a time.
class JpegCodeWalk
{
public:
    /// `stream` is borrowed; `bufferBytes` of its codes are held, and more than those of an MCU.
    JpegCodeWalk(JpegStream& stream, std::size_t bufferBytes);

    /// Begins after JpegStream::beginCodes, which has found `frame`, whose components are coded by
    /// the standard's codes.
    void begin(const JpegFrame& frame);

    /// Appends the first `units` MCUs of the next row to what `to` has. 0: none, looks at them
    /// only.
    void next(int units, JpegCodeWriter& to);

    /// Looks at the rows that are left, and that the stream ends behind them.
    void finish();

private:
    class Bits;
    struct Block
    {
        const JpegCodes* codes = nullptr;
        std::size_t component = 0;
        bool isFirst = false; ///< of its component in an MCU
    };

    template <bool joins>
    void walkUnit(JpegCodeWriter* to);
    void prepareUnit(JpegCodeWriter* to);
    void read();
    void takePlain(std::span<const std::uint8_t> bytes);

    JpegStream& m_stream;
    std::vector<Block> m_blocks; ///< of an MCU
    int m_unitsAcross = 0;
    int m_rowsLeft = 0;
    std::array<int, mostJpegComponents> m_corners {}; ///< the last DC coefficients

    std::vector<std::uint8_t> m_bytes; ///< codes without the zeros behind bytes FF
    std::size_t m_filled = 0;
    std::uint64_t m_at = 0; ///< the bit of m_bytes that comes next
    std::uint64_t m_written = 0; ///< bits before this one were handed on
    bool m_isEscaped = false; ///< the last byte that was read was FF
    bool m_isAtEnd = false; ///< its marker was read
};

} // namespace pagestack
