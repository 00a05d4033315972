#pragma once

#include <QString>

#include <string>

namespace pagestack {

/// What libtiff has to say about one open file. Every message goes to the system log with the
/// file's name, up to a limit; the errors are counted, and the first since `forget` is kept as the
/// reason of a failure.
class TiffMessages
{
public:
    explicit TiffMessages(QString fileName);

    const QString& fileName() const { return m_fileName; }

    void addError(const char* module, const std::string& text);
    void addWarning(const char* module, const std::string& text);

    /// Starts anew: no error so far.
    void forget();

    /// True when an error came, or a warning that tells of pixels that could not be read, since the
    /// last `forget`.
    bool failed() const { return !m_reason.empty(); }

    /// The first of these messages; empty when there is none.
    const std::string& reason() const { return m_reason; }

    /// Throws std::runtime_error with `reason`, or with `fallback` when libtiff gave none.
    [[noreturn]] void fail(const char* fallback) const;

private:
    std::string withoutName(std::string text) const;
    void report(const char* kind, const char* module, const std::string& text);

    QString m_fileName;
    std::string m_reason;
    int m_reported = 0;
};

} // namespace pagestack
