#include "engine/job/Process.h"

#include "engine/files/StagedNames.h"
#include "engine/job/ConversionRun.h"
#include "engine/job/RunEvidence.h"
#include "engine/plan/ChosenPages.h"
#include "engine/support/Dates.h"
#include "engine/support/SystemLog.h"
#include "engine/support/Workspace.h"
#include "engine/threads/MainThread.h"

#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include <exception>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QSet<QByteArray> stagedSources(const QList<OutputFile>& plan)
    {
        QSet<QByteArray> names;
        for (const OutputFile& output : plan)
            for (const std::shared_ptr<FileItem>& item : output.fileItems)
                if (const QByteArray name = QFile::encodeName(item->name()); isStagedName(name))
                    names.insert(name);
        return names;
    }

} // namespace

Process::Process(Workspace* workspace, TimeLine updateTimeTakenLabel, QObject* parent)
    : QObject(parent)
    , m_workspace(workspace)
    , m_updateTimeTakenLabel(std::move(updateTimeTakenLabel))
    , m_fileInProcess(u""_s)
    , m_outputFileInProcess(u""_s)
    , m_timeTaken(u"In Process..."_s)
    , m_message(u""_s)
    , m_log(std::make_shared<Log>())
{
    m_evidence = std::make_unique<RunEvidence>(*this, m_options);
    m_options.evidence = m_evidence.get();
}

Process::~Process() = default;

void Process::start()
{
    Q_ASSERT(settings());
    setIsCompleted(false);
    m_hasFailed = !m_failure.isNull();
    if (settings()->separator().isNull())
        settings()->setSeparator(u""_s);
    log()->startTime = QDateTime::currentDateTime();
    m_evidence->begin();
    try {
        convertOutputs();
    } catch (...) {
        endRun();
        throw;
    }
    endRun();
}

/// What was prepared and not taken is gone when this returns, before the end is announced.
void Process::convertOutputs()
{
    ConversionRun run(*this, m_options);
    const auto keepFailure = qScopeGuard([&] { m_hasFailed = m_hasFailed || run.hasFailed(); });
    try {
        setMessage(u""_s);
        run.convertOutputs();
    } catch (const std::exception& error) {
        m_hasFailed = true;
        m_failure = QString::fromUtf8(error.what());
        systemLog(u"Error in (Process=>start) : "_s + m_failure);
    }
}

bool Process::isFreeTarget(const QString& outputPath)
{
    const QFileInfo info(outputPath);
    return !info.exists() && !info.isSymLink();
}

void Process::giveUp(const QString& reason)
{
    m_failure = reason;
    stop();
}

void Process::stop()
{
    try {
        setIsCombining(false);
    } catch (const std::exception& error) {
        systemLogError(u"Process=>stop"_s, error);
    }
}

void Process::viewLog()
{
    try {
        const QString path = log()->logFilePath();
        if (!path.isNull() && m_workspace)
            m_workspace->openURL(QUrl::fromLocalFile(path));
    } catch (const std::exception& error) {
        systemLogError(u"Process=>viewLog"_s, error);
    }
}

QList<int> Process::getPageRanges(const FileItem* item) const
{
    try {
        return item ? chosenPages(*item, m_options.choices) : QList<int>();
    } catch (const std::exception& error) {
        systemLogError(u"getPageRanges:fileItem:"_s, error);
        return {};
    }
}

bool Process::saveAsTiff(const QString& path, const QList<int>& range, const TiffDocument* document,
                         LogFiles& logFiles)
{
    return document && ConversionRun(*this, m_options).saveAsTiff(path, range, *document, logFiles);
}

void Process::removeLeftovers(const QString& folder)
{
    const std::size_t key = qHash(folder);
    if (m_sweptFolders.contains(key))
        return;
    m_sweptFolders.insert(key);
    if (!m_stagedSources)
        m_stagedSources = stagedSources(outputFiles());
    removeLeftStagedFiles(folder, *m_stagedSources);
}

void Process::endRun()
{
    // Whatever happens below: a window waits for this.
    const auto complete = qScopeGuard([this] { setIsCompleted(true); });
    m_evidence->writeChecksums();
    saveLog();
    m_evidence->writeRecord(m_recordFile);
    m_evidence->writeReport();
    setMessage(finalMessage());
    const std::shared_ptr<Log> runLog = log();
    setTimeTaken(timeTakenString(runLog->startTime, runLog->endTime));
    setFileInProcess(u""_s);
    setOutputFileInProcess(u""_s);
    setIsCombining(false);
    try {
        showTimeTaken();
        openOutputFolder();
    } catch (const std::exception& error) {
        systemLogError(u"Process=>start"_s, error);
    }
}

void Process::saveLog()
{
    const std::shared_ptr<Log> runLog = log();
    runLog->endTime = QDateTime::currentDateTime();
    runLog->isCancelled = !isCombining();
    runLog->reason = m_failure;
    runLog->save();
    if (const QString fault = runLog->saveFault(); !fault.isNull())
        emit logTroubleMet(runLog->logFilePath(), u"the log could not be written: "_s + fault);
}

QString Process::allConvertedText() { return tr("All files converted successfully."); }

QString Process::finalMessage() const
{
    if (m_hasFailed)
        return tr("Pagestack unable able to convert some of the files!\r\n"
                  "Please check log for more information.");
    if (log()->isCancelled) // what comes while the log is written is too late
        return tr("Process cancelled!");
    // Planned sources are compared with files created: three pages of one source are no "all".
    if (outputFiles().size() == totalFileCreated())
        return allConvertedText();
    return tr("Total %1 files converted successfully.").arg(totalFileCreated());
}

void Process::showTimeTaken()
{
    if (!m_updateTimeTakenLabel)
        return;
    const QString text = totalTimeTakenText(timeTaken(), totalFileProcessed(),
                                            static_cast<int>(outputFiles().size()));
    callOnMainThread([&] { m_updateTimeTakenLabel(text); });
}

void Process::openOutputFolder()
{
    const QString folder = settings()->outputFolderPath();
    if (m_workspace && !folder.isEmpty() && settings()->isOpenFolderAfterConversion()
        && totalFileCreated() > 0)
        m_workspace->openURL(QUrl::fromLocalFile(folder));
}

} // namespace pagestack
