#include "engine/job/Process.h"

#include "engine/files/PosixFile.h"
#include "engine/files/StagedNames.h"
#include "engine/image/TiffDocument.h"
#include "engine/image/tiffwriter/LeftOutTags.h"
#include "engine/job/PagePrefetcher.h"
#include "engine/plan/OutputNames.h"
#include "engine/support/SystemLog.h"
#include "engine/support/TimeText.h"
#include "engine/support/Workspace.h"
#include "engine/threads/MainThread.h"
#include "engine/threads/SpareThreads.h"
#include "engine/threads/StopScope.h"

#include <QFile>
#include <QScopeGuard>
#include <QThread>

#include <algorithm>
#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    QString reasonOf(const std::exception& error) { return QString::fromUtf8(error.what()); }

    bool hasSeveralPages(const QList<OutputFile>& plan)
    {
        int pages = 0;
        for (const OutputFile& output : plan)
            for (const std::shared_ptr<FileItem>& item : output.fileItems) {
                pages += std::min(item->pages(), 2);
                if (pages > 1)
                    return true;
            }
        return false;
    }

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
}

Process::~Process() = default;

void Process::start()
{
    Q_ASSERT(settings());
    setIsCompleted(false);
    m_hasFailed = false;
    if (settings()->separator().isNull())
        settings()->setSeparator(u""_s);
    try {
        convertOrFail();
    } catch (...) {
        endRun();
        throw;
    }
    endRun();
}

