#pragma once

#include "engine/options/ConversionOptions.h"
#include "engine/preview/PagePicture.h"

#include <QByteArray>

#include <optional>

namespace pagestack {

/// What a page becomes by some options: its file, in memory.
struct ResultSample
{
    OutputType type = OutputType::Jpeg;
    QSize pageSize {}; ///< of the upright page
    QRect region {}; ///< what of it the result shows
    std::int64_t bytes = 0; ///< of the file of the whole page
    bool isEstimated = false; ///< since the page is large and only a part of it was encoded
    QByteArray file {}; ///< empty for TIFF
    std::optional<PagePicture> picture {}; ///< for TIFF: all that the result shows
    QStringList losses {};
};

/// Encodes page `index`, from 0, as a run with `options` does; of a page that is too large to be
/// looked at as a whole, a part around `center` of the upright page. No file stays behind. Throws
/// std::runtime_error with the reason of a run, or when `isStopped` says so.
ResultSample resultSample(const std::shared_ptr<const OpenTiffFile>& file, int index,
                          const ConversionOptions& options, const QPoint& center,
                          const IsStopped& isStopped);

} // namespace pagestack
