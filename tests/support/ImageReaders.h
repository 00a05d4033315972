#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <vector>

namespace pagestack {

/// A picture as the library of its format reads it. Nothing is converted: samples have the file's
/// range, and those of palettes are indexes.
struct Picture
{
    int width = 0; ///< 0: the file is missing or damaged
    int height = 0;
    int channels = 0; ///< samples a pixel
    int bits = 0;
    std::vector<int> samples; ///< rows from the top, red first
    std::vector<std::array<int, 3>> palette; ///< of GIF
    int transparentIndex = -1;
    std::array<int, 3> density {}; ///< the file's unit and values; -1 for the unit: none
    QByteArray iccProfile;
    std::array<int, 2> sampling {}; ///< of JPEG: factors of the first component

    int at(int x, int y, int c) const
    {
        return samples.at(static_cast<std::size_t>((y * width + x) * channels + c));
    }
    /// Sample of a pixel of at most 8 bits a sample, through the palette where there is one.
    int colorAt(int x, int y, int c) const;
};

/// Reads the file by its extension, which is png, jpg or gif.
Picture readPicture(const QString& path);

/// The first sample of `picture` that is off by more than `tolerance`, or its wrong shape; empty
/// when there is none. Looks at every `step`-th pixel.
QString difference(const Picture& picture, std::array<int, 4> widthHeightChannelsBits,
                   const std::function<double(int x, int y, int c)>& expected, double tolerance = 0,
                   int step = 1);

/// A page of a TIFF file as libtiff reads it.
struct TiffPicture
{
    QByteArray samples; ///< decoded strips or tiles, one after the other; JPEG as RGB
    QByteArray encoded; ///< strips or tiles as they lie
    std::map<int, QList<double>> tags; ///< texts byte by byte, fractions as one number

    QList<double> values(int tag) const
    {
        return tags.count(tag) == 0 ? QList<double>() : tags.at(tag);
    }
    int number(int tag) const { return static_cast<int>(values(tag).value(0, -1)); }
};

/// All pages of the chain; empty for a missing file. Undecodable pages have no samples.
QList<TiffPicture> readTiff(const QString& path);

} // namespace pagestack
