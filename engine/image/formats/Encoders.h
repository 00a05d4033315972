#pragma once

#include "engine/files/StagedFile.h"
#include "engine/image/pixels/PageSource.h"
#include "engine/image/pixels/RowConversions.h"

#include <QStringList>

#include <functional>
#include <memory>

namespace pagestack {

class JpegBlocks;
class SpareThreads;
struct PageMetadata;

/// A page with its rows upright and in pixels that the format takes.
struct UprightPage
{
    PageProperties properties; ///< of the upright page, with the profile of its rows
    std::unique_ptr<RowSource> rows; ///< the first pass
    /// Starts another pass, with the same rows; the pass before must be gone.
    std::function<std::unique_ptr<RowSource>()> startPass;
    std::shared_ptr<const PageMetadata> metadata; ///< null: none
    QStringList leftOut; ///< names of what the format cannot hold of it; added to by the encoder
    int jpegQuality = 10;
    SpareThreads* threads = nullptr; ///< may be null
};

// The encoders append a complete file to `file`. They throw std::runtime_error if the rows cannot
// be read, the page is too large for the format or the file takes no more. Any thread.

/// Baseline JPEG with standard Huffman tables (ITU-T T.81; JFIF 1.02): 4:4:4 from quality 10 on,
/// else 4:2:0. Gray stays one channel. The ICC profile goes into APP2 segments (ICC.1, annex B.4).
/// The density is rounded to whole pixels an inch, or a centimetre if that is exact. Metadata: see
/// jpegSegments.
void encodeJpeg(UprightPage& upright, StagedFile& file);
constexpr int jpegMostSidePx = 65500; ///< the most that libjpeg takes

/// The same file with `blocks`, which are upright, in place of rows: their coefficients, tables and
/// colours stay as they are. RGB has no JFIF header, which says YCbCr, but Adobe's marker; its
/// density goes into Exif data. Throws UnfitBlocks when `blocks` do.
void encodeJpegBlocks(UprightPage& upright, JpegBlocks& blocks, StagedFile& file);

/// PNG (ISO/IEC 15948) of the colour type and depth of the rows. Threads change no byte of it.
/// Metadata: see writePngMetadata.
void encodePng(UprightPage& upright, StagedFile& file);

/// BMP with a BITMAPINFOHEADER, bottom-up, of 1, 8 (with colour table) or 24 bits a pixel.
void encodeBmp(UprightPage& upright, StagedFile& file);

/// GIF89a. Keeps up to 256 colours; reduces more with error diffusion in a second pass. Pixels less
/// than half opaque become transparent, others are laid over white.
void encodeGif(UprightPage& page, StagedFile& file);
constexpr int gifMostSidePx = 65535;

/// Throws std::runtime_error: the page is too large for `format`.
[[noreturn]] void throwTooLarge(const PageProperties& page, QLatin1StringView format);

/// The 2^`bits` levels from black to white.
std::vector<RgbColor> grayPalette(int bits);

/// Appends the lowest `bytes` bytes of `value`, the least significant one first.
void appendNumber(std::vector<std::uint8_t>& to, std::uint32_t value, int bytes);

} // namespace pagestack
