#pragma once

#include <string_view>

namespace pagestack {

/// What a warning that libtiff 4.5 gives while it decodes pixels means for the page.
enum class CodecMessage {
    Harmless, ///< every pixel is as the file has it
    Unsure, ///< pixels may be others; the user is told
    Loss, ///< pixels are missing or wrong; the page is refused
    RepairedRow, ///< a row of a T.4 fax is white from some place on; the user is told
    JpegTail, ///< data are left over at the end of a JPEG stream; see JpegTail.h
    ProgressiveJpeg, ///< a stream of several scans, of which some may be missing; see JpegTail.h
};

/// The class of a warning by the module that gives it and its text; one that is not in the table is
/// Unsure. Errors are not asked for: after one, the page is refused.
CodecMessage classOfWarning(std::string_view module, std::string_view text);

} // namespace pagestack
