#include "engine/image/TiffMessages.h"

#include "engine/support/SystemLog.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    /// A damaged fax page can give a message a row.
    constexpr int mostReports = 20;

    /// Warnings after which some rows hold no pixels of the page: libtiff 4.5 goes on after them as
    /// if it had decoded the strip.
    constexpr std::array<const char*, 4> lostPixelWarnings {
        "Premature EOF", // fax: the strip ends before its last row
        "Premature end of JPEG file",
        "premature end of data segment",
        "Corrupt JPEG data: bad Huffman code",
    };

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
    const bool pixelsAreLost
        = std::any_of(lostPixelWarnings.begin(), lostPixelWarnings.end(),
                      [&](const char* sign) { return text.find(sign) != std::string::npos; });
    if (pixelsAreLost && m_reason.empty())
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

void TiffMessages::forget() { m_reason.clear(); }

void TiffMessages::fail(const char* fallback) const
{
    throw std::runtime_error(m_reason.empty() ? fallback : m_reason);
}

} // namespace pagestack
