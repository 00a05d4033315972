#pragma once

#include "engine/options/ConversionOptions.h"
#include "engine/preview/ResultFile.h"

namespace pagestack {

/// What a page becomes by some options.
struct ResultSample
{
    OutputType type = OutputType::Jpeg;
    QSize pageSize {}; ///< of the upright page
    QRect region {}; ///< what of it the result shows
    std::int64_t bytes = 0; ///< of the file of the whole page
    bool isEstimated = false; ///< since the page is large and only a part of it was encoded
    std::shared_ptr<const ResultFile> file {}; ///< of `region`
    QStringList losses {};
};

/// Encodes page `index`, from 0, as a run with `options` does; of a page that is too large to be
/// looked at as a whole, a part around `center` of the upright page. No file stays behind. Throws
/// std::runtime_error with the reason of a run, or when `isStopped` says so.
ResultSample resultSample(const std::shared_ptr<const OpenTiffFile>& file, int index,
                          const ConversionOptions& options, const QPoint& center,
                          const IsStopped& isStopped);

/// As `pictureOf`, of what the result shows of the page: `wish.region`, of the page, has no pixels
/// where it lies elsewhere.
PagePicture pictureOf(const ResultSample& sample, const PictureWish& wish,
                      const IsStopped& isStopped);

} // namespace pagestack
