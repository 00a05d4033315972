#pragma once

#include <QtGlobal>

#include <cstdint>

namespace pagestack {

/// Every `step`-th sample of a row from number `first` on, one a pixel.
struct SampleRun
{
    const std::uint8_t* row;
    int first;
    int step;
    int pixels;
};

/// Brings samples of any depth of a TIFF file to 8 or 16 bits.
///
/// Unsigned samples of 1 to 8 bits are scaled to the full range of 8 bits, deeper ones to the full
/// range of 16, both with rounding. Signed ones are shifted so that the lowest value becomes 0.
/// Floating-point samples are taken from 0..1, with what lies outside clamped and what is no number
/// as 0, to 16 bits. Samples of 16, 24, 32 and 64 bits are expected in the machine's byte order,
/// others packed from the most significant bit on.
class SampleUnpacker
{
public:
    /// `sampleFormat` as in the tag SampleFormat: 1 unsigned, 2 signed, 3 floating point, 4 untyped
    /// (taken as unsigned). Throws std::runtime_error for a format or depth that does not exist.
    SampleUnpacker(int bitsPerSample, int sampleFormat);

    int outputBits() const { return m_outputBits; } ///< 8 or 16

    /// Unpacks `samples` to every `step`-th element of `to`, of `outputBits` bits each.
    void unpack(const SampleRun& samples, std::uint8_t* to, int step) const;

    /// The same without scaling, for indexes: unsigned samples of up to 16 bits.
    void unpackIndexes(const SampleRun& samples, std::uint16_t* to) const;

    /// The bits of sample `index` of a run.
    std::uint64_t rawSample(const SampleRun& samples, qsizetype index) const
    {
        return rawSample(samples.row, index * samples.step + samples.first);
    }
    /// The number that the bits of a sample are.
    double number(std::uint64_t raw) const;
    /// What becomes of it, in `outputBits` bits.
    std::uint16_t scaled(std::uint64_t raw) const;

private:
    std::uint64_t rawSample(const std::uint8_t* row, qsizetype index) const;

    int m_bits;
    bool m_isSigned;
    bool m_isFloat;
    int m_outputBits;
};

} // namespace pagestack
