#pragma once

namespace pagestack {

/// Which page of how many a page is in its file.
struct PagePosition
{
    int index = 0; ///< from 0
    int total = 1;
};

} // namespace pagestack
