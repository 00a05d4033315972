#pragma once

#include "engine/files/FileState.h"
#include "engine/log/Diagnostic.h"

#include <QMap>

#include <exception>
#include <optional>
#include <utility>
#include <vector>

namespace pagestack {

class PageImage;
class Process;
class TiffDocument;

inline QString reasonOf(const std::exception& error) { return QString::fromUtf8(error.what()); }

/// Puts the diagnostic into the record of the page, which is the last one, or of the source in
/// hand, and announces it with the signal of the job.
void tell(Process& job, const Diagnostic& diagnostic);

/// Collects and tells everything that is found in one source and its pages. On the job's thread.
class SourceFindings
{
public:
    /// Both are borrowed.
    SourceFindings(Process& job, const TiffDocument& document)
        : m_job(job)
        , m_document(document)
    {
    }

    /// Takes the diagnostics of the page in hand; its log lines go to the system log at once.
    PageDiagnostics takeDiagnostics(const PageImage& image);

    /// Tells the losses of a page that is written, and keeps its remarks and the tags that its
    /// output lacks.
    void addLosses(int page, const PageDiagnostics& found);

    /// Names of what the page that was looked at last says and its output does not.
    const QStringList& leftOutOfPage() const { return m_leftOutOfPage; }

    /// Whether that page's JPEG data are in its output as they were.
    bool isPageTakenOver() const { return m_isPageTakenOver; }

    /// Tells the system log of which pages JPEG data were taken over.
    void tellTakenOver();

    /// Tells of the tags that outputs lack, once a source: its pages mostly have the same. Those
    /// for which the format has no place are no fault: the system log and the record tell of them.
    void tellLeftOutTags();

    /// Tells that the source was written to while its pages were read, if it was. Before an output
    /// takes its place.
    void tellChange();

    /// Tells the remarks, each once with the number of its pages.
    void tellRemarks();

    /// `page` 0: the whole source.
    void tellError(int page, const QString& reason);

    /// Of the whole source.
    void tellWarning(const QString& reason);

    /// The state that the file at `path` must have to be replaced, if it is the source; none for
    /// another file and for none.
    std::optional<FileState> ownSource(const QString& path) const;

    /// Why `pages` pages must not be put in place at `path`, where they would be all that is left
    /// of the source; null when they may.
    QString lossOfPages(int pages, const QString& path) const;

private:
    Process& m_job;
    const TiffDocument& m_document;
    CodecLog m_log;
    QString m_doubt; ///< the first warning, with its page
    QStringList m_leftOutTags; ///< each once
    QStringList m_leftOutOfPage;
    bool m_isPageTakenOver = false;
    std::vector<std::pair<int, int>> m_takenOver; ///< first and last of pages in succession
    bool m_changesPixels = false;
    QMap<QString, int> m_remarks; ///< with the number of their pages
    QStringList m_tagsWithoutPlace; ///< each once
    QString m_detail; ///< messages of the codec about the page in hand, until they are told
};

} // namespace pagestack
