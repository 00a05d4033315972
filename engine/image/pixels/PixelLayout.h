#pragma once

#include <QtGlobal>

#include <array>
#include <cstdint>
#include <vector>

namespace pagestack {

enum class ColorModel {
    Gray, ///< one channel, 0 is black
    Palette, ///< one channel of indexes into `PixelLayout::palette`
    Rgb, ///< three channels
};

enum class AlphaKind {
    None,
    Straight, ///< colour is not multiplied by alpha
    Premultiplied, ///< colour is multiplied by alpha ("associated")
};

using RgbColor = std::array<std::uint8_t, 3>;

/// How the samples of a band lie in memory.
///
/// Samples of a pixel are interleaved, alpha last. Samples below 8 bits exist only in one-channel
/// layouts; they are packed from the most significant bit on, and every row starts at a byte.
/// 16-bit samples have the byte order of the machine.
struct PixelLayout
{
    ColorModel model = ColorModel::Gray;
    int bitsPerSample = 8; ///< 1, 2, 4 or 8; 16 for Gray and Rgb only
    AlphaKind alpha = AlphaKind::None; ///< only with 8 or 16 bits, never with Palette
    std::vector<RgbColor> palette; ///< 2^bitsPerSample colours; empty unless `model` is Palette

    int colorChannels() const { return model == ColorModel::Rgb ? 3 : 1; }
    int channels() const { return colorChannels() + (alpha == AlphaKind::None ? 0 : 1); }
    qsizetype rowBytes(int widthPx) const
    {
        return (static_cast<qsizetype>(widthPx) * channels() * bitsPerSample + 7) / 8;
    }
};

} // namespace pagestack
