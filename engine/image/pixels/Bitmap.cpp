#include "engine/image/pixels/Bitmap.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace pagestack {

namespace {

    class BitmapRows : public RowSource
    {
    public:
        explicit BitmapRows(const Bitmap& bitmap)
            : RowSource(bitmap.properties().widthPx, bitmap.properties().heightPx, bitmap.layout())
            , m_bitmap(bitmap)
        {
        }
        Band nextBand() override
        {
            if (std::exchange(m_isAtEnd, true))
                return {};
            return { m_bitmap.samples().data(), heightPx(), rowBytes() };
        }

    private:
        const Bitmap& m_bitmap;
        bool m_isAtEnd = false;
    };

    RgbColor bytesOf(const std::array<double, 3>& color)
    {
        RgbColor bytes = {};
        std::transform(color.begin(), color.end(), bytes.begin(), [](double component) {
            return static_cast<std::uint8_t>(std::clamp(component * 255.0, 0.0, 255.0));
        });
        return bytes;
    }

} // namespace

Bitmap::Bitmap(int widthPx, int heightPx, PixelLayout layout, std::vector<std::uint8_t> samples)
    : m_layout(std::move(layout))
    , m_samples(std::move(samples))
{
    m_properties.widthPx = widthPx;
    m_properties.heightPx = heightPx;
    if (static_cast<qsizetype>(m_samples.size()) != m_layout.rowBytes(widthPx) * heightPx)
        throw std::logic_error("a bitmap needs as many samples as its size says");
}

std::unique_ptr<RowSource> Bitmap::rowsShownIn(int, SharedWork*) const
{
    return std::make_unique<BitmapRows>(*this);
}

std::shared_ptr<Bitmap> monochromeImageRepWithThreshold(const Bitmap& bitmap, float threshold,
                                                        const std::array<double, 3>& offColor,
                                                        const std::array<double, 3>& onColor)
{
    const PixelLayout& layout = bitmap.layout();
    if (layout.model != ColorModel::Rgb || layout.bitsPerSample != 8)
        throw std::runtime_error("only RGB pixels of 8 bits a sample have a threshold");
    const float limit = std::clamp(threshold, 0.0F, 1.0F);
    const RgbColor off = bytesOf(offColor);
    const RgbColor on = bytesOf(onColor);
    std::vector<std::uint8_t> samples = bitmap.samples();
    const auto step = static_cast<std::size_t>(layout.channels());
    for (std::size_t i = 0; i + 2 < samples.size(); i += step) {
        const std::uint8_t largest = std::max({ samples[i], samples[i + 1], samples[i + 2] });
        const RgbColor& color = static_cast<float>(largest) <= limit ? off : on;
        std::copy(color.begin(), color.end(), samples.begin() + static_cast<std::ptrdiff_t>(i));
    }
    return std::make_shared<Bitmap>(bitmap.properties().widthPx, bitmap.properties().heightPx,
                                    layout, std::move(samples));
}

} // namespace pagestack
