#include "engine/image/tiffwriter/TiffTagCopy.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

namespace pagestack {

namespace {

    template <typename Value>
    void copyValue(TIFF* from, TIFF* to, ttag_t tag)
    {
        Value value = {};
        if (TIFFGetField(from, tag, &value) == 1)
            TIFFSetField(to, tag, value);
    }

    /// Whether a tag of unsigned fractions can hold it: what cannot would make the page fail.
    bool isFraction(float value) { return std::isfinite(value) && value >= 0; }

    /// libtiff keeps one note that there are values for both directions: one that is missing reads
    /// as 0.
    void copyFractions(TIFF* from, TIFF* to, ttag_t across, ttag_t down, bool isSquare)
    {
        float x = 0;
        float y = 0;
        if (TIFFGetField(from, across, &x) != 1 || TIFFGetField(from, down, &y) != 1
            || !isFraction(x) || !isFraction(y))
            return;
        TIFFSetField(to, across, static_cast<double>(x));
        TIFFSetField(to, down, static_cast<double>(isSquare && y == 0 ? x : y));
    }

    void copyFractions(TIFF* from, TIFF* to, ttag_t tag, std::ptrdiff_t count)
    {
        float* values = nullptr;
        if (TIFFGetField(from, tag, &values) == 1 && values != nullptr
            && std::all_of(values, values + count, isFraction))
            TIFFSetField(to, tag, values);
    }

    void copyPair(TIFF* from, TIFF* to, ttag_t tag)
    {
        std::uint16_t first = 0;
        std::uint16_t second = 0;
        if (TIFFGetField(from, tag, &first, &second) == 1)
            TIFFSetField(to, tag, first, second);
    }

    /// Arrays whose length libtiff knows from the tag.
    template <typename Value>
    void copyArray(TIFF* from, TIFF* to, ttag_t tag)
    {
        Value* values = nullptr;
        if (TIFFGetField(from, tag, &values) == 1 && values != nullptr)
            TIFFSetField(to, tag, values);
    }

    void copyBlock(TIFF* from, TIFF* to, ttag_t tag)
    {
        std::uint32_t count = 0;
        void* block = nullptr;
        if (TIFFGetField(from, tag, &count, &block) == 1 && block != nullptr && count > 0)
            TIFFSetField(to, tag, count, block);
    }

    /// Bytes that many files declare as numbers of 4 bytes, whose order libtiff turns round
    /// where the file has the other one. A record of it begins with 0x1C. IIM, section 1.6.
    void copyIptc(TIFF* from, TIFF* to)
    {
        std::uint32_t count = 0;
        void* block = nullptr;
        if (TIFFGetField(from, TIFFTAG_RICHTIFFIPTC, &count, &block) != 1 || block == nullptr)
            return;
        std::vector<std::uint32_t> numbers((count + 3) / 4);
        std::memcpy(numbers.data(), block, count);
        constexpr std::uint8_t mark = 0x1C;
        const auto* bytes = static_cast<const std::uint8_t*>(block);
        if (TIFFIsByteSwapped(from) != 0 && count > 3 && bytes[0] != mark && bytes[3] == mark)
            TIFFSwabArrayOfLong(numbers.data(), count / 4);
        TIFFSetField(to, TIFFTAG_RICHTIFFIPTC, count, numbers.data());
    }

    void copyThreeCurves(TIFF* from, TIFF* to, ttag_t tag)
    {
        std::uint16_t* red = nullptr;
        std::uint16_t* green = nullptr;
        std::uint16_t* blue = nullptr;
        if (TIFFGetField(from, tag, &red, &green, &blue) == 1 && red != nullptr)
            TIFFSetField(to, tag, red, green, blue);
    }

    constexpr std::array<ttag_t, 11> textTags {
        TIFFTAG_DOCUMENTNAME, TIFFTAG_IMAGEDESCRIPTION, TIFFTAG_MAKE,          TIFFTAG_MODEL,
        TIFFTAG_PAGENAME,     TIFFTAG_SOFTWARE,         TIFFTAG_DATETIME,      TIFFTAG_ARTIST,
        TIFFTAG_HOSTCOMPUTER, TIFFTAG_COPYRIGHT,        TIFFTAG_TARGETPRINTER,
    };

    constexpr std::array<ttag_t, 3> blockTags {
        TIFFTAG_ICCPROFILE,
        TIFFTAG_XMLPACKET,
        TIFFTAG_PHOTOSHOP,
    };

} // namespace

bool isCopiedText(unsigned tag)
{
    return std::find(textTags.begin(), textTags.end(), tag) != textTags.end();
}

void copyDescriptiveTags(tiff* from, tiff* to)
{
    for (const ttag_t tag : textTags)
        copyArray<char>(from, to, tag);
    for (const ttag_t tag : blockTags)
        copyBlock(from, to, tag);
    copyIptc(from, to);
    copyFractions(from, to, TIFFTAG_XRESOLUTION, TIFFTAG_YRESOLUTION, true);
    copyFractions(from, to, TIFFTAG_XPOSITION, TIFFTAG_YPOSITION, false);
    copyValue<std::uint16_t>(from, to, TIFFTAG_RESOLUTIONUNIT);
}

void copyInterpretationTags(tiff* from, tiff* to)
{
    copyThreeCurves(from, to, TIFFTAG_COLORMAP);
    std::uint16_t extras = 0;
    std::uint16_t* kinds = nullptr;
    if (TIFFGetField(from, TIFFTAG_EXTRASAMPLES, &extras, &kinds) == 1 && extras > 0)
        TIFFSetField(to, TIFFTAG_EXTRASAMPLES, extras, kinds);
    copyValue<std::uint16_t>(from, to, TIFFTAG_SAMPLEFORMAT);
    copyValue<std::uint16_t>(from, to, TIFFTAG_MINSAMPLEVALUE);
    copyValue<std::uint16_t>(from, to, TIFFTAG_MAXSAMPLEVALUE);
    copyValue<std::uint16_t>(from, to, TIFFTAG_INKSET);
    copyValue<std::uint16_t>(from, to, TIFFTAG_THRESHHOLDING);
    copyPair(from, to, TIFFTAG_HALFTONEHINTS);
    copyPair(from, to, TIFFTAG_DOTRANGE);
    copyFractions(from, to, TIFFTAG_WHITEPOINT, 2);
    copyFractions(from, to, TIFFTAG_PRIMARYCHROMATICITIES, 6);
    copyFractions(from, to, TIFFTAG_REFERENCEBLACKWHITE, 6);
    std::uint16_t photometric = 0;
    if (TIFFGetField(from, TIFFTAG_PHOTOMETRIC, &photometric) != 1
        || photometric != PHOTOMETRIC_YCBCR)
        return;
    copyFractions(from, to, TIFFTAG_YCBCRCOEFFICIENTS, 3);
    copyPair(from, to, TIFFTAG_YCBCRSUBSAMPLING);
    copyValue<std::uint16_t>(from, to, TIFFTAG_YCBCRPOSITIONING);
}

} // namespace pagestack
