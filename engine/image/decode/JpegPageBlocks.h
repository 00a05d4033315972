#pragma once

#include "engine/image/formats/JpegBlocks.h"

#include <memory>

namespace pagestack {

class TiffPage;

/// The coefficients of a page whose data are JPEG, as it is stored; the streams of its strips or
/// tiles are joined. A JPEG image of them has the pixels of the page, but for how colour is
/// interpolated where streams meet. Null if there is no such image: what the page's samples mean is
/// not what a JPEG file says, something is to be done to them, or whole MCUs cannot be turned
/// upright. The page's messages are forgotten; it must outlive the blocks and stay the current
/// one of its reader. Throws UnfitBlocks where streams do not fit together, and
/// std::runtime_error as a decoder would.
std::shared_ptr<JpegBlocks> pageBlocks(const TiffPage& page);

} // namespace pagestack