void Process::convertOrFail()
{
    try {
        convertOutputs();
    } catch (const std::exception& error) {
        m_hasFailed = true;
        m_failure = reasonOf(error);
        systemLog(u"Error in (Process=>start) : "_s + m_failure);
    }
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

void Process::convertOutputs()
{
    log()->startTime = QDateTime::currentDateTime();
    setMessage(u""_s);
    const StopScope scope([this] { return !isCombining(); });
    const QList<OutputFile> plan = outputFiles();
    startThreads(plan);
    // Before the end is announced: what was prepared and not taken is gone by then.
    const auto endPrefetching = qScopeGuard([this] { m_prefetcher.reset(); });
    for (qsizetype i = 0; i < plan.size(); ++i) {
        if (!isCombining())
            return;
        convertOutput(plan.at(i), i);
        log()->putAside();
        setTotalFileProcessed(totalFileProcessed() + 1);
        showTimeTaken();
        if (!isCombining())
            return;
    }
}

void Process::startThreads(const QList<OutputFile>& plan)
{
    const int jobs = m_jobs > 0 ? m_jobs : QThread::idealThreadCount();
    m_threads = std::make_unique<SpareThreads>(jobs);
    if (jobs > 1 && hasSeveralPages(plan))
        m_prefetcher = std::make_unique<PagePrefetcher>(
            plan, *settings(), jobs, *m_threads,
            [this](const QString& path) { return isWanted(path); }, m_isCombining);
}

std::shared_ptr<TiffDocument> Process::openSource(const QString& path, PlanPlace place)
{
    return m_prefetcher ? m_prefetcher->open(place) : std::make_shared<TiffDocument>(path);
}

PrefetchedPage Process::takePage(const TiffDocument& document, int page)
{
    return m_prefetcher ? m_prefetcher->take(document, page) : PrefetchedPage {};
}

QString Process::withRoom(const std::function<QString()>& attempt)
{
    const QString reason = attempt();
    const bool isAgain = !reason.isNull() && m_prefetcher && isWantOfRoom(reason.toStdString())
        && m_prefetcher->dropAhead();
    return isAgain ? attempt() : reason;
}

void Process::convertOutput(const OutputFile& output, qsizetype index)
{
    const auto record = std::make_shared<LogFiles>();
    log()->files.push_back(record);
    record->filename = lastPathComponent(output.filename);
    record->sourcePath = folderPart(output.filename);
    record->targetPath = outputFolder(output.filename, *settings());
    setFileInProcess(record->filename);
    removeLeftovers(record->targetPath);
    for (qsizetype i = 0; i < output.fileItems.size(); ++i) {
        if (!isCombining())
            return;
        convertItem(output, { index, i }, *record);
    }
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

void Process::convertItem(const OutputFile& output, PlanPlace place, LogFiles& record)
{
    const FileItem& item = *output.fileItems.at(place.item);
    const QString path = item.filePath().toLocalFile();
    std::shared_ptr<TiffDocument> document;
    const QString refusal = withRoom([&]() -> QString {
        try {
            document = openSource(path, place);
            return {};
        } catch (const std::exception& error) {
            return reasonOf(error);
        }
    });
    try {
        if (document) {
            const std::optional<FileIdentity> identity = fileIdentity(QFile::encodeName(path));
            convertDocument({ output, *document, record, identity }, item);
            return;
        }
        record.status = u"Unable to Open File!"_s;
        tell({ .sourcePath = path, .reason = refusal });
    } catch (const std::exception& error) {
        m_hasFailed = true;
        record.status = reasonOf(error);
        tell({ .sourcePath = path, .reason = record.status });
    }
}

void Process::convertDocument(const Source& source, const FileItem& item)
{
    reportChain(source.document, item);
    const QList<int> range = getPageRanges(&item);
    m_leftOutTags.clear();
    m_doubt = QString();
    m_codecLog.emplace(lastPathComponent(source.document.path()));
    if (isKeptTogether(*settings())) {
        keepPagesTogether(source, range);
    } else {
        writePages(source, range);
        tellLeftOutTags(source.document);
    }
}

// Pages that are not in the list would otherwise be missing in the outputs without a word. A file
// that has become shorter ends in a page that does not exist and needs no word here.
void Process::reportChain(const TiffDocument& document, const FileItem& item)
{
    if (const QString fault = document.chainFault(); !fault.isEmpty())
        tellError(document, 0, fault);
    if (document.pageCount() > item.pages())
        tellError(
            document, 0,
            u"the file has %1 pages now, %2 were counted before the run"_s.arg(document.pageCount())
                .arg(item.pages()));
}

void Process::keepPagesTogether(const Source& source, const QList<int>& range)
{
    const QString name = keptTogetherOutputName(source.output.filename, source.output.number);
    const QString path = joinedPath(source.record.targetPath, name);
    setOutputFileInProcess(name);
    if (!isWanted(path))
        skipTogether(source, range, path);
    else if (saveAsTiff(path, range, &source.document, source.record))
        setTotalFileCreated(totalFileCreated() + 1);
}

void Process::skipTogether(const Source& source, const QList<int>& range, const QString& path)
{
    for (const int page : range) {
        source.record.logFiles.push_back({ .targetFile = lastPathComponent(path),
                                           .sourcePageNo = page,
                                           .status = u"Skipped"_s });
        emit pageDone(source.document.path(), page, path, PageOutcome::Skipped);
    }
}

void Process::writePages(const Source& source, const QList<int>& range)
{
    for (const int page : range) {
        if (!isCombining())
            return;
        writePage(source, page);
        if (!isCombining())
            return;
    }
}

void Process::writePage(const Source& source, int page)
{
    const QString name
        = pageOutputName(source.output.filename, *settings(), page, source.output.number);
    setOutputFileInProcess(name);
    PageImage image = source.document.page(page - 1);
    source.record.logFiles.push_back({ .targetFile = name, .sourcePageNo = page });
    savePage(source, image, source.record.logFiles.back());
    log()->putAside();
}

void Process::savePage(const Source& source, PageImage& image, LogFile& record)
{
    const QString path = joinedPath(source.record.targetPath, record.targetFile);
    const QString sourcePath = source.document.path();
    const int page = record.sourcePageNo;
    PageOutcome outcome = PageOutcome::Skipped;
    bool isSkipped = !isWanted(path);
    const QString trouble = isSkipped ? QString() : saveImage(source, image, page, path);
    // Meanwhile something may have come to its place.
    isSkipped = isSkipped || (!trouble.isNull() && !isWanted(path));
    if (isSkipped) {
        record.status = u"Skipped"_s;
    } else if (trouble.isNull()) {
        outcome = PageOutcome::Written;
        record.status = u"Completed"_s;
        setTotalFileCreated(totalFileCreated() + 1);
        ++source.record.pages;
        emit fileWritten(sourcePath, path, 1);
    } else {
        outcome = PageOutcome::Failed;
        record.status = u"Unable to save page!"_s;
        tellError(source.document, page, trouble, m_pageDetail);
    }
    emit pageDone(sourcePath, page, path, outcome);
}

/// Null when the page is in place, else the reason why not.
QString Process::saveImage(const Source& source, PageImage& image, int page, const QString& path)
{
    // By a link: one page would be all that is left of the source.
    if (source.identity && fileIdentity(QFile::encodeName(path)) == source.identity)
        return u"%1 leads to the source itself, which a single page must not replace"_s.arg(
            lastPathComponent(path));
    PrefetchedPage prepared = takePage(source.document, page);
    const ThreadClaim self = prepared.file ? ThreadClaim() : m_threads->take();
    const QString trouble = withRoom([&]() -> QString {
        image.takeDiagnostics(); // of an attempt before this one
        if (image.save(path, *settings(), std::exchange(prepared, {}), m_threads.get(), existing()))
            return {};
        return image.failureReason().isNull() ? u""_s : image.failureReason();
    });
    const PageDiagnostics found = image.takeDiagnostics();
    takeMessages(found);
    if (trouble.isNull())
        tellLosses(source.document, page, found);
    else if (!image.failureLine().isEmpty())
        systemLog(image.failureLine());
    return trouble;
}

void Process::takeMessages(const PageDiagnostics& found)
{
    m_codecLog->write(found.logLines);
    m_pageDetail = found.logLines.join(u'\n');
}

void Process::tellLosses(const TiffDocument& document, int page, const PageDiagnostics& found)
{
    for (const QString& warning : found.warnings) {
        if (m_doubt.isNull())
            m_doubt = u"page %1: %2"_s.arg(page).arg(warning);
        tell({ Diagnostic::Severity::Warning, document.path(), page, warning, m_pageDetail });
    }
    for (const QString& name : found.leftOutTags)
        if (!m_leftOutTags.contains(name))
            m_leftOutTags.append(name);
}

/// Once a source: its pages mostly have the same tags.
void Process::tellLeftOutTags(const TiffDocument& document)
{
    constexpr qsizetype mostNames = 5;
    if (m_leftOutTags.isEmpty())
        return;
    const QString all = leftOutText(m_leftOutTags, m_leftOutTags.size());
    if (m_leftOutTags.size() > mostNames)
        systemLog(lastPathComponent(document.path()) + u": "_s + all);
    tell({ Diagnostic::Severity::Warning, document.path(), 0, leftOutText(m_leftOutTags, mostNames),
           all });
}

/// To the record of the page, which is the last one, or of the source in hand, and to all
/// listeners.
void Process::tell(const Diagnostic& diagnostic)
{
    if (const std::shared_ptr<Log> runLog = log(); !runLog->files.empty()) {
        LogFiles& source = *runLog->files.back();
        const bool isOfPage = diagnostic.page > 0 && !source.logFiles.empty()
            && source.logFiles.back().sourcePageNo == diagnostic.page;
        QString& told = isOfPage ? source.logFiles.back().reason : source.reason;
        told = told.isNull() ? diagnostic.reason : told + u"; "_s + diagnostic.reason;
    }
    emit diagnosed(diagnostic);
}

void Process::tellError(const TiffDocument& document, int page, const QString& reason,
                        const QString& detail)
{
    tell({ Diagnostic::Severity::Error, document.path(), page, reason, detail });
}

StagedFile::Existing Process::existing() const
{
    return m_keepsExisting ? StagedFile::Existing::Kept : StagedFile::Existing::Replaced;
}

bool Process::isWanted(const QString& outputPath) const
{
    return !m_targetFilter || m_targetFilter(outputPath);
}

void Process::endRun()
{
    // Whatever happens below: a window waits for this.
    const auto complete = qScopeGuard([this] { setIsCompleted(true); });
    saveLog();
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

QString Process::finalMessage() const
{
    if (m_hasFailed)
        return u"Pagestack unable able to convert some of the files!\r\n"
               "Please check log for more information."_s;
    if (!isCombining())
        return u"Process cancelled!"_s;
    // Planned sources are compared with files created: three pages of one source are no "all".
    if (outputFiles().size() == totalFileCreated())
        return u"All files converted successfully."_s;
    return u"Total %1 files converted successfully."_s.arg(totalFileCreated());
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
