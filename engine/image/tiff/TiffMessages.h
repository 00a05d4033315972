#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace pagestack {

class LogQuota;

/// What libtiff has to say about one open file. Every message goes to the system log with the
/// file's name, up to a limit. The first since `forget` that tells of a failure is kept as its
/// reason; see CodecMessages.h for what warnings mean.
class TiffMessages
{
public:
    /// `quota` is the limit: that of another handle on the same file, or none, for one of its own.
    explicit TiffMessages(QString fileName, std::shared_ptr<LogQuota> quota = {});

    const QString& fileName() const { return m_fileName; }
    const std::shared_ptr<LogQuota>& quota() const { return m_quota; }

    void addError(const char* module, const std::string& text);
    void addWarning(const char* module, const std::string& text);

    /// Starts anew: no message so far.
    void forget();

    /// True when an error came, or a warning that tells of pixels that could not be read, since the
    /// last `forget`.
    bool failed() const { return !m_reason.empty(); }

    /// Adds to `pageWarnings`, once however often it is given.
    void addPageWarning(const QString& text);

    /// In what the pixels that were read since the last `forget` are not, or may not be, those of
    /// the page. Rows of a T.4 fax (Compression 3) that turned out too short or too long are among
    /// them: libtiff makes them white from where they stop making sense, as a fax machine does.
    QStringList pageWarnings() const;

    /// Tags of the page that the TIFF file does not have that it was put into last.
    const QStringList& leftOutTags() const { return m_leftOutTags; }
    void setLeftOutTags(const QStringList& names) { m_leftOutTags = names; }

    /// How many bytes libjpeg left before the end of a stream, if it did since this was asked last.
    /// What nobody asks for becomes the warning `jpegTailWarning`.
    std::optional<std::uint64_t> takeJpegTail() { return std::exchange(m_jpegTail, {}); }
    static QString jpegTailWarning();

    /// True when a progressive JPEG stream was begun since this was asked last.
    bool takeProgressiveJpeg() { return std::exchange(m_isProgressiveJpeg, false); }

    /// Throws std::runtime_error with the first of these messages, or with `fallback` when libtiff
    /// gave none.
    [[noreturn]] void fail(const char* fallback) const;

private:
    std::string withoutName(const std::string& text) const;
    void report(const char* kind, const char* module, const std::string& text);

    QString m_fileName;
    std::string m_reason;
    int m_repairedRows = 0;
    std::optional<std::uint64_t> m_jpegTail;
    bool m_isProgressiveJpeg = false;
    QStringList m_pageWarnings;
    QStringList m_leftOutTags;
    std::shared_ptr<LogQuota> m_quota;
};

} // namespace pagestack
