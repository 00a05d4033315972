#pragma once

#include "engine/image/formats/gif/LzwCoder.h"

#include <vector>

namespace pagestack {

/// Rows of one bit a pixel, packed from the most significant bit on. Strings are not looked up
/// pixel by pixel but four pixels at once, and whole runs of one colour in strides of up to 1024.
class BilevelLzw : public LzwCoder
{
public:
    BilevelLzw(StagedFile& file, int widthPx);

    void putRow(const std::uint8_t* row) override;

private:
    static constexpr int mostStep = 4; ///< pixels of the longest step
    static constexpr int strides = 4; ///< of 16, 64, 256 and 1024 pixels
    static constexpr std::uint16_t noString = 0xFFFF;

    /// The strings that are longer by 1 to 4 pixels: the one that is longer by the n pixels p is
    /// number 2^n + p; 0: it is not in the table.
    using Steps = std::array<std::uint16_t, 2 << mostStep>;

    struct String
    {
        /// By stride and colour: the string that is longer by so many pixels of this colour; 0: it
        /// is not in the table.
        std::array<std::array<std::uint16_t, 2>, strides> further;
        /// The string without its last 4, 16, ... pixels, or `noString`. Beyond the first it is
        /// known only when these are of one colour.
        std::array<std::uint16_t, strides + 1> shortened;
        std::uint16_t parent; ///< without its last pixel
        std::uint16_t runLength; ///< pixels at its end that are of one colour
        std::uint8_t lastPixel;
    };

    std::uint64_t pixelsFrom(int x) const;
    int runEndFrom(int x) const;
    int takeStrides(int runPx, unsigned color);
    int takeStep(std::uint64_t pixels, int mostPx);
    void endString(unsigned pixel);
    void startStrings();
    void addString(unsigned pixel);
    void linkSteps(std::uint16_t code);
    void linkStrides(std::uint16_t code);

    int m_widthPx;
    std::vector<std::uint8_t> m_row; ///< the row in hand and a margin, for reads of 8 bytes
    std::vector<Steps> m_steps; ///< by code, as are the strings
    std::vector<String> m_strings;
};

} // namespace pagestack
