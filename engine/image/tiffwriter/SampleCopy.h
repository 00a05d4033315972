#pragma once

#include "engine/image/tiffwriter/PagePosition.h"

struct tiff;

namespace pagestack {

class TiffPage;
struct EncodedPieces;

/// Writes a page of a TIFF file with its samples as they are, as writeTiffPage does: strips or
/// tiles that fit are copied as they lie, others decoded and encoded anew.
void writeSamples(tiff* handle, const TiffPage& page, int compression, PagePosition position,
                  const EncodedPieces& pieces);

/// True when strips or tiles have to be decoded or encoded for that. Throws std::runtime_error when
/// the page's directory cannot be read.
bool samplesAreRecoded(const TiffPage& page, int compression);

} // namespace pagestack
