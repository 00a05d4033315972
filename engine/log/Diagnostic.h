#pragma once

#include <QString>
#include <QStringList>

namespace pagestack {

/// A fault of a source or of one of its pages, or a loss that a page suffered all the same.
struct Diagnostic
{
    enum class Severity {
        Warning, ///< the page is written, but not quite as it was
        Error, ///< the page, or what is missing of the source, is not written
    };

    Severity severity = Severity::Error;
    QString sourcePath {};
    int page = 0; ///< counted from 1; 0: the whole source
    QString reason {}; ///< one clause
    QString detail {}; ///< messages of the codec about the page, one a line; may be empty
};

/// One line for the user: "scan.tif[3]: warning: reason", or "scan.tif: reason" for an error of the
/// whole source. `shownPath` stands for the source.
QString messageText(const Diagnostic& diagnostic, const QString& shownPath);

/// Everything that was met while one page was read and written. It travels with the page from
/// thread to thread; whoever knows the page's place in the run makes Diagnostics of it.
struct PageDiagnostics
{
    QStringList warnings; ///< the losses of the page, one clause each
    QStringList remarks; ///< losses of many pages alike; told once a source, with their number
    QStringList leftOutTags; ///< names of the page's tags that the output lacks
    QStringList tagsWithoutPlace; ///< the same where the format has no place for any such tag
    bool changesPixels = false; ///< the TIFF output has others than the source, as was asked for
    bool isTakenOver = false; ///< its JPEG data were not decoded
    QStringList logLines; ///< for the system log, in order; see CodecLog

    /// Appends `line` to `logLines`, unless CodecLog would leave it out anyway.
    void addLogLine(const QString& line);
};

/// Writes the log lines of one source to the system log: twenty at most, the last of which says
/// that the rest is left out.
class CodecLog
{
public:
    static constexpr int mostLines = 20;

    void write(const QString& fileName, const QStringList& lines);

private:
    int m_lines = 0; ///< written so far
};

} // namespace pagestack
