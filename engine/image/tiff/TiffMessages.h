#pragma once

#include "engine/log/Diagnostic.h"

#include <QString>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace pagestack {

/// Collects the messages of libtiff about one open file. The first one since `forget` that tells of
/// a failure is kept as its reason.
class TiffMessages
{
public:
    explicit TiffMessages(QString fileName);

    const QString& fileName() const { return m_fileName; }

    void addError(const char* module, const std::string& text);
    void addWarning(const char* module, const std::string& text);

    /// For a message that there was no memory for: as a failure, whatever it said.
    void noteWantOfMemory() noexcept;

    /// Forgets all messages except for the log lines, which wait for `takeDiagnostics`.
    void forget();

    /// True after an error, or a warning about pixels that are lost, since the last `forget`.
    bool failed() const { return !m_reason.empty(); }

    /// Adds to the warnings of `takeDiagnostics`, once however often it is given.
    void addPageWarning(const QString& text);

    /// The same for its remarks.
    void addRemark(const QString& text);

    /// Adds `text` to the log lines, behind the name of the file.
    void addLogLine(const QString& text);
    /// Adds finished log lines.
    void addLogLines(const QStringList& lines);

    /// The pixels of the page are others in a TIFF file.
    void setPixelsChanged() { m_found.changesPixels = true; }

    /// The JPEG data of the page are in its file as they were.
    void setTakenOver() { m_found.isTakenOver = true; }

    /// The tags of the page that were left out of its file.
    void setLeftOutTags(const QStringList& names) { m_found.leftOutTags = names; }
    void setTagsWithoutPlace(const QStringList& names) { m_found.tagsWithoutPlace = names; }

    /// Everything about the pixels that were read since the last `forget`, with the log lines since
    /// the last call. Rows of a T.4 fax (Compression 3) that turned out too short or too long are
    /// among the warnings: libtiff makes them white from where they stop making sense, as a fax
    /// machine does.
    PageDiagnostics takeDiagnostics();

    /// Takes over the messages of another handle on the page.
    void adopt(const PageDiagnostics& found);

    /// How many bytes libjpeg left before the end of a stream, if it did since this was asked last.
    /// What nobody asks for becomes the warning `jpegTailWarning`.
    std::optional<std::uint64_t> takeJpegTail() { return std::exchange(m_jpegTail, {}); }
    static QString jpegTailWarning();

    /// True when a progressive JPEG stream was begun since this was asked last.
    bool takeProgressiveJpeg() { return std::exchange(m_isProgressiveJpeg, false); }

    /// Throws std::runtime_error with the reason, or with `fallback` if libtiff gave none.
    [[noreturn]] void fail(const char* fallback) const;

private:
    std::string withoutName(const std::string& text) const;
    void report(const char* kind, const char* module, const std::string& text);

    QString m_fileName;
    std::string m_reason;
    int m_repairedRows = 0;
    std::optional<std::uint64_t> m_jpegTail;
    bool m_isProgressiveJpeg = false;
    PageDiagnostics m_found;
};

} // namespace pagestack
