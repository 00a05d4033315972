#pragma once

#include "engine/files/StagedFile.h"
#include "engine/image/tiffwriter/EncodedPieces.h"
#include "engine/support/SystemLog.h"

#include <QStringList>

#include <memory>
#include <optional>

namespace pagestack {

/// What was made of a page ahead of its turn, on whatever thread. Nothing at all is no fault: who
/// takes the page then does everything itself.
struct PrefetchedPage
{
    std::unique_ptr<StagedFile> file; ///< the complete output; only to be put in place
    HeldLines complaints; ///< to be written to the system log with `file`
    std::optional<QStringList> warnings; ///< see PageImage; of `file` or `pieces`, none without
    QStringList leftOutTags; ///< see PageImage; of `file`
    EncodedPieces pieces; ///< for the TIFF file that the page is gathered in
};

} // namespace pagestack
