#pragma once

#include "engine/image/pixels/PageSource.h"

#include <cstdint>
#include <vector>

struct tiff;

namespace pagestack {

/// The tags that say how the samples of a TIFF page lie and what they mean (TIFF 6.0).
struct TiffPageTags
{
    std::uint32_t widthPx = 0;
    std::uint32_t heightPx = 0;
    int bitsPerSample = 1;
    int samplesPerPixel = 1;
    int sampleFormat = 1; ///< 1 unsigned, 2 signed, 3 floating point, 4 untyped
    int photometric = 0; ///< guessed as libtiff's viewers do where the tag is missing
    int compression = 1;
    int predictor = 1;
    int fillOrder = 1;
    int orientation = 1; ///< 1..8; anything else in the file counts as 1
    int inkSet = 1; ///< 1: CMYK
    std::uint32_t subfileType = 0;
    bool planesAreSeparate = false;
    bool isTiled = false;
    bool hasStripOfUnknownSize = false; ///< the only strip, uncompressed, has the size 0
    bool hasRowsBehindStrips = false; ///< uncompressed strips have a row more than they need
    bool hasWrongRowsPerStrip = false; ///< `rowsPerStrip` is not that of the file
    std::uint32_t rowsPerStrip = 0; ///< no more than `heightPx`; 0 when tiled
    std::uint32_t tileWidthPx = 0;
    std::uint32_t tileHeightPx = 0;
    int horizontalSubsampling = 1; ///< of YCbCr pages
    int verticalSubsampling = 1;
    std::vector<std::uint16_t> extraSamples; ///< 0 unspecified, 1 associated, 2 unassociated alpha
    Resolution resolution;
    QByteArray iccProfile;

    /// Samples in one plane of the file: all of a pixel's, or 1 when planes are separate.
    int samplesInPlane() const { return planesAreSeparate ? 1 : samplesPerPixel; }
    int planes() const { return planesAreSeparate ? samplesPerPixel : 1; }
    /// Of so many pixels in a row of one plane.
    std::uint64_t bitsOf(std::uint32_t pixels) const
    {
        return std::uint64_t { pixels } * static_cast<unsigned>(samplesInPlane())
            * static_cast<unsigned>(bitsPerSample);
    }
    std::uint64_t planeRowBytes() const { return (bitsOf(widthPx) + 7) / 8; }
    std::uint64_t decodedBytes() const
    {
        return planeRowBytes() * heightPx * static_cast<unsigned>(planes());
    }
    std::uint32_t stripsInPlane() const { return (heightPx - 1) / rowsPerStrip + 1; }
    /// One sample of one bit a pixel: black and white, or a palette of two colours.
    bool isOneBitDeep() const { return bitsPerSample == 1 && samplesPerPixel == 1; }
    /// Encoded as ITU-T T.4 or T.6 say.
    bool isFax() const;
    /// Sample values of YCbCr pages lie in blocks of several pixels.
    bool isSubsampled() const;
};

/// Reads the tags of the current page of `handle`. Throws std::runtime_error if there are no pixels
/// or more than 2^31 - 1 in a direction, or for an unknown codec.
TiffPageTags readTiffPageTags(tiff* handle);

/// Has `handle`, at the page of `tags`, take the page for one of strips as `tags` say.
void applyRowsPerStrip(tiff* handle, const TiffPageTags& tags);

} // namespace pagestack
