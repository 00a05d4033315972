#pragma once

#include "engine/files/ChecksumFiles.h"
#include "engine/files/FileDigest.h"
#include "engine/job/Process.h"
#include "engine/log/RunRecord.h"
#include "engine/log/RunReport.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace pagestack {

class FileItem;
class TiffDocument;

/// What proves afterwards what a run has read and written, as far as its options ask for it: sizes
/// and digests in the log, SHA256SUMS beside the outputs, and the record of the run. On the job's
/// thread.
class RunEvidence
{
public:
    /// `job` is borrowed, as `options` are, whose choices may still change before `begin`.
    RunEvidence(Process& job, const RunSetup& options);
    ~RunEvidence();
    RunEvidence(const RunEvidence&) = delete;
    RunEvidence& operator=(const RunEvidence&) = delete;

    /// The run begins. Without this nothing is noted.
    void begin();

    /// A source begins; `document` is null when it could not be opened. Ended by endSource().
    void beginSource(const FileItem& item, const TiffDocument* document, LogFiles& record);
    void endSource();

    /// A page was dealt with. `path` is that of its file, or of the one that it is gathered in.
    struct Page
    {
        int number = 0;
        QString path {};
        Process::PageOutcome outcome {};
        bool isGathered = false;
        QStringList leftBehind {}; ///< names of tags
        std::optional<FileDigest> digest {}; ///< of a file of its own
    };
    void addPage(const Page& page);

    /// The file that pages were gathered in is in place.
    void addGathered(const QString& path, const std::optional<FileDigest>& digest);

    /// The run is at its end: writes the checksums of all that is in place.
    void writeChecksums();

    /// Writes the record to its file, or beside the log, if there is one.
    void writeRecord(const QString& chosenFile);

    /// The same with the report.
    void writeReport();

private:
    using Save = std::function<QString(const QString& path, StagedFile::Existing existing)>;
    void write(const QString& what, const QString& path, bool isChosen, const Save& save);
    void takeDiagnostic(const Diagnostic& diagnostic);
    void addChecksum(const QString& path, const FileDigest& digest);
    QJsonObject kindOf(int page) const;
    QJsonObject head() const;
    QJsonObject end() const;
    void tellTrouble(const QString& path, const QString& reason);
    void tellPage(const Page& page, const QJsonArray& reasons, const QJsonArray& warnings);
    void tellSource();

    Process& m_job;
    const RunSetup& m_options;
    bool m_isOn = false;
    ChecksumFiles m_checksums;
    QString m_checksumFault;
    std::unique_ptr<RunRecord> m_record; ///< null unless it is wanted

    // Of the source in hand, and of its pages up to now.
    LogFiles* m_source = nullptr;
    std::optional<FileDigest> m_sourceDigest;
    std::unique_ptr<TiffDocument> m_document; ///< with a reader of its own; null: not opened
    RunTroubles m_told; ///< of the source as a whole
    RunTroubles m_toldOfPage;
    RunTroubles m_toldOfRun; ///< while no source was in hand
    QJsonObject m_gathered; ///< the file in place
    int m_gatheredPages = 0;
    QString m_path;
    int m_pagesWanted = 0;

    /// Of its pages, or of those of the run.
    struct Counts
    {
        int written = 0; ///< of a source: or gathered
        int failed = 0;
        int skipped = 0;
        int notWritten = 0; ///< gathered for a file that was not put in place
    };
    Counts m_sourcePages;

    Counts m_pages;
};

} // namespace pagestack
