#include "engine/image/tiffwriter/TiffPageWriter.h"

#include "engine/image/decode/DisplayRows.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/image/tiffwriter/EncodedPieces.h"
#include "engine/image/tiffwriter/PageCoding.h"
#include "engine/image/tiffwriter/SampleCopy.h"
#include "engine/image/tiffwriter/TiffTagCopy.h"

#include <tiffio.h>

#include <array>
#include <vector>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    void setDisplayTags(TIFF* to, const PixelLayout& layout, const PageProperties& page)
    {
        setTag(to, TIFFTAG_IMAGEWIDTH, page.widthPx);
        setTag(to, TIFFTAG_IMAGELENGTH, page.heightPx);
        setTag(to, TIFFTAG_BITSPERSAMPLE, layout.bitsPerSample);
        setTag(to, TIFFTAG_SAMPLESPERPIXEL, layout.channels());
        setTag(to, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        setTag(to, TIFFTAG_ORIENTATION, page.orientation);
        if (layout.alpha != AlphaKind::None) {
            std::uint16_t kind = layout.alpha == AlphaKind::Straight ? EXTRASAMPLE_UNASSALPHA
                                                                     : EXTRASAMPLE_ASSOCALPHA;
            setTag(to, TIFFTAG_EXTRASAMPLES, 1, &kind);
        }
        setTag(to, TIFFTAG_PHOTOMETRIC,
               layout.model == ColorModel::Palette    ? PHOTOMETRIC_PALETTE
                   : layout.model == ColorModel::Gray ? PHOTOMETRIC_MINISBLACK
                                                      : PHOTOMETRIC_RGB);
        if (layout.model != ColorModel::Palette)
            return;
        std::array<std::vector<std::uint16_t>, 3> map;
        for (const RgbColor& color : layout.palette)
            for (std::size_t c = 0; c < map.size(); ++c)
                map[c].push_back(static_cast<std::uint16_t>(color[c] * 257));
        setTag(to, TIFFTAG_COLORMAP, map[0].data(), map[1].data(), map[2].data());
    }

    /// Samples that the page has besides its colours and its alpha are none of its display rows.
    void tellOfExtraSamples(const TiffPage& page, const PixelLayout& layout)
    {
        const std::size_t kept = layout.alpha == AlphaKind::None ? 0 : 1;
        const std::size_t extra = page.tags().extraSamples.size();
        if (extra > kept && page.change().becomesSrgb && !page.change().becomesBilevel)
            page.messages().addPageWarning(
                u"%1 of its samples, which are neither colour nor alpha, "
                "are left out"_s.arg(extra - kept));
    }

    /// Of pixels that are changed.
    void setChangedTags(TIFF* to, const TiffPage& page, bool isInverted)
    {
        if (isInverted)
            setTag(to, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
        if (page.change().becomesBilevel && page.treatment().bilevel == Bilevel::Dither)
            setTag(to, TIFFTAG_THRESHHOLDING, THRESHHOLD_ERRORDIFFUSE);
    }

    void writeRows(TIFF* to, RowSource& rows, bool isInverted)
    {
        std::uint32_t row = 0;
        std::vector<std::uint8_t> samples;
        for (Band band = rows.nextBand(); band.rows > 0; band = rows.nextBand())
            for (int i = 0; i < band.rows; ++i, ++row) {
                samples.assign(band.row(i), band.row(i) + rows.rowBytes());
                for (std::size_t at = 0; isInverted && at < samples.size(); ++at)
                    samples[at] = static_cast<std::uint8_t>(~samples[at]);
                checkTaken(TIFFWriteScanline(to, samples.data(), row, 0) == 1);
            }
    }

    /// A page whose samples no TIFF writer can hold as they are, that is no page of a TIFF file, or
    /// whose pixels are changed: its rows as they are shown.
    void writeDisplayRows(TIFF* to, const PageSource& page, int compression, PagePosition position,
                          const EncodedPieces& pieces)
    {
        const PageProperties& properties = page.properties();
        const TiffPage* source = page.tiffPage();
        if (source != nullptr)
            copyDescriptiveTags(source->load(), to, source->treatment().stripsMetadata);
        const bool becomesBilevel = source != nullptr && source->change().becomesBilevel;
        PixelLayout layout;
        layout.bitsPerSample = 1;
        std::unique_ptr<RowSource> rows;
        if (!pieces.bytes || !becomesBilevel) { // a pass may take another one before it
            rows = page.rows();
            layout = rows->layout();
        }
        setDisplayTags(to, layout, properties);
        if (properties.iccProfile.isEmpty())
            TIFFUnsetField(to, TIFFTAG_ICCPROFILE); // it describes other samples than these
        const int used
            = compressionFor(compression, layout.channels() == 1 && layout.bitsPerSample == 1);
        // Fax machines take 0 for white, whatever Photometric says, and code white most tightly.
        const bool isInverted = becomesBilevel && isFaxCompression(used);
        if (source != nullptr)
            setChangedTags(to, *source, isInverted);
        setTag(to, TIFFTAG_COMPRESSION, used);
        setCoding(to, used, layout.model == ColorModel::Palette ? 0 : layout.bitsPerSample,
                  static_cast<std::uint32_t>(properties.widthPx));
        setPosition(to, source, position);
        const auto rowBytes = static_cast<std::uint64_t>(layout.rowBytes(properties.widthPx));
        const auto heightPx = static_cast<std::uint32_t>(properties.heightPx);
        setTag(to, TIFFTAG_ROWSPERSTRIP, outputRowsPerStrip(rowBytes, heightPx, heightPx));
        if (source != nullptr && pieces.bytes) {
            copyPieces(to, *source, pieces);
            return;
        }
        if (source != nullptr) {
            if (!source->change().isNone())
                source->messages().setPixelsChanged();
            tellOfExtraSamples(*source, layout);
            tellOfCompression(*source, compression, used);
            if (source->treatment().keepsCompression)
                tellOfLostCompression(*source);
        }
        writeRows(to, *rows, isInverted);
    }

    /// The page as one whose samples are kept as they are; null when it is none.
    const TiffPage* sampleSource(const PageSource& page)
    {
        const TiffPage* source = page.tiffPage();
        if (source == nullptr || !source->change().isNone())
            return nullptr;
        const TiffPageTags& tags = source->tags();
        const bool isCodedColor = tags.photometric == PHOTOMETRIC_YCBCR
            && tags.compression != COMPRESSION_OJPEG && tags.compression != COMPRESSION_JPEG;
        if (tilesAreOfOddSize(tags) && tags.isSubsampled())
            return nullptr; // its blocks of samples cannot be put into strips as they are
        return !needsRgbaInterface(tags) || isCodedColor ? source : nullptr;
    }

} // namespace

void writeTiffPage(tiff* handle, const PageSource& page, int compression, PagePosition position,
                   const EncodedPieces& pieces)
{
    if (const TiffPage* source = sampleSource(page))
        writeSamples(handle, *source, compression, position, pieces);
    else
        writeDisplayRows(handle, page, compression, position, pieces);
}

bool keepsSamples(const PageSource& page) { return sampleSource(page) != nullptr; }

bool isRecoded(const PageSource& page, int compression)
{
    const TiffPage* source = sampleSource(page);
    if (source == nullptr)
        return page.tiffPage() != nullptr && !page.tiffPage()->change().isNone();
    return samplesAreRecoded(*source, compression);
}

} // namespace pagestack
