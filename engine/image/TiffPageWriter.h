#pragma once

#include "engine/image/PageSource.h"

struct tiff;

namespace pagestack {

/// Which page of how many a page is in its file.
struct PagePosition
{
    int index = 0; ///< from 0
    int total = 1;
};

/// Sets the tags and writes the strips or tiles of one page to `handle`, a handle for writing,
/// without its directory. `compression` is the value of the Compression tag that is asked for.
/// Throws std::runtime_error with the reason when the page cannot be decoded or encoded.
void writeTiffPage(tiff* handle, const PageSource& page, int compression, PagePosition position);

} // namespace pagestack
