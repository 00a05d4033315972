#pragma once

#include "engine/files/StagedFile.h"
#include "engine/image/tiffwriter/EncodedPieces.h"
#include "engine/log/Diagnostic.h"

#include <memory>

namespace pagestack {

/// The result of encoding a page before its turn, on any thread. May be empty; the page is then
/// encoded when it is taken.
struct PrefetchedPage
{
    std::unique_ptr<StagedFile> file; ///< the complete output; only to be put in place
    PageDiagnostics diagnostics; ///< of `file`
    EncodedPieces pieces; ///< for the TIFF file that the page is gathered in
};

} // namespace pagestack
