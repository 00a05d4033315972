#pragma once

#include "engine/files/FileDigest.h"
#include "engine/files/StagedFile.h"
#include "engine/job/RunGate.h"
#include "engine/log/Diagnostic.h"
#include "engine/log/Log.h"
#include "engine/options/RunOptions.h"
#include "engine/plan/OutputFile.h"
#include "engine/settings/Settings.h"

#include <QJsonObject>
#include <QObject>
#include <QSet>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace pagestack {

class RunEvidence;
class TiffDocument;
class Workspace;

/// How a run is to be done, besides the settings; see the setters of Process.
struct RunSetup
{
    std::function<bool(const QString& outputPath)> targetFilter {};
    StagedFile::Existing existing = StagedFile::Existing::Replaced;
    int jobs = 0;
    RunOptions choices {};
    std::function<void()> showTimeTaken {}; ///< called after each output
    RunEvidence* evidence = nullptr; ///< outlives the run

    /// Files that may be replaced whatever `existing` says: they are the run's own.
    QSet<QString> replaceable {};

    /// Outputs that are in place already and belong to the run: they get checksums with it.
    std::vector<std::pair<QString, FileDigest>> proven {};

    /// RunPlan::hasHazards of the outputs, where it is known; else the run finds out.
    std::optional<bool> hasHazards {};

    /// Takes what happens, see docs/events.schema.json: "begin" of a source, "page", "source".
    /// Throws nothing.
    std::function<void(const QJsonObject& event)> takeEvent {};

    /// File of the HTML report; empty: beside the log. None: there is none.
    std::optional<QString> report {};

    bool isWanted(const QString& outputPath) const
    {
        return !targetFilter || targetFilter(outputPath);
    }

    StagedFile::Existing existingAt(const QString& path) const
    {
        return replaceable.contains(path) ? StagedFile::Existing::Replaced : existing;
    }
};

/// One conversion run: it walks the planned outputs, writes one file a page (or one multi-page TIFF
/// file a source), keeps the counters and texts that a window shows and fills the log.
///
/// Whoever makes the job fills `outputFiles`, `settings` and `totalFileSelected`, sets
/// `isCombining` and calls `start` on a thread of its own. A job runs once. `settings` and the file
/// items are shared, not copied, and read without a lock: they must not change before
/// `isCompleted`.
///
/// Every write of a field goes through its setter, which announces it, changed or not, on the
/// thread that sets. Receivers of another thread get it queued. Getters and setters may be called
/// from any thread (one of `settings` only while the job is not running); a reader gets the old or
/// the new whole value.
class Process : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Process)
    /// The run flag. Set to false, by anyone, it ends the run at the next check point: before and
    /// after each planned output and each page, and before each item. The page in hand is finished.
    Q_PROPERTY(bool isCombining READ isCombining WRITE setIsCombining NOTIFY isCombiningChanged)
    Q_PROPERTY(bool isCompleted READ isCompleted WRITE setIsCompleted NOTIFY isCompletedChanged)
    Q_PROPERTY(int totalFileSelected READ totalFileSelected WRITE setTotalFileSelected NOTIFY
                   totalFileSelectedChanged)
    /// Planned outputs finished, the one during which a cancel was noticed included.
    Q_PROPERTY(int totalFileProcessed READ totalFileProcessed WRITE setTotalFileProcessed NOTIFY
                   totalFileProcessedChanged)
    /// Output files written.
    Q_PROPERTY(int totalFileCreated READ totalFileCreated WRITE setTotalFileCreated NOTIFY
                   totalFileCreatedChanged)
    /// File names without folder; both empty when the run has ended.
    Q_PROPERTY(
        QString fileInProcess READ fileInProcess WRITE setFileInProcess NOTIFY fileInProcessChanged)
    Q_PROPERTY(QString outputFileInProcess READ outputFileInProcess WRITE setOutputFileInProcess
                   NOTIFY outputFileInProcessChanged)
    Q_PROPERTY(QString timeTaken READ timeTaken WRITE setTimeTaken NOTIFY timeTakenChanged)
    /// The final message; empty during the run.
    Q_PROPERTY(QString message READ message WRITE setMessage NOTIFY messageChanged)
    Q_PROPERTY(std::shared_ptr<pagestack::Log> log READ log WRITE setLog NOTIFY logChanged)
    Q_PROPERTY(QList<pagestack::OutputFile> outputFiles READ outputFiles WRITE setOutputFiles NOTIFY
                   outputFilesChanged)
    Q_PROPERTY(pagestack::Settings* settings READ settings WRITE setSettings NOTIFY settingsChanged)

