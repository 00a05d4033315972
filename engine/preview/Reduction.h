#pragma once

#include "engine/image/pixels/Bitmap.h"
#include "engine/preview/BoxReducer.h"
#include "engine/preview/PagePicture.h"

#include <functional>

namespace pagestack {

/// The stored rows and columns that become a picture, and its size before it is turned.
struct Reduction
{
    QRect from;
    QSize to;

    int firstRowOf(int row) const
    {
        return from.y() + static_cast<int>(BoxReducer::boxStart(row, from.height(), to.height()));
    }

    /// Makes the rows of the picture from `first` up to `end`, a packed row each call of `take`.
    /// `rows` are those of the page, 8 bits a sample, and begin at row `begin`, at or above what is
    /// wanted. Of a whole page, what comes behind the last row is judged as well. Throws
    /// std::runtime_error, also when `isStopped` says so.
    void reduce(RowSource& rows, int begin, int first, int end, const IsStopped& isStopped,
                const std::function<void(const std::vector<std::uint8_t>& row)>& take) const;
};

/// Gives `picture` the pixels of the stored one, upright and in sRGB.
void finishPicture(PagePicture& picture, const Bitmap& stored, const PageProperties& properties);

} // namespace pagestack
