#pragma once

#include "engine/image/pixels/RowSource.h"

#include <memory>

namespace pagestack {

class TiffPage;
struct TiffPageTags;

/// Starts a pass over `page` in stored order, with its samples brought to one of
/// the layouts of PixelLayout: gray with 0 as black, palettes kept, RGB; 16 bits where the page has
/// more than 8; CMYK and L*a*b* turned into sRGB, YCbCr into RGB; alpha kept, other extra samples
/// dropped. `shownBits`, 8 or 16, is the depth that samples come to in the end; the page gets a
/// warning when that leaves next to nothing of them. `page` must outlive the pass, and no other
/// page of its reader may be asked for meanwhile. Throws std::runtime_error when the page is of a
/// kind that is not supported.
std::unique_ptr<RowSource> displayRows(const TiffPage& page, int shownBits);

/// True when libtiff's own conversion to RGBA is needed to interpret the page: old-style JPEG,
/// LogLuv, and YCbCr that no JPEG decoder turns into RGB.
bool needsRgbaInterface(const TiffPageTags& tags);

/// True when the ICC profile of the page describes what `displayRows` gives: a gray or RGB profile
/// for gray or RGB pixels. False for pages whose colours are converted.
bool profileFitsDisplayRows(const TiffPageTags& tags);

} // namespace pagestack