public:
    enum class PageOutcome {
        Written, ///< in a file of its own, or gathered for the file that keeps the pages together
        Failed,
        Skipped, ///< by the target filter
    };
    Q_ENUM(PageOutcome)

    using TimeLine = std::function<void(const QString& text)>;
    using TargetFilter = decltype(RunSetup::targetFilter);

    /// `workspace` opens the output folder and the log; none: nothing is opened. It is called on
    /// the thread that runs `start` or `viewLog`. `updateTimeTakenLabel` shows a line of text; it
    /// is called on the main thread while the job waits. Both outlive the job.
    explicit Process(Workspace* workspace = nullptr, TimeLine updateTimeTakenLabel = {},
                     QObject* parent = nullptr);
    ~Process() override;

    /// Runs the whole conversion on the calling thread. A page that cannot be written and a source
    /// that cannot be opened do not end it; see `diagnosed`. An exception that is no
    /// std::exception leaves it, after the run has been brought to its end.
    void start();

    /// The run cannot be begun for `reason`: start() will write nothing and be over, as when it
    /// has given up. On the thread that runs start(), before it.
    void giveUp(const QString& reason);

    /// Asks the run to end at its next check point. Any thread.
    void stop();

    /// Opens the written log in its default application; nothing before the log was saved.
    void viewLog();

    /// The pages of `item` that are converted, in order, counted from 1: all of them unless the run
    /// options or the item choose. None without an item.
    QList<int> getPageRanges(const FileItem* item) const;

    /// Writes the pages `range` of `document` into one multi-page TIFF file at `path`, one record a
    /// page in `logFiles`. A page that cannot be decoded is left out; a page that does not exist
    /// and a cancel end the gathering; what was gathered is written all the same, unless it would
    /// replace the source itself by fewer pages. True when the file is in place.
    bool saveAsTiff(const QString& path, const QList<int>& range, const TiffDocument* document,
                    LogFiles& logFiles);

    /// Called on the job's thread before each target is written; on false the target is left alone
    /// and its pages are recorded as "Skipped". It may be called for a target some time ahead as
    /// well, so it must change nothing. To be set before the start.
    const TargetFilter& targetFilter() const { return m_options.targetFilter; }
    void setTargetFilter(TargetFilter filter) { m_options.targetFilter = std::move(filter); }

    /// A target filter: false where there is something, be it a link that leads nowhere.
    static bool isFreeTarget(const QString& outputPath);

    /// A file that is at a target when its output is put there is kept, and the output is a
    /// failure, or, should the target filter refuse the target by then, skipped. False, as at
    /// first: it is replaced. To be set before the start.
    void setKeepsExisting(bool isKept)
    {
        m_options.existing = isKept ? StagedFile::Existing::Kept : StagedFile::Existing::Replaced;
    }

    /// Such files at targets are replaced all the same: they are of a former run that is gone on
    /// with.
    void setReplaceable(const QSet<QString>& paths) { m_options.replaceable = paths; }

    /// Files that a former run, which is gone on with, has put in place: they get checksums as
    /// well.
    void setProven(const std::vector<std::pair<QString, FileDigest>>& files)
    {
        m_options.proven = files;
    }

    /// Called on the job's thread with what becomes of each source and page, when it is in place,
    /// as members of a JSON object (docs/events.schema.json). It must not throw. To be set before
    /// the start.
    void setTakeEvent(decltype(RunSetup::takeEvent) take)
    {
        m_options.choices.tellsDigests = static_cast<bool>(take);
        m_options.takeEvent = std::move(take);
    }

    /// Removes the staged files in `folder` that no running program owns, once a job and folder.
    /// Sources of the job with such a name stay. On the thread that runs `start`, or when it ended.
    void removeLeftovers(const QString& folder);

    /// The reason why `start` gave up before it was through with all outputs; null when it did not.
    /// To be asked when it has returned.
    QString failure() const { return m_failure; }

    /// How many pages are worked on at the same time: that many threads prepare the pages that come
    /// next, while the job's own takes them one after the other. When there are fewer pages,
    /// several threads work on a large one. What the job announces, logs and writes does not depend
    /// on it. 0, as at first: as many as the machine has cores. 1: none besides the job's own. To
    /// be set before the start.
    void setJobs(int jobs) { m_options.jobs = jobs; }

    /// What is asked for beside the settings. To be set before the start.
    void setRunOptions(const RunOptions& options)
    {
        m_options.choices = options;
        m_options.choices.tellsDigests = static_cast<bool>(m_options.takeEvent);
    }
    const RunOptions& runOptions() const { return m_options.choices; }

    /// Saves the run from planning its outputs once more: what RunPlan::hasHazards says of them. To
    /// be set before the start.
    void setHazards(bool hasHazards) { m_options.hasHazards = hasHazards; }

    /// The record of the run goes to the file at `path` instead of one beside the log.
    void setRecordFile(const QString& path) { m_recordFile = path; }

    /// An HTML report of the run goes to the file at `path`, replacing it, or to a new one beside
    /// the log. To be set before the start.
    void setReport(const QString& path = {}) { m_options.report = path; }

    bool isCombining() const { return m_isCombining; }
    void setIsCombining(bool value)
    {
        m_isCombining = value;
        m_gate.wake();
        emit isCombiningChanged(value);
    }
    /// Pauses the run, or ends it after a source.
    RunGate& gate() { return m_gate; }
    /// Waits while the run is paused. False when it is to end. On the job's thread.
    bool goesOn()
    {
        m_gate.wait([this] { return isCombining(); });
        return isCombining();
    }
    bool isCompleted() const { return m_isCompleted; }
    void setIsCompleted(bool value) { emit isCompletedChanged(m_isCompleted = value); }
    int totalFileSelected() const { return m_totalFileSelected; }
    void setTotalFileSelected(int value)
    {
        emit totalFileSelectedChanged(m_totalFileSelected = value);
    }
    int totalFileProcessed() const { return m_totalFileProcessed; }
    void setTotalFileProcessed(int value)
    {
        emit totalFileProcessedChanged(m_totalFileProcessed = value);
    }
    int totalFileCreated() const { return m_totalFileCreated; }
    void setTotalFileCreated(int value)
    {
        emit totalFileCreatedChanged(m_totalFileCreated = value);
    }
    QString fileInProcess() const { return loaded(m_fileInProcess); }
    void setFileInProcess(const QString& value)
    {
        emit fileInProcessChanged(store(m_fileInProcess, value));
    }
    QString outputFileInProcess() const { return loaded(m_outputFileInProcess); }
    void setOutputFileInProcess(const QString& value)
    {
        emit outputFileInProcessChanged(store(m_outputFileInProcess, value));
    }
    QString timeTaken() const { return loaded(m_timeTaken); }
    void setTimeTaken(const QString& value) { emit timeTakenChanged(store(m_timeTaken, value)); }
    QString message() const { return loaded(m_message); }
    /// The final message of a run that has written as many files as there are sources.
    static QString allConvertedText();
    void setMessage(const QString& value) { emit messageChanged(store(m_message, value)); }
    /// Its records belong to the job's thread until `isCompleted`.
    std::shared_ptr<Log> log() const { return loaded(m_log); }
    void setLog(const std::shared_ptr<Log>& value)
    {
        store(m_log, value);
        emit logChanged();
    }
    QList<OutputFile> outputFiles() const { return loaded(m_outputFiles); }
    void setOutputFiles(const QList<OutputFile>& value)
    {
        store(m_outputFiles, value);
        emit outputFilesChanged();
    }
    Settings* settings() const { return m_settings; }
    void setSettings(Settings* value)
    {
        m_settings = value;
        emit settingsChanged();
    }

