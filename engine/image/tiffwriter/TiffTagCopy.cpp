#include "engine/image/tiffwriter/TiffTagCopy.h"

#include "engine/image/decode/TiffPage.h"

#include <tiffio.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <tuple>
#include <type_traits>

namespace pagestack {

namespace {

    constexpr std::array<ttag_t, 11> textTags {
        TIFFTAG_DOCUMENTNAME, TIFFTAG_IMAGEDESCRIPTION, TIFFTAG_MAKE,          TIFFTAG_MODEL,
        TIFFTAG_PAGENAME,     TIFFTAG_SOFTWARE,         TIFFTAG_DATETIME,      TIFFTAG_ARTIST,
        TIFFTAG_HOSTCOMPUTER, TIFFTAG_COPYRIGHT,        TIFFTAG_TARGETPRINTER,
    };

    /// A tag whose value libtiff hands out, and takes, as these; lengths of arrays it knows from
    /// the tag or has before them.
    template <typename... Values>
    void copyTag(TIFF* from, TIFF* to, ttag_t tag)
    {
        std::tuple<Values...> held;
        std::apply(
            [=](Values&... values) {
                if (TIFFGetField(from, tag, &values...) == 1
                    && ((!std::is_pointer_v<Values> || values != Values {}) && ...))
                    TIFFSetField(to, tag, values...);
            },
            held);
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
        if (isSquare && x == 0)
            x = y;
        if (isSquare && y == 0)
            y = x;
        TIFFSetField(to, across, static_cast<double>(x));
        TIFFSetField(to, down, static_cast<double>(y));
    }

    void copyFractions(TIFF* from, TIFF* to, ttag_t tag, std::ptrdiff_t count)
    {
        float* values = nullptr;
        if (TIFFGetField(from, tag, &values) == 1 && values != nullptr
            && std::all_of(values, values + count, isFraction))
            TIFFSetField(to, tag, values);
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

} // namespace

void copyDescriptiveTags(tiff* from, tiff* to, bool isStripped)
{
    for (const ttag_t tag : textTags)
        if (!isStripped)
            copyTag<char*>(from, to, tag);
    for (const ttag_t tag : { TIFFTAG_ICCPROFILE, TIFFTAG_XMLPACKET, TIFFTAG_PHOTOSHOP })
        if (!isStripped || tag == TIFFTAG_ICCPROFILE)
            copyTag<std::uint32_t, void*>(from, to, tag);
    if (!isStripped)
        copyIptc(from, to);
    copyFractions(from, to, TIFFTAG_XRESOLUTION, TIFFTAG_YRESOLUTION, true);
    copyFractions(from, to, TIFFTAG_XPOSITION, TIFFTAG_YPOSITION, false);
    copyTag<std::uint16_t>(from, to, TIFFTAG_RESOLUTIONUNIT);
}

void copyInterpretationTags(tiff* from, tiff* to)
{
    copyTag<std::uint16_t*, std::uint16_t*, std::uint16_t*>(from, to, TIFFTAG_COLORMAP);
    copyTag<std::uint16_t, std::uint16_t*>(from, to, TIFFTAG_EXTRASAMPLES);
    for (const ttag_t tag : { TIFFTAG_SAMPLEFORMAT, TIFFTAG_MINSAMPLEVALUE, TIFFTAG_MAXSAMPLEVALUE,
                              TIFFTAG_INKSET, TIFFTAG_THRESHHOLDING })
        copyTag<std::uint16_t>(from, to, tag);
    copyTag<std::uint16_t, std::uint16_t>(from, to, TIFFTAG_HALFTONEHINTS);
    copyTag<std::uint16_t, std::uint16_t>(from, to, TIFFTAG_DOTRANGE);
    copyFractions(from, to, TIFFTAG_WHITEPOINT, 2);
    copyFractions(from, to, TIFFTAG_PRIMARYCHROMATICITIES, 6);
    copyFractions(from, to, TIFFTAG_REFERENCEBLACKWHITE, 6);
    std::uint16_t photometric = 0;
    if (TIFFGetField(from, TIFFTAG_PHOTOMETRIC, &photometric) != 1
        || photometric != PHOTOMETRIC_YCBCR)
        return;
    copyFractions(from, to, TIFFTAG_YCBCRCOEFFICIENTS, 3);
    copyTag<std::uint16_t, std::uint16_t>(from, to, TIFFTAG_YCBCRSUBSAMPLING);
    copyTag<std::uint16_t>(from, to, TIFFTAG_YCBCRPOSITIONING);
}

std::vector<TextList> textLists(const TiffPage& page)
{
    std::vector<TextList> lists;
    for (const TiffTagValue& value : page.directory().values) {
        if (std::ranges::find(textTags, value.tag) == textTags.end() || value.bytes != value.count)
            continue;
        const char* first = nullptr;
        if (TIFFGetField(page.load(), value.tag, &first) != 1 || first == nullptr
            || value.bytes <= std::strlen(first) + 1)
            continue;
        QByteArray bytes(static_cast<qsizetype>(value.bytes), '\0');
        page.document().readAt(value.offset,
                               { reinterpret_cast<std::uint8_t*>(bytes.data()), value.bytes });
        while (bytes.endsWith('\0'))
            bytes.chop(1);
        if (bytes.contains('\0'))
            lists.push_back({ value.tag, bytes.append('\0') });
    }
    return lists;
}

} // namespace pagestack
