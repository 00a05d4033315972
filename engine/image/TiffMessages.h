#pragma once

#include <QString>

#include <memory>
#include <string>

namespace pagestack {

class LogQuota;

/// What libtiff has to say about one open file. Every message goes to the system log with the
/// file's name, up to a limit; the errors are counted, and the first since `forget` is kept as the
/// reason of a failure.
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

    /// The first of these messages; empty when there is none.
    const std::string& reason() const { return m_reason; }

    /// Rows of a fax page, since the last `forget`, that turned out too short or too long: libtiff
    /// makes them white from where they stop making sense, as a fax machine does. There are none
    /// but of T.4 (Compression 3): elsewhere that is a failure.
    int repairedRows() const { return m_repairedRows; }

    /// Throws std::runtime_error with `reason`, or with `fallback` when libtiff gave none.
    [[noreturn]] void fail(const char* fallback) const;

private:
    std::string withoutName(const std::string& text) const;
    void report(const char* kind, const char* module, const std::string& text);

    QString m_fileName;
    std::string m_reason;
    int m_repairedRows = 0;
    std::shared_ptr<LogQuota> m_quota;
};

} // namespace pagestack
