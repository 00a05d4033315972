#include "engine/image/tiff/TiffMessages.h"

#include "engine/image/tiff/CodecMessages.h"

#include <stdexcept>
#include <string_view>
#include <utility>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

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

void TiffMessages::addWarning(const char* module, const std::string& text)
{
    switch (classOfWarning(module != nullptr ? module : "", text)) {
    case CodecMessage::Harmless:
        break;
    case CodecMessage::Unsure:
        addPageWarning(u"the decoder says: "_s + QString::fromStdString(withoutName(text)));
        break;
    case CodecMessage::Loss:
        if (m_reason.empty())
            m_reason = withoutName(text);
        break;
    case CodecMessage::RepairedRow:
        ++m_repairedRows;
        break;
    case CodecMessage::JpegTail:
        m_jpegTail = countBefore(text, " extraneous bytes");
        break;
    case CodecMessage::ProgressiveJpeg:
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
    m_found.leftOutTags.clear();
}

void TiffMessages::addPageWarning(const QString& text)
{
    if (!m_found.warnings.contains(text))
        m_found.warnings.append(text);
}

void TiffMessages::adopt(const PageDiagnostics& found)
{
    forget();
    m_found.warnings = found.warnings;
    m_found.leftOutTags = found.leftOutTags;
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
