#pragma once

#include <QByteArray>
#include <QFile>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace pagestack {

/// `members` as one line of text, its end included.
QByteArray jsonLine(const QJsonObject& members);

/// The objects of a file that has one JSON object a line. One thread.
class JsonLines
{
public:
    static constexpr qint64 mostBytes = qint64 { 256 } << 20; ///< of a line

    /// Opens the file at `path`; "-" is standard input. Throws std::runtime_error.
    explicit JsonLines(const QString& path);

    /// The object of the next line that is one; none at the end of the file. Lines that are none
    /// are passed over and counted. Throws std::runtime_error when the file cannot be read, or when
    /// a line is longer than `mostBytes`.
    std::optional<QJsonObject> next();

    qint64 offset() const { return m_offset; } ///< in bytes, of the line that next() gave
    void seek(qint64 offset); ///< to the start of a line. Throws std::runtime_error.
    qint64 damagedLines() const { return m_damaged; } ///< passed over so far

private:
    QByteArray nextLine();

    QFile m_file;
    QString m_path;
    qint64 m_offset = 0;
    qint64 m_damaged = 0;
};

} // namespace pagestack
