#pragma once

#include "engine/image/pixels/PageSource.h"

#include <vector>

namespace pagestack {

/// A page whose pixels are in memory: upright, rows from the top without gaps.
class Bitmap : public PageSource
{
public:
    /// Takes `samples`, laid out as `layout` says, `rowBytes` of the layout a row.
    /// Throws std::logic_error when their number does not fit.
    Bitmap(int widthPx, int heightPx, PixelLayout layout, std::vector<std::uint8_t> samples);

    const PageProperties& properties() const override { return m_properties; }
    std::unique_ptr<RowSource> rowsShownIn(int bits, SharedWork* work) const override;

    const PixelLayout& layout() const { return m_layout; }
    const std::vector<std::uint8_t>& samples() const { return m_samples; }

private:
    PageProperties m_properties;
    PixelLayout m_layout;
    std::vector<std::uint8_t> m_samples;
};

/// A copy of `bitmap`, RGB of 8 bits, in two colours: a pixel whose largest colour sample (0..255)
/// is at most `threshold`, clamped to 0..1, gets `offColor`, any other `onColor`; so only samples
/// of 0, or of 1 with a threshold of 1, are off. Colour components are 0..1; alpha stays. Throws
/// std::runtime_error for another layout.
std::shared_ptr<Bitmap> monochromeImageRepWithThreshold(const Bitmap& bitmap, float threshold,
                                                        const std::array<double, 3>& offColor,
                                                        const std::array<double, 3>& onColor);

} // namespace pagestack
