#pragma once

#include "engine/files/StagedFile.h"
#include "engine/image/pixels/PageSource.h"
#include "engine/image/pixels/RowConversions.h"

#include <functional>
#include <memory>

namespace pagestack {

class SpareThreads;

/// The encoders of the one-page formats. Each takes upright rows that `adaptRows` brought to what
/// its `...Pixels` function names, and the properties of the upright page, and appends a complete
/// file to `file`. Each throws std::runtime_error with the reason when the rows cannot be read, the
/// page is too large for the format or the file takes no more. Any thread.
///
/// Where a `check...Size` stands, it is asked first, before any row is made: turning a page upright
/// takes time and memory. It throws std::runtime_error when the upright page has a side that the
/// format has no number for.

TargetPixels jpegPixels();
void checkJpegSize(const PageProperties& page);
/// Baseline JPEG with standard Huffman tables (ITU-T T.81; JFIF 1.02). `quality` in tenths: 4:4:4
/// from 10 on, else 4:2:0. Gray stays one channel. The ICC profile goes into APP2 segments (ICC.1,
/// annex B.4). The density is rounded to whole pixels an inch, or a centimetre where that is exact.
void encodeJpeg(RowSource& rows, const PageProperties& page, int quality, StagedFile& file);

TargetPixels pngPixels();
/// PNG (ISO/IEC 15948) of the colour type and depth of the rows. `threads`, which may be null, can
/// help with a large page; the file is the same.
void encodePng(RowSource& rows, const PageProperties& page, SpareThreads* threads,
               StagedFile& file);

TargetPixels bmpPixels();
/// BMP with a BITMAPINFOHEADER, bottom-up, of 1, 8 (with colour table) or 24 bits a pixel.
void encodeBmp(RowSource& rows, const PageProperties& page, StagedFile& file);

TargetPixels gifPixels();
void checkGifSize(const PageProperties& page);
/// GIF89a. Up to 256 colours are kept exactly; more are reduced with error diffusion, for which the
/// page is read twice. Pixels less than half opaque become transparent, others are laid over white.
/// `source` is asked for as many passes as needed; each must give the same rows.
void encodeGif(const std::function<std::unique_ptr<RowSource>()>& source, StagedFile& file);

} // namespace pagestack
