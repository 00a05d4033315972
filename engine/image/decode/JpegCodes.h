#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace pagestack {

/// A table as a stream defines it (ITU-T T.81, section B.2.4.2).
struct JpegHuffmanTable
{
    std::span<const std::uint8_t, 17> counts; ///< of codes, by their length
    std::span<const std::uint8_t, 256> values; ///< what they stand for, in their order
};

/// The Huffman codes of ITU-T T.81, section K.3, which most JPEG data are coded by: those for
/// luminance (0) or for colour (1). Immutable, for any thread.
class JpegCodes
{
public:
    /// Bits that a look at the tables below takes.
    static constexpr int windowBits = 12;
    /// A code with the bits of the value that follows it.
    static constexpr int mostSymbolBits = 26;
    /// Of an MCU, with its up to 10 blocks of 64 of these.
    static constexpr std::size_t mostUnitBytes = std::size_t { 640 } * mostSymbolBits / 8;

    /// `number` is 0 or 1.
    static const JpegCodes& standard(int number);

    /// 0 or 1 where both tables are standard ones; -1 where they are others.
    static int numberOf(const JpegHuffmanTable& dc, const JpegHuffmanTable& ac);

    struct Code
    {
        unsigned bits = 0;
        int length = 0;
    };
    /// For a difference of DC coefficients of `size` bits, 0 to 11.
    Code ofDifference(int size) const { return m_differences[static_cast<std::size_t>(size)]; }

    /// What the code at the begin of a window stands for; length 0: none is that short.
    struct Difference
    {
        std::uint8_t length = 0;
        std::uint8_t size = 0; ///< bits of the value that follows
    };
    Difference difference(unsigned window) const { return m_dc[window]; }

    /// One or more AC coefficients that follow each other: the bits that they take, how many
    /// coefficients they go ahead in their block, zeros included, and whether the block ends.
    struct Steps
    {
        std::uint8_t bits = 0; ///< 0: no code is that short
        std::uint8_t coefficients = 0;
        bool isEnd = false;
    };
    /// As many as the window tells of.
    Steps steps(unsigned window) const { return m_steps[window]; }
    /// The first of them.
    Steps step(unsigned window) const { return m_step[window]; }
    /// That of a longer code, by 16 bits.
    Steps longStep(unsigned bits) const;

private:
    JpegCodes(const JpegHuffmanTable& dc, const JpegHuffmanTable& ac);

    struct Symbol
    {
        Code code;
        int value = 0;
    };
    static std::vector<Symbol> symbolsOf(const JpegHuffmanTable& table);
    /// That which begins `bits`, of which there are `count`; null: none that is whole.
    static const Symbol* find(const std::vector<Symbol>& symbols, unsigned bits, int count);
    static Steps stepOf(const Symbol& symbol);

    static constexpr std::size_t windows = std::size_t { 1 } << windowBits;
    std::array<Code, 12> m_differences {};
    std::array<Difference, windows> m_dc {};
    std::array<Steps, windows> m_steps {};
    std::array<Steps, windows> m_step {};
    std::vector<Symbol> m_longCodes;
};

} // namespace pagestack
