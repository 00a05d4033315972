#pragma once

#include "engine/preview/PagePicture.h"

#include <QImage>

#include <functional>

namespace pagestack {

/// What a view shows: a page, or a part of it, as an image.
struct ShownImage
{
    QImage image {};
    QRect region {}; ///< of the upright page
    QSize pageSize {};
    QStringList losses {};
    bool hasParts = true; ///< see PagePicture
};

/// Makes the image of what is wanted of a page; throws the std::runtime_error of its reason. Any
/// thread.
using MakeImage = std::function<ShownImage(const PictureWish& wish, const IsStopped& isStopped)>;

/// Takes over the samples.
ShownImage shownImage(PagePicture picture);

} // namespace pagestack
