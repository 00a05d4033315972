#include "engine/image/tiff/TiffMessages.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// What a warning that libtiff 4.5 gives while it decodes pixels means for the page.
    enum class CodecMessage {
        Harmless, ///< every pixel is as the file has it
        Unsure, ///< pixels may be others; the user is told
        Loss, ///< pixels are missing or wrong; the page is refused
        RepairedRow, ///< a row of a T.4 fax is white from some place on; the user is told
        LeftOverJpeg, ///< data are left over at the end of a JPEG stream; see JpegTail.h
        ProgressiveJpeg, ///< a stream of several scans, of which some may be missing; the same
    };

    struct Entry
    {
        std::string_view module; ///< that gives it; any when empty
        std::string_view sign; ///< in the text
        CodecMessage meaning;
    };

    using enum CodecMessage;

    // The warnings of libtiff 4.5's codecs and of libjpeg, which they pass on; the first entry that
    // fits counts.
    constexpr std::array meanings {
        // Fax. The strip ends before its last row.
        Entry { "", "Premature EOF", Loss },
        // A row that is too short or too long makes those below it wrong: in T.6, and where no end
        // of line parts the rows. In T.4 rows below are sound again, at the latest from one that
        // stands for itself.
        Entry { "Fax4Decode", "Premature EOL", Loss },
        Entry { "Fax4Decode", "Line length mismatch", Loss },
        Entry { "Fax3DecodeRLE", "Premature EOL", Loss },
        Entry { "Fax3DecodeRLE", "Line length mismatch", Loss },
        Entry { "", "Premature EOL", RepairedRow },
        Entry { "", "Line length mismatch", RepairedRow },

        // JPEG. Of a stream libjpeg gives the first warning alone, whatever else is wrong with it:
        // one that is harmless in itself hides others.
        Entry { "", "extraneous bytes before marker 0xd9", LeftOverJpeg },
        Entry { "", "Corrupt JPEG data", Loss },
        Entry { "", "Premature end of JPEG file", Loss },
        Entry { "", "Inconsistent progression sequence", Loss },
        Entry { "", "Unknown Adobe color transform code", Unsure },
        Entry { "", "unknown JFIF revision number", Unsure },
        Entry { "", "Invalid SOS parameters for sequential JPEG", Unsure },
        // Rows of a strip of another size would be those of other places.
        Entry { "", "Improper JPEG strip/tile size", Loss },
        Entry { "", "fractional scanline not read", Loss },
        // A last strip that is filled up with rows.
        Entry { "", "JPEG strip size exceeds expected dimensions", Harmless },
        Entry { "", "encoded with progressive mode", ProgressiveJpeg },
        // The sub-sampling of the JPEG data is taken, which is that of the pixels.
        Entry { "", "Auto-corrected former TIFF subsampling values", Harmless },
        Entry { "", "auto-correcti", Unsure }, // of which something came in the way
        // Old-style JPEG: by the data, not by the tags, again.
        Entry { "", "Deprecated and troublesome old-style JPEG", Harmless },
        Entry { "", "assuming subsampling inside JPEG data is correct", Harmless },
        Entry { "", "Subsampling tag not appropriate", Harmless },

        // What is missing then is an error of its own.
        Entry { "", "not terminated with EOI code", Harmless }, // LZW
        Entry { "", "Old-style LZW codes", Harmless },
        // Bytes of rows, which libtiff leaves out, and those that are not there.
        Entry { "", "to avoid buffer overrun", Loss }, // PackBits
        Entry { "", "Terminating PackBitsDecode", Loss },
        Entry { "", "data truncated", Loss }, // PixarLog
        Entry { "JBIG", "Only decoded", Loss },
        Entry { "", "Unexpected version number", Harmless }, // LERC; it decodes, or it fails
        // Colour maps of 8 bits.
        Entry { "", "Assuming 8-bit colormap", Harmless },
    };

    /// The class of a warning by the module that gives it and its text; one that is not in the
    /// table is Unsure. Errors are not asked for: after one, the page is refused.
    CodecMessage classOfWarning(std::string_view module, std::string_view text)
    {
        const auto* const entry = std::ranges::find_if(meanings, [=](const Entry& row) {
            return (row.module.empty() || row.module == module)
                && text.find(row.sign) != std::string_view::npos;
        });
        return entry == meanings.end() ? Unsure : entry->meaning;
    }

    /// The count in "17 extraneous bytes before marker 0xd9" behind other words.
    std::uint64_t countBefore(std::string_view text, std::string_view sign)
    {
        std::size_t at = text.find(sign);
        std::uint64_t count = 0;
        for (std::uint64_t place = 1; at-- > 0 && text[at] >= '0' && text[at] <= '9'; place *= 10)
            count += place * static_cast<unsigned>(text[at] - '0');
        return count;
    }

} // namespace

