#include "engine/job/ConversionRun.h"

#include "engine/image/TiffDocument.h"
#include "engine/job/GatheredTiff.h"
#include "engine/job/RunEvidence.h"
#include "engine/options/ConversionOptions.h"
#include "engine/plan/ChosenPages.h"
#include "engine/plan/ProfileLoss.h"
#include "engine/plan/SpaceNeed.h"
#include "engine/settings/OutputCodes.h"
#include "engine/support/Paths.h"
#include "engine/support/SystemLog.h"
#include "engine/threads/StopScope.h"

#include <QFile>
#include <QScopeGuard>

#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    RunSetup withoutIdleChoices(RunSetup options, const Settings& settings)
    {
        PageTreatment& treatment = options.choices.treatment;
        treatment = withoutIdleTreatment(treatment, static_cast<OutputType>(settings.outputType()));
        return options;
    }

} // namespace

ConversionRun::ConversionRun(Process& job, RunSetup options)
    : m_job(job)
    , m_settings(*job.settings())
    , m_options(withoutIdleChoices(std::move(options), *job.settings()))
    , m_names(m_settings, m_options.choices)
    , m_supply(m_job, m_options)
{
}

ConversionRun::~ConversionRun() = default;

void ConversionRun::convertOutputs()
{
    const StopScope scope([this] { return !m_job.isCombining(); });
    const QList<OutputFile> plan = m_names.completed(m_job.outputFiles());
    tellForesights(plan);
    m_supply.prepare(plan);
    for (qsizetype i = 0; i < plan.size(); ++i) {
        if (i > 0 && m_job.gate().endsAfterSource())
            m_job.stop();
        if (!m_job.goesOn())
            return;
        convertOutput(plan.at(i), i);
        m_job.log()->putAside();
        m_job.setTotalFileProcessed(m_job.totalFileProcessed() + 1);
        m_options.showTimeTaken();
    }
}

/// What can be known before: as warnings of the folders; the run goes on.
void ConversionRun::tellForesights(const QList<OutputFile>& plan)
{
    const auto found = spaceShortages(plan, m_settings, m_options.choices, m_options.targetFilter,
                                      [this] { return m_job.isCombining(); });
    for (const SpaceShortage& shortage : found)
        tell(m_job, { Diagnostic::Severity::Warning, shortage.folder, 0, shortageText(shortage) });
    const QStringList sources = sourcesLosingProfile(plan, m_settings, m_options.choices,
                                                     [this] { return m_job.isCombining(); });
    if (!sources.isEmpty())
        tell(m_job,
             { Diagnostic::Severity::Warning, m_names.folder(plan.first()), 0,
               profileLossText(sources, m_settings) });
}

void ConversionRun::convertOutput(const OutputFile& output, qsizetype index)
{
    const auto record = std::make_shared<LogFiles>();
    m_job.log()->files.push_back(record);
    record->filename = lastPathComponent(output.filename);
    record->sourcePath = folderPart(output.filename);
    record->targetPath = m_names.folder(output);
    m_job.setFileInProcess(record->filename);
    m_job.removeLeftovers(record->targetPath);
    for (qsizetype i = 0; i < output.fileItems.size(); ++i) {
        if (!m_job.isCombining())
            return;
        convertItem(output, { index, i }, *record);
    }
}

void ConversionRun::convertItem(const OutputFile& output, PlanPlace place, LogFiles& record)
{
    const FileItem& item = *output.fileItems.at(place.item);
    const QString path = item.localFile();
    std::shared_ptr<TiffDocument> document;
    const QString refusal = m_supply.withRoom([&]() -> QString {
        try {
            document = m_supply.open(path, place);
            return {};
        } catch (const std::exception& error) {
            return reasonOf(error);
        }
    });
    if (document && !m_job.isCombining())
        return; // with nothing said of the source, whose pages may not all have been searched for
    RunEvidence& evidence = *m_options.evidence;
    const auto end = qScopeGuard([&] { evidence.endSource(); });
    try {
        evidence.beginSource(item, document.get(), record);
        if (document) {
            const std::optional<FileIdentity> identity = fileIdentity(QFile::encodeName(path));
            convertDocument({ output, *document, record, identity }, item);
            return;
        }
        record.status = u"Unable to Open File!"_s;
        tell(m_job, { .sourcePath = path, .reason = refusal });
    } catch (const std::exception& error) {
        m_hasFailed = true;
        record.status = reasonOf(error);
        tell(m_job, { .sourcePath = path, .reason = record.status });
    }
}

void ConversionRun::convertDocument(const Source& source, const FileItem& item)
{
    m_found.emplace(m_job, source.document);
    reportChain(source.document, item);
    const QList<int> range = m_job.getPageRanges(&item);
    reportChoice(item, range);
    if (range.isEmpty() && item.pages() > 0)
        return;
    if (isKeptTogether(m_settings)) {
        keepPagesTogether(source, range);
    } else {
        writePages(source, range);
        m_found->tellChange();
        m_found->tellRemarks();
        m_found->tellLeftOutTags();
        m_found->tellTakenOver();
    }
}