signals:
    void isCombiningChanged(bool value);
    void isCompletedChanged(bool value);
    void totalFileSelectedChanged(int value);
    void totalFileProcessedChanged(int value);
    void totalFileCreatedChanged(int value);
    void fileInProcessChanged(const QString& value);
    void outputFileInProcessChanged(const QString& value);
    void timeTakenChanged(const QString& value);
    void messageChanged(const QString& value);
    void logChanged();
    void outputFilesChanged();
    void settingsChanged();

    /// A source or a page met an error, or is written with a loss; the run goes on.
    void diagnosed(const pagestack::Diagnostic& diagnostic);
    /// The log could not be written to its file; `logPath` may be empty.
    void logTroubleMet(const QString& logPath, const QString& reason);
    /// A page was dealt with. `outputPath` is the file that it is in or was meant for.
    void pageDone(const QString& sourcePath, int pageNo, const QString& outputPath,
                  pagestack::Process::PageOutcome outcome);
    /// A file with `pages` pages is in place.
    void fileWritten(const QString& sourcePath, const QString& outputPath, int pages);
    /// The `pages` pages that were gathered, and told so, for a file that was not put in place,
    /// since its target is no longer wanted.
    void fileSkipped(const QString& sourcePath, const QString& outputPath, int pages);

private:
    void convertOutputs();
    void endRun();
    void saveLog();
    QString finalMessage() const;
    void showTimeTaken();
    void openOutputFolder();

    template <typename T>
    T loaded(const T& field) const
    {
        const std::scoped_lock lock(m_mutex);
        return field;
    }
    template <typename T>
    const T& store(T& field, const T& value)
    {
        T old = value; // is destroyed without the lock
        const std::scoped_lock lock(m_mutex);
        std::swap(field, old);
        return value;
    }

    Workspace* m_workspace;
    TimeLine m_updateTimeTakenLabel;
    RunSetup m_options { .showTimeTaken
                         = [this] { showTimeTaken(); } }; ///< as the next six, job's thread only
    std::unique_ptr<RunEvidence> m_evidence;
    QString m_recordFile;
    bool m_hasFailed = false;
    QString m_failure;
    QSet<std::size_t> m_sweptFolders; ///< hashes of their paths
    std::optional<QSet<QByteArray>> m_stagedSources; ///< names, of sources that look like leftovers

    RunGate m_gate;
    std::atomic<bool> m_isCombining = false;
    std::atomic<bool> m_isCompleted = false;
    std::atomic<int> m_totalFileSelected = 1;
    std::atomic<int> m_totalFileProcessed = 0;
    std::atomic<int> m_totalFileCreated = 0;
    Settings* m_settings = nullptr; ///< not owned

    mutable std::mutex m_mutex; ///< guards the fields below
    QString m_fileInProcess;
    QString m_outputFileInProcess;
    QString m_timeTaken;
    QString m_message;
    std::shared_ptr<Log> m_log;
    QList<OutputFile> m_outputFiles;
};

} // namespace pagestack