TiffMessages::TiffMessages(QString fileName)
    : m_fileName(std::move(fileName))
{
}

/// libtiff puts the file's name before some of its messages.
std::string TiffMessages::withoutName(const std::string& text) const
{
    const std::string name = m_fileName.toStdString() + ": ";
    return text.starts_with(name) ? text.substr(name.size()) : text;
}

void TiffMessages::addError(const char* module, const std::string& text)
{
    if (m_reason.empty())
        m_reason = withoutName(text);
    report("error", module, text);
}

void TiffMessages::noteWantOfMemory() noexcept
{
    if (m_reason.empty())
        m_reason = "out of memory"; // so short that it takes none
}

void TiffMessages::addWarning(const char* module, const std::string& text)
{
    switch (classOfWarning(module != nullptr ? module : "", text)) {
    case Harmless:
        break;
    case Unsure:
        addPageWarning(u"the decoder says: "_s + QString::fromStdString(withoutName(text)));
        break;
    case Loss:
        if (m_reason.empty())
            m_reason = withoutName(text);
        break;
    case RepairedRow:
        ++m_repairedRows;
        break;
    case LeftOverJpeg:
        m_jpegTail = countBefore(text, " extraneous bytes");
        break;
    case ProgressiveJpeg:
        m_isProgressiveJpeg = true;
        break;
    }
    report("warning", module, text);
}

void TiffMessages::report(const char* kind, const char* module, const std::string& text)
{
    addLogLine(u"%1: %2: %3"_s.arg(QLatin1StringView(kind),
                                   QString::fromUtf8(module != nullptr ? module : "libtiff"),
                                   QString::fromStdString(withoutName(text))));
}

void TiffMessages::addLogLine(const QString& text)
{
    m_found.addLogLine(m_fileName + u": "_s + text);
}

void TiffMessages::addLogLines(const QStringList& lines)
{
    for (const QString& line : lines)
        m_found.addLogLine(line);
}

void TiffMessages::forget()
{
    m_reason.clear();
    m_repairedRows = 0;
    m_jpegTail.reset();
    m_isProgressiveJpeg = false;
    m_found.warnings.clear();
    m_found.remarks.clear();
    m_found.changesPixels = false;
    m_found.isTakenOver = false;
    m_found.leftOutTags.clear();
    m_found.tagsWithoutPlace.clear();
}

void TiffMessages::addPageWarning(const QString& text)
{
    if (!m_found.warnings.contains(text))
        m_found.warnings.append(text);
}

void TiffMessages::addRemark(const QString& text)
{
    if (!m_found.remarks.contains(text))
        m_found.remarks.append(text);
}

void TiffMessages::adopt(const PageDiagnostics& found)
{
    forget();
    m_found.warnings = found.warnings;
    m_found.remarks = found.remarks;
    m_found.changesPixels = found.changesPixels;
    m_found.isTakenOver = found.isTakenOver;
    m_found.leftOutTags = found.leftOutTags;
    m_found.tagsWithoutPlace = found.tagsWithoutPlace;
    addLogLines(found.logLines);
}

PageDiagnostics TiffMessages::takeDiagnostics()
{
    PageDiagnostics found = m_found;
    m_found.logLines.clear();
    QStringList& warnings = found.warnings;
    if (m_repairedRows == 1)
        warnings.prepend(u"1 row of the fax is damaged; what is lost of it is white"_s);
    else if (m_repairedRows > 1)
        warnings.prepend(
            u"%1 rows of the fax are damaged; what is lost of them is white"_s.arg(m_repairedRows));
    if (m_jpegTail)
        warnings.append(jpegTailWarning());
    return found;
}

QString TiffMessages::jpegTailWarning()
{
    return u"its JPEG data go on behind the last pixels; some of them may be damaged"_s;
}

void TiffMessages::fail(const char* fallback) const
{
    throw std::runtime_error(m_reason.empty() ? fallback : m_reason);
}

} // namespace pagestack
