#pragma once

#include "engine/image/decode/StoredRows.h"
#include "engine/image/pixels/RowSource.h"

#include <memory>
#include <optional>

namespace pagestack {

class TiffPage;
struct TiffPageTags;

/// Starts a pass over `page` in stored order and brings it to a PixelLayout: gray with 0 as black,
/// palettes kept, RGB; 16 bits if the page has more than 8; CMYK and L*a*b* become sRGB, YCbCr RGB;
/// alpha stays, other extra samples go. `shownBits` (8 or 16) is the depth of samples in the end;
/// the page gets a warning if next to nothing is left of them. `page` must outlive the pass and
/// stay the current one of its reader. Throws std::runtime_error for an unsupported kind of page.
/// With a `part`, for a page that does not need the RGBA interface, the pass begins at its row.
/// `work` is as for PageSource::rowsShownIn.
std::unique_ptr<RowSource> displayRows(const TiffPage& page, int shownBits,
                                       const std::optional<PagePart>& part = {},
                                       SharedWork* work = nullptr);

/// True when libtiff's own conversion to RGBA is needed to interpret the page: old-style JPEG,
/// LogLuv, and YCbCr that no JPEG decoder turns into RGB.
bool needsRgbaInterface(const TiffPageTags& tags);

/// A pass over such a page, a strip or a row of tiles at a time: 8-bit RGB, opaque, or gray where
/// the page is gray. Throws std::runtime_error.
std::unique_ptr<RowSource> rgbaRows(const TiffPage& page);

/// True if the ICC profile of the page holds for its `displayRows`.
bool profileFitsDisplayRows(const TiffPageTags& tags);

} // namespace pagestack
