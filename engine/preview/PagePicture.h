#pragma once

#include "engine/preview/PreviewFile.h"

#include <QRect>
#include <QSize>
#include <QStringList>

#include <cstdint>
#include <vector>

namespace pagestack {

/// What is wanted of a page.
struct PictureWish
{
    int page = 0; ///< from 0
    QRect region {}; ///< of the upright page; an empty one means all of it
    QSize most {}; ///< of the picture, which has the shape of the region and no more pixels than it
};

/// A page, or a part of it, upright and in sRGB, laid over white.
struct PagePicture
{
    QSize pageSize {}; ///< of the upright page
    QRect region {}; ///< what of it the picture shows
    QSize size {}; ///< of the picture
    int channels = 1; ///< 1 (gray) or 3 (RGB), of 8 bits
    std::vector<std::uint8_t> samples {}; ///< rows from the top, without gaps
    QStringList losses {}; ///< what a run would warn of; of a whole page only
    /// False for a page whose parts take as long as all of it, and a copy of it on the disk.
    bool hasParts = true;
};

/// Reads the page in bands, with the help of other threads where it is large, and reduces it by a
/// box filter; black and white becomes gray. Throws std::runtime_error with the reason, which is
/// that of a run, or when `isStopped` says so; std::out_of_range for a page that is not there.
PagePicture pictureOf(const std::shared_ptr<const OpenTiffFile>& file, const PictureWish& wish,
                      const IsStopped& isStopped);

/// Brings `region` into the page; an empty one becomes all of it.
QRect regionInPage(const QRect& region, const QSize& page);

/// The size of the picture of `region`: its shape in `most`, no larger than itself.
QSize reducedSize(const QSize& region, const QSize& most);

} // namespace pagestack
