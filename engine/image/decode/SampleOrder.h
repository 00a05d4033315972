#pragma once

#include <cstdint>
#include <span>

namespace pagestack {

struct TiffPageTags;

/// Brings decoded rows of a strip or tile to plain samples in the machine's byte order: undoes the
/// predictor (TIFF 6.0, section 14: horizontal differencing of samples of 8, 16, 32 and 64 bits;
/// Adobe's Technical Note 3 for Photoshop TIFF: floating point of 16 to 64 bits) and turns bytes
/// round where the file has the other order. Any thread.
class SampleOrder
{
public:
    /// Whether the predictor suits the samples.
    static bool knows(const TiffPageTags& tags);

    /// `isSwapped`: the file has the other byte order than the machine. Throws std::runtime_error
    /// for samples that it does not know.
    SampleOrder(const TiffPageTags& tags, bool isSwapped);

    /// `rows` holds rows of `rowBytes` bytes.
    void restore(std::span<std::uint8_t> rows, std::size_t rowBytes) const;

private:
    void restoreRow(std::span<std::uint8_t> row) const;
    void restoreFloats(std::span<std::uint8_t> row, std::span<std::uint8_t> bytePlanes) const;
    void swapBytes(std::span<std::uint8_t> bytes) const;

    int m_bits;
    int m_predictor;
    std::size_t m_stride; ///< samples from a pixel to the next
    bool m_isSwapped;
};

} // namespace pagestack
