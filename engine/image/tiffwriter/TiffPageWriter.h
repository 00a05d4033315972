#pragma once

#include "engine/image/pixels/PageSource.h"
#include "engine/image/tiffwriter/PagePosition.h"

struct tiff;

namespace pagestack {

struct EncodedPieces;

/// Sets the tags and writes the strips or tiles of one page to `handle`, without its directory.
/// `compression` is the value of the Compression tag that is wanted. `pieces`, if there are any
/// (from encodePieces for the same page and compression), take the place of encoding it; their
/// diagnostics are adopted by the page's reader. Throws std::runtime_error.
void writeTiffPage(tiff* handle, const PageSource& page, int compression, PagePosition position,
                   const EncodedPieces& pieces);

/// True when the page's samples are kept as they are; else they are written as they are shown.
/// Throws std::runtime_error when its directory cannot be read.
bool keepsSamples(const PageSource& page);

/// True when they are kept and strips or tiles have to be decoded or encoded for that, or when the
/// page's pixels are changed. Throws in the same way.
bool isRecoded(const PageSource& page, int compression);

} // namespace pagestack
