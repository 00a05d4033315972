#include "engine/image/tiff/TiffPageTags.h"

#include <tiffio.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <string>

namespace pagestack {

namespace {

    template <typename Value>
    Value defaultedTag(TIFF* handle, ttag_t tag, Value fallback)
    {
        Value value = fallback;
        return TIFFGetFieldDefaulted(handle, tag, &value) == 1 ? value : fallback;
    }

    int photometricOf(TIFF* handle, const TiffPageTags& tags)
    {
        std::uint16_t photometric = 0;
        if (TIFFGetField(handle, TIFFTAG_PHOTOMETRIC, &photometric) == 1)
            return photometric;
        if (tags.samplesPerPixel - static_cast<int>(tags.extraSamples.size()) >= 3)
            return PHOTOMETRIC_RGB;
        return tags.isFax() ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK;
    }

    Resolution resolutionOf(TIFF* handle)
    {
        Resolution resolution;
        auto x = defaultedTag<float>(handle, TIFFTAG_XRESOLUTION, 0.0F);
        auto y = defaultedTag<float>(handle, TIFFTAG_YRESOLUTION, x);
        if (x == 0) // which libtiff says of one that is missing
            x = y;
        if (y == 0)
            y = x;
        const auto usable = [](float value) { return std::isfinite(value) && value > 0.0F; };
        if (usable(x) && usable(y)) {
            resolution.x = static_cast<double>(x);
            resolution.y = static_cast<double>(y);
        }
        switch (defaultedTag<std::uint16_t>(handle, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH)) {
        case RESUNIT_NONE:
            resolution.unit = ResolutionUnit::None;
            break;
        case RESUNIT_CENTIMETER:
            resolution.unit = ResolutionUnit::Centimeter;
            break;
        default:
            break; // inches, as without the tag
        }
        return resolution;
    }

    void checkGeometry(const TiffPageTags& tags)
    {
        constexpr std::uint32_t largestSide = std::numeric_limits<std::int32_t>::max();
        if (tags.widthPx == 0 || tags.heightPx == 0 || tags.widthPx > largestSide
            || tags.heightPx > largestSide)
            throw std::runtime_error("the image size " + std::to_string(tags.widthPx) + " x "
                                     + std::to_string(tags.heightPx) + " is not supported");
        if (tags.bitsPerSample < 1 || tags.bitsPerSample > 64)
            throw std::runtime_error(std::to_string(tags.bitsPerSample)
                                     + " bits a sample are not supported");
        if (tags.samplesPerPixel < 1)
            throw std::runtime_error("the image has no samples");
        if (tags.isTiled && (tags.tileWidthPx == 0 || tags.tileHeightPx == 0))
            throw std::runtime_error("the tile size is missing");
    }

} // namespace

bool TiffPageTags::isFax() const
{
    return compression == COMPRESSION_CCITTRLE || compression == COMPRESSION_CCITTRLEW
        || compression == COMPRESSION_CCITTFAX3 || compression == COMPRESSION_CCITTFAX4;
}

bool TiffPageTags::isSubsampled() const
{
    return photometric == PHOTOMETRIC_YCBCR && compression != COMPRESSION_JPEG && !planesAreSeparate
        && (horizontalSubsampling != 1 || verticalSubsampling != 1);
}

TiffPageTags readTiffPageTags(tiff* handle)
{
    TiffPageTags tags;
    tags.widthPx = defaultedTag<std::uint32_t>(handle, TIFFTAG_IMAGEWIDTH, 0);
    tags.heightPx = defaultedTag<std::uint32_t>(handle, TIFFTAG_IMAGELENGTH, 0);
    tags.bitsPerSample = defaultedTag<std::uint16_t>(handle, TIFFTAG_BITSPERSAMPLE, 1);
    tags.samplesPerPixel = defaultedTag<std::uint16_t>(handle, TIFFTAG_SAMPLESPERPIXEL, 1);
    tags.sampleFormat = defaultedTag<std::uint16_t>(handle, TIFFTAG_SAMPLEFORMAT, 1);
    tags.compression = defaultedTag<std::uint16_t>(handle, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (TIFFIsCODECConfigured(static_cast<std::uint16_t>(tags.compression)) == 0)
        throw std::runtime_error("compression " + std::to_string(tags.compression)
                                 + " is not supported");
    // Not by TIFFGetFieldDefaulted: libtiff 4.5 then reads the state of any codec as a predictor's.
    std::uint16_t predictor = 1;
    if (TIFFGetField(handle, TIFFTAG_PREDICTOR, &predictor) == 1)
        tags.predictor = predictor;
    tags.fillOrder = defaultedTag<std::uint16_t>(handle, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB);
    tags.orientation = defaultedTag<std::uint16_t>(handle, TIFFTAG_ORIENTATION, 1);
    if (tags.orientation < 1 || tags.orientation > 8)
        tags.orientation = 1;
    tags.inkSet = defaultedTag<std::uint16_t>(handle, TIFFTAG_INKSET, INKSET_CMYK);
    tags.subfileType = defaultedTag<std::uint32_t>(handle, TIFFTAG_SUBFILETYPE, 0);
    tags.planesAreSeparate = tags.samplesPerPixel > 1
        && defaultedTag<std::uint16_t>(handle, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG)
            == PLANARCONFIG_SEPARATE;
    tags.isTiled = TIFFIsTiled(handle) != 0;
    if (tags.isTiled) {
        tags.tileWidthPx = defaultedTag<std::uint32_t>(handle, TIFFTAG_TILEWIDTH, 0);
        tags.tileHeightPx = defaultedTag<std::uint32_t>(handle, TIFFTAG_TILELENGTH, 0);
    } else {
        const auto rows = defaultedTag<std::uint32_t>(handle, TIFFTAG_ROWSPERSTRIP, tags.heightPx);
        tags.rowsPerStrip = std::clamp<std::uint32_t>(rows, 1, std::max(tags.heightPx, 1U));
    }
    std::uint16_t extras = 0;
    std::uint16_t* kinds = nullptr;
    if (TIFFGetFieldDefaulted(handle, TIFFTAG_EXTRASAMPLES, &extras, &kinds) == 1
        && kinds != nullptr)
        tags.extraSamples.assign(kinds, kinds + extras);
    tags.photometric = photometricOf(handle, tags);
    if (tags.photometric == PHOTOMETRIC_YCBCR) {
        std::uint16_t horizontal = 2;
        std::uint16_t vertical = 2;
        TIFFGetFieldDefaulted(handle, TIFFTAG_YCBCRSUBSAMPLING, &horizontal, &vertical);
        tags.horizontalSubsampling = horizontal;
        tags.verticalSubsampling = vertical;
    }
    tags.resolution = resolutionOf(handle);
    std::uint32_t profileBytes = 0;
    void* profile = nullptr;
    if (TIFFGetField(handle, TIFFTAG_ICCPROFILE, &profileBytes, &profile) == 1)
        tags.iccProfile
            = QByteArray(static_cast<const char*>(profile), static_cast<qsizetype>(profileBytes));
    checkGeometry(tags);
    return tags;
}

void applyRowsPerStrip(tiff* handle, const TiffPageTags& tags)
{
    const auto rows = defaultedTag<std::uint32_t>(handle, TIFFTAG_ROWSPERSTRIP, tags.heightPx);
    if (!tags.isTiled && std::min(rows, tags.heightPx) < tags.rowsPerStrip)
        TIFFSetField(handle, TIFFTAG_ROWSPERSTRIP, tags.rowsPerStrip);
}

} // namespace pagestack