// Pages that are not in the list would otherwise be missing in the outputs without a word. A file
// that has become shorter ends in a page that does not exist and needs no word here.
void ConversionRun::reportChain(const TiffDocument& document, const FileItem& item)
{
    if (const QString fault = document.chainFault(); !fault.isEmpty())
        m_found->tellError(0, fault);
    if (document.pageCount() > item.pages())
        m_found->tellError(
            0,
            u"the file has %1 pages now, %2 were counted before the run"_s.arg(document.pageCount())
                .arg(item.pages()));
}

/// What was asked for and is not there, and that nothing is left.
void ConversionRun::reportChoice(const FileItem& item, const QList<int>& range)
{
    if (m_options.choices.skipsReduced && !item.reducedPages().isEmpty())
        systemLog(
            u"%1: pages that are thumbnails or masks, which are left out: %2"_s.arg(item.name())
                .arg(item.reducedPages().size()));
    const QString missing = missingPages(item, m_options.choices);
    if (!missing.isEmpty())
        m_found->tellError(0, missing);
    else if (range.isEmpty() && item.pages() > 0)
        m_found->tellWarning(u"no page is left to convert, since those asked for are thumbnails or "
                             "masks"_s);
}

void ConversionRun::keepPagesTogether(const Source& source, const QList<int>& range)
{
    const QString name = m_names.name(source.output, 0);
    const QString path = joinedPath(source.record.targetPath, name);
    m_job.setOutputFileInProcess(name);
    if (!isWanted(path))
        skipTogether(source, range, path);
    else if (saveAsTiff(path, range, source.document, source.record))
        m_job.setTotalFileCreated(m_job.totalFileCreated() + 1);
}

void ConversionRun::skipTogether(const Source& source, const QList<int>& range, const QString& path)
{
    for (const int page : range) {
        source.record.logFiles.push_back({ .targetFile = lastPathComponent(path),
                                           .sourcePageNo = page,
                                           .status = u"Skipped"_s });
        emit m_job.pageDone(source.document.path(), page, path, PageOutcome::Skipped);
        m_options.evidence->addPage(
            { .number = page, .path = path, .outcome = PageOutcome::Skipped });
    }
}

void ConversionRun::writePages(const Source& source, const QList<int>& range)
{
    for (const int page : range) {
        if (!m_job.goesOn())
            return;
        writePage(source, page);
    }
}

void ConversionRun::writePage(const Source& source, int page)
{
    const QString name = m_names.name(source.output, page);
    m_job.setOutputFileInProcess(name);
    PageImage image = source.document.page(page - 1);
    source.record.logFiles.push_back({ .targetFile = name, .sourcePageNo = page });
    savePage(source, image, source.record.logFiles.back());
    m_job.log()->putAside();
}

void ConversionRun::savePage(const Source& source, PageImage& image, LogFile& record)
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
        record.isTakenOver = m_found->isPageTakenOver();
        record.digest = image.digest();
        m_job.setTotalFileCreated(m_job.totalFileCreated() + 1);
        ++source.record.pages;
        emit m_job.fileWritten(sourcePath, path, 1);
    } else {
        outcome = PageOutcome::Failed;
        record.status = u"Unable to save page!"_s;
        m_found->tellError(page, trouble);
    }
    emit m_job.pageDone(sourcePath, page, path, outcome);
    m_options.evidence->addPage(
        { page, path, outcome, false,
          outcome == PageOutcome::Written ? m_found->leftOutOfPage() : QStringList(),
          record.digest });
}

/// Null when the page is in place, else the reason why not.
QString ConversionRun::saveImage(const Source& source, PageImage& image, int page,
                                 const QString& path)
{
    PrefetchedPage prepared = m_supply.take(source.document, page);
    if (prepared.file && prepared.file->isGone())
        prepared = {}; // it is made again, as if its turn had been awaited
    // By a link: one page would be all that is left of the source.
    const bool isNew = prepared.file && prepared.file->isNew();
    if (!isNew && source.identity && fileIdentity(QFile::encodeName(path)) == source.identity) {
        m_found->takeDiagnostics(image); // nothing was read; those of the page before are forgotten
        return u"%1 leads to the source itself, which a single page must not replace"_s.arg(
            lastPathComponent(path));
    }
    if (QString fault = m_supply.makeFolderFor(path); !fault.isNull()) {
        m_found->takeDiagnostics(image);
        return fault;
    }
    const ThreadClaim self = prepared.file ? ThreadClaim() : m_supply.threads().take();
    QString trouble = m_supply.withRoom([&]() -> QString {
        image.takeDiagnostics(); // of an attempt before this one
        if (image.save(path, m_settings, std::exchange(prepared, {}), &m_supply.threads(),
                       m_options.existingAt(path), m_options.choices))
            return {};
        return image.failureReason().isNull() ? u""_s : image.failureReason();
    });
    const PageDiagnostics found = m_found->takeDiagnostics(image);
    if (trouble.isNull())
        m_found->addLosses(page, found);
    else if (!image.failureLine().isEmpty())
        systemLog(image.failureLine());
    return trouble;
}

bool ConversionRun::saveAsTiff(const QString& path, const QList<int>& range,
                               const TiffDocument& document, LogFiles& logFiles)
{
    if (!m_found)
        m_found.emplace(m_job, document);
    return GatheredTiff(m_job, m_options, m_supply, *m_found).save(path, range, document, logFiles);
}

bool ConversionRun::isWanted(const QString& outputPath) const
{
    return m_options.isWanted(outputPath);
}

} // namespace pagestack
