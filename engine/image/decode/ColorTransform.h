#pragma once

#include <QByteArray>

#include <cstdint>
#include <memory>

namespace pagestack {

/// Colour models that have to become RGB where a format cannot hold them.
enum class SourceColor {
    Cmyk, ///< four channels, 0 is no ink
    CieLab, ///< TIFF 6.0, section 23: L* from 0, a* and b* as signed numbers
    IccLab, ///< the same with a* and b* shifted to unsigned numbers, as ICC profiles encode them
};

/// Turns rows of CMYK or L*a*b* pixels into sRGB. CMYK goes through the profile of the page where
/// it has a usable one, else by the plain formula; L*a*b* (white D50) by its definition. One thread
/// at a time.
class ColorTransform
{
public:
    /// `bits` is 8 or 16, of input and output. `profile` is looked at for CMYK only.
    ColorTransform(SourceColor from, int bits, const QByteArray& profile);
    ~ColorTransform();
    ColorTransform(const ColorTransform&) = delete;
    ColorTransform& operator=(const ColorTransform&) = delete;

    int inputChannels() const { return m_from == SourceColor::Cmyk ? 4 : 3; }

    /// Converts `pixels` packed pixels at `from` into packed RGB at `to`, which must not overlap.
    void apply(const std::uint8_t* from, std::uint8_t* to, int pixels);

private:
    struct Engine;

    SourceColor m_from;
    int m_bits;
    std::unique_ptr<Engine> m_engine; ///< null: the plain formula
};

} // namespace pagestack
