#include "engine/image/tiff/CodecMessages.h"

#include <algorithm>
#include <array>

namespace pagestack {

namespace {

    struct Entry
    {
        std::string_view module; ///< that gives it; any when empty
        std::string_view sign; ///< in the text
        CodecMessage meaning;
    };

    constexpr CodecMessage harmless = CodecMessage::Harmless;
    constexpr CodecMessage unsure = CodecMessage::Unsure;
    constexpr CodecMessage loss = CodecMessage::Loss;

    // The warnings of libtiff 4.5's codecs and of libjpeg, which they pass on; the first entry that
    // fits counts.
    constexpr std::array meanings {
        // Fax. The strip ends before its last row.
        Entry { "", "Premature EOF", loss },
        // A row that is too short or too long makes those below it wrong: in T.6, and where no end
        // of line parts the rows. In T.4 rows below are sound again, at the latest from one that
        // stands for itself.
        Entry { "Fax4Decode", "Premature EOL", loss },
        Entry { "Fax4Decode", "Line length mismatch", loss },
        Entry { "Fax3DecodeRLE", "Premature EOL", loss },
        Entry { "Fax3DecodeRLE", "Line length mismatch", loss },
        Entry { "", "Premature EOL", CodecMessage::RepairedRow },
        Entry { "", "Line length mismatch", CodecMessage::RepairedRow },

        // JPEG. Of a stream libjpeg gives the first warning alone, whatever else is wrong with it:
        // one that is harmless in itself hides others.
        Entry { "", "extraneous bytes before marker 0xd9", CodecMessage::JpegTail },
        Entry { "", "Corrupt JPEG data", loss },
        Entry { "", "Premature end of JPEG file", loss },
        Entry { "", "Inconsistent progression sequence", loss },
        Entry { "", "Unknown Adobe color transform code", unsure },
        Entry { "", "unknown JFIF revision number", unsure },
        Entry { "", "Invalid SOS parameters for sequential JPEG", unsure },
        // Rows of a strip of another size would be those of other places.
        Entry { "", "Improper JPEG strip/tile size", loss },
        Entry { "", "fractional scanline not read", loss },
        // A last strip that is filled up with rows.
        Entry { "", "JPEG strip size exceeds expected dimensions", harmless },
        Entry { "", "encoded with progressive mode", CodecMessage::ProgressiveJpeg },
        // The sub-sampling of the JPEG data is taken, which is that of the pixels.
        Entry { "", "Auto-corrected former TIFF subsampling values", harmless },
        Entry { "", "auto-correcti", unsure }, // of which something came in the way
        // Old-style JPEG: by the data, not by the tags, again.
        Entry { "", "Deprecated and troublesome old-style JPEG", harmless },
        Entry { "", "assuming subsampling inside JPEG data is correct", harmless },
        Entry { "", "Subsampling tag not appropriate", harmless },

        // What is missing then is an error of its own.
        Entry { "", "not terminated with EOI code", harmless }, // LZW
        Entry { "", "Old-style LZW codes", harmless },
        // Bytes of rows, which libtiff leaves out, and those that are not there.
        Entry { "", "to avoid buffer overrun", loss }, // PackBits
        Entry { "", "Terminating PackBitsDecode", loss },
        Entry { "", "data truncated", loss }, // PixarLog
        Entry { "JBIG", "Only decoded", loss },
        Entry { "", "Unexpected version number", harmless }, // LERC; it decodes, or it fails
        // Colour maps of 8 bits.
        Entry { "", "Assuming 8-bit colormap", harmless },
    };

} // namespace

CodecMessage classOfWarning(std::string_view module, std::string_view text)
{
    const auto* const entry = std::find_if(meanings.begin(), meanings.end(), [=](const Entry& row) {
        return (row.module.empty() || row.module == module)
            && text.find(row.sign) != std::string_view::npos;
    });
    return entry == meanings.end() ? unsure : entry->meaning;
}

} // namespace pagestack
