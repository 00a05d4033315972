#include "engine/image/TiffPageTags.h"

#include "engine/image/RowLimits.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <span>
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

    constexpr std::uint32_t longestFaxRowPx = 4 * 1024 * 1024; // 16 bytes each in libtiff's tables

    // Beyond this a page has to bring a byte for every `mostDecodedPerByte` of its pixels, or a
    // file of some kilobytes would keep a run busy for hours and fill the disk. Blank areas of real
    // pages of that size, plans or printing plates, stay far below it.
    constexpr std::uint64_t largestSparsePage = std::uint64_t { 1024 } * 1024 * 1024;
    constexpr std::uint64_t mostDecodedPerByte = 1000;

    constexpr std::uint64_t largestJbigPage = std::uint64_t { 64 } * 1024 * 1024;

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
        const auto x = defaultedTag<float>(handle, TIFFTAG_XRESOLUTION, 0.0F);
        const auto y = defaultedTag<float>(handle, TIFFTAG_YRESOLUTION, x);
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
            resolution.unit = ResolutionUnit::Inch;
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

    /// The most bytes that one encoded byte can decode to; 0: no useful bound.
    std::uint64_t highestRatio(int compression)
    {
        switch (compression) {
        case COMPRESSION_NONE:
            return 1;
        case COMPRESSION_PACKBITS:
            return 64;
        case COMPRESSION_LZW:
            return 4096; // codes of 9 to 12 bits for strings of up to 4096 bytes
        case COMPRESSION_DEFLATE:
        case COMPRESSION_ADOBE_DEFLATE:
            return 1100; // two bits for 258 bytes
        case COMPRESSION_JPEG:
        case COMPRESSION_OJPEG:
            return 4096; // some bits for the 64 samples of each of some channels
        default:
            return 0;
        }
    }

    /// libjbig holds a page as a whole, and ends the program when the size in the encoded data asks
    /// for more memory than there is. ITU-T T.82, section 6.2.2: the header of the data.
    void checkJbigHeader(TIFF* handle, const TiffPageTags& tags)
    {
        std::array<std::uint8_t, 12> head = {};
        const auto bytes = static_cast<tmsize_t>(head.size());
        if (tags.isTiled || TIFFReadRawStrip(handle, 0, head.data(), bytes) != bytes)
            throw std::runtime_error("its JBIG data are damaged");
        if (tags.fillOrder == FILLORDER_MSB2LSB)
            TIFFReverseBits(head.data(), bytes); // libtiff's notion of the order, here only
        const auto number = [&](std::size_t first) {
            std::uint32_t value = 0;
            for (const std::uint8_t byte : std::span(head).subspan(first, 4))
                value = value << 8U | byte;
            return value;
        };
        const bool isOneLayer = head[0] == 0 && head[1] == 0 && head[2] == 1;
        if (!isOneLayer || number(4) != tags.widthPx || number(8) != tags.heightPx)
            throw std::runtime_error("its JBIG data do not have the size of the page");
        if (tags.decodedBytes() > largestJbigPage)
            throw std::runtime_error("it is too large for a page of JBIG data");
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

void checkEncodedSize(tiff* handle, const TiffPageTags& tags, std::uint64_t fileSizeBytes)
{
    const bool isTooLong = tags.isFax() ? std::max(tags.widthPx, tags.tileWidthPx) > longestFaxRowPx
                                        : tags.widthPx > longestRowPx;
    if (isTooLong || tags.planeRowBytes() * static_cast<unsigned>(tags.planes()) > longestRowBytes)
        throw std::runtime_error("its rows of " + std::to_string(tags.widthPx)
                                 + " pixels are too long");
    const std::uint32_t pieces
        = tags.isTiled ? TIFFNumberOfTiles(handle) : TIFFNumberOfStrips(handle);
    std::uint64_t encoded = 0;
    std::uint64_t used = 0;
    for (std::uint32_t piece = 0; piece < pieces; ++piece) {
        int failed = 0;
        const std::uint64_t bytes = TIFFGetStrileByteCountWithErr(handle, piece, &failed);
        const std::uint64_t offset = TIFFGetStrileOffsetWithErr(handle, piece, &failed);
        if (failed != 0)
            throw std::runtime_error("the table of its strips is damaged");
        if (bytes == 0)
            continue;
        if (offset >= fileSizeBytes)
            throw std::runtime_error("its pixels lie beyond the end of the file");
        encoded += std::min(bytes, fileSizeBytes - offset);
        ++used;
    }
    if (used == 0)
        throw std::runtime_error("the page has no pixel data");
    encoded = std::min(encoded, fileSizeBytes); // strips may share their bytes
    const std::uint64_t decoded = tags.decodedBytes();
    const std::uint64_t ratio = highestRatio(tags.compression);
    // A row of a fax page takes a bit at least.
    const bool tooManyRows = tags.isFax() && tags.heightPx / 8 > encoded;
    // Sub-sampled pages hold less than their rows suggest, and the last tiles reach past the page.
    const std::uint64_t slack = tags.photometric == PHOTOMETRIC_YCBCR ? 16 : 1;
    if (tooManyRows || (ratio != 0 && decoded / ratio / slack > encoded))
        throw std::runtime_error("it announces " + std::to_string(tags.widthPx) + " x "
                                 + std::to_string(tags.heightPx) + " pixels, more than its "
                                 + std::to_string(encoded) + " bytes of data can hold");
    if (decoded > largestSparsePage && decoded / mostDecodedPerByte > encoded)
        throw std::runtime_error(
            "its " + std::to_string(encoded) + " bytes of data announce "
            + std::to_string(tags.widthPx) + " x " + std::to_string(tags.heightPx)
            + " pixels; a page of more than 1 GiB needs a byte for every 1000");
    if (tags.compression == COMPRESSION_JBIG)
        checkJbigHeader(handle, tags);
}

} // namespace pagestack
