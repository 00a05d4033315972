#include "engine/image/TiffMessages.h"

#include "engine/support/SystemLog.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// A damaged fax page can give a message a row.
    constexpr int mostReports = 20;

    /// A warning after which some rows hold no pixels of the page: libtiff 4.5 goes on after it as
    /// if it had decoded the strip.
    struct LostPixels
    {
        std::string_view module; ///< that gives it; any when empty
        std::string_view sign; ///< in the text
    };
    constexpr std::array lostPixelWarnings {
        LostPixels { "", "Premature EOF" }, // fax: the strip ends before its last row
        // A row that is too short or too long makes those below it wrong: in T.6, and where no end
        // of line parts the rows.
        LostPixels { "Fax4Decode", "Premature EOL" },
        LostPixels { "Fax4Decode", "Line length mismatch" },
        LostPixels { "Fax3DecodeRLE", "Premature EOL" },
        LostPixels { "Fax3DecodeRLE", "Line length mismatch" },
        LostPixels { "", "Improper JPEG strip/tile size" },
        LostPixels { "", "Premature end of JPEG file" },
        // Of a stream only the first of these is given, whatever else is wrong with it.
        LostPixels { "", "Corrupt JPEG data" },
        LostPixels { "", "Inconsistent progression sequence" },
        LostPixels { "JBIG", "Only decoded" },
    };
    // Of T.4, where rows below are sound again, at the latest from one that stands for itself.
    constexpr std::array repairedRowWarnings {
        std::string_view { "Premature EOL" },
        std::string_view { "Line length mismatch" },
    };
    constexpr std::string_view behindTheLastRow = "extraneous bytes before marker 0xd9";

    bool tellsOfLostPixels(std::string_view module, std::string_view text)
    {
        const auto is = [&](const LostPixels& lost) {
            return (lost.module.empty() || lost.module == module)
                && text.find(lost.sign) != std::string_view::npos;
        };
        return std::any_of(lostPixelWarnings.begin(), lostPixelWarnings.end(), is)
            && text.find(behindTheLastRow) == std::string_view::npos;
    }

    bool tellsOfRepairedRow(std::string_view text)
    {
        return std::any_of(
            repairedRowWarnings.begin(), repairedRowWarnings.end(),
            [=](std::string_view sign) { return text.find(sign) != std::string_view::npos; });
    }

} // namespace

TiffMessages::TiffMessages(QString fileName, std::shared_ptr<LogQuota> quota)
    : m_fileName(std::move(fileName))
    , m_quota(std::move(quota))
{
    if (!m_quota)
        m_quota = std::make_shared<LogQuota>(
            mostReports, u"%1: further messages are left out"_s.arg(m_fileName));
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

void TiffMessages::addWarning(const char* module, const std::string& text)
{
    if (!tellsOfLostPixels(module != nullptr ? module : "", text))
        m_repairedRows += tellsOfRepairedRow(text) ? 1 : 0;
    else if (m_reason.empty())
        m_reason = withoutName(text);
    report("warning", module, text);
}

void TiffMessages::report(const char* kind, const char* module, const std::string& text)
{
    systemLog(u"%1: %2: %3: %4"_s.arg(m_fileName, QLatin1StringView(kind),
                                      QString::fromUtf8(module != nullptr ? module : "libtiff"),
                                      QString::fromStdString(withoutName(text))),
              m_quota);
}

void TiffMessages::forget()
{
    m_reason.clear();
    m_repairedRows = 0;
}

void TiffMessages::fail(const char* fallback) const
{
    throw std::runtime_error(m_reason.empty() ? fallback : m_reason);
}

} // namespace pagestack
