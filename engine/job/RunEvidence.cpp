#include "engine/job/RunEvidence.h"

#include "engine/files/PosixFile.h"
#include "engine/files/StagedNames.h"
#include "engine/image/CodecVersions.h"
#include "engine/image/TiffDocument.h"
#include "engine/image/decode/TiffPage.h"
#include "engine/job/SourceFindings.h"
#include "engine/log/RunReport.h"
#include "engine/options/ConversionOptions.h"
#include "engine/support/Info.h"
#include "engine/support/Paths.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QSysInfo>

#include <algorithm>
#include <array>
#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    struct CodeName
    {
        int code;
        const char* name;
    };

    /// TIFF 6.0, PhotometricInterpretation, and the additions of libtiff.
    constexpr std::array photometrics {
        CodeName { 0, "white is zero" }, CodeName { 1, "black is zero" },
        CodeName { 2, "RGB" },           CodeName { 3, "palette" },
        CodeName { 4, "mask" },          CodeName { 5, "separated" },
        CodeName { 6, "YCbCr" },         CodeName { 8, "CIE L*a*b*" },
        CodeName { 9, "ICC L*a*b*" },    CodeName { 10, "ITU L*a*b*" },
        CodeName { 32844, "LogL" },      CodeName { 32845, "LogLuv" },
    };

    constexpr std::array compressions {
        CodeName { 1, "none" },
        CodeName { 2, "CCITT RLE" },
        CodeName { 3, "G3" },
        CodeName { 4, "G4" },
        CodeName { 5, "LZW" },
        CodeName { 6, "old-style JPEG" },
        CodeName { 7, "JPEG" },
        CodeName { 8, "Deflate" },
        CodeName { 32766, "NeXT" },
        CodeName { 32771, "CCITT RLEW" },
        CodeName { 32773, "PackBits" },
        CodeName { 32809, "ThunderScan" },
        CodeName { 32946, "Deflate" },
        CodeName { 34661, "JBIG" },
        CodeName { 34676, "SGILog" },
        CodeName { 34677, "SGILog24" },
        CodeName { 34887, "LERC" },
        CodeName { 34925, "LZMA" },
        CodeName { 50000, "Zstandard" },
        CodeName { 50001, "WebP" },
    };

    template <std::size_t Count>
    QString nameOf(int code, const std::array<CodeName, Count>& names)
    {
        for (const CodeName& known : names)
            if (known.code == code)
                return QString::fromLatin1(known.name);
        return QString::number(code);
    }

    QString utcText(const QDateTime& date) { return date.toUTC().toString(Qt::ISODateWithMs); }

    QJsonObject fileMembers(const QString& path, const std::optional<FileDigest>& digest)
    {
        QJsonObject file { { u"path"_s, path } };
        if (digest) {
            file[u"size"_s] = static_cast<qint64>(digest->sizeBytes);
            file[u"sha256"_s] = digest->hex();
        }
        return file;
    }

    QJsonArray listOf(QStringList& texts)
    {
        return QJsonArray::fromStringList(std::exchange(texts, {}));
    }

    /// None of what is no TIFF file: it may be of any size, and no page comes from it.
    std::optional<FileDigest> sourceDigest(const TiffDocument* document)
    try {
        return document ? std::optional(document->digest()) : std::nullopt;
    } catch (const std::runtime_error&) {
        return {};
    }

    QString outcomeOf(const RunEvidence::Page& page)
    {
        if (page.outcome == Process::PageOutcome::Failed)
            return u"failed"_s;
        if (page.outcome == Process::PageOutcome::Skipped)
            return u"skipped"_s;
        return page.isGathered ? u"gathered"_s : u"written"_s;
    }

    /// Whether all of `reasons`, which are some, are troubles that may pass.
    bool arePassing(const QJsonArray& reasons)
    {
        return !reasons.isEmpty() && std::ranges::all_of(reasons, [](const QJsonValue& reason) {
            return isPassing(reason.toString().toStdString());
        });
    }

    QJsonObject hostMembers()
    {
        return { { u"name"_s, QSysInfo::machineHostName() },
                 { u"system"_s, QSysInfo::prettyProductName() },
                 { u"kernel"_s, QSysInfo::kernelType() + u' ' + QSysInfo::kernelVersion() },
                 { u"architecture"_s, QSysInfo::currentCpuArchitecture() } };
    }

} // namespace

RunEvidence::RunEvidence(Process& job, const RunSetup& options)
    : m_job(job)
    , m_options(options)
{
    QObject::connect(
        &job, &Process::diagnosed, &job,
        [this](const Diagnostic& diagnostic) { takeDiagnostic(diagnostic); }, Qt::DirectConnection);
}

RunEvidence::~RunEvidence() = default;

void RunEvidence::begin()
{
    m_isOn = m_options.choices.needsDigests() || m_options.takeEvent;
    if (!m_options.choices.writesRecord)
        return;
    m_record = std::make_unique<RunRecord>();
    m_record->begin(head());
}

QJsonObject RunEvidence::head() const
{
    QJsonObject options;
    const ConversionOptions chosen = conversionOptions(*m_job.settings(), m_options.choices);
    for (const ConversionOptionRow& row : conversionOptionTable())
        options[row.name] = row.text(chosen, row);
    const bool isKept = m_options.existing == StagedFile::Existing::Kept;
    return { { u"format"_s, u"pagestack-record"_s },
             { u"formatVersion"_s, 1 },
             { u"program"_s,
               QJsonObject { { u"name"_s, u"Pagestack"_s },
                             { u"version"_s, version.toString() } } },
             { u"libraries"_s,
               QJsonArray::fromStringList(QStringList(u"Qt "_s + QString::fromLatin1(qVersion()))
                                          + codecVersions()) },
             { u"host"_s, hostMembers() },
             { u"options"_s, options },
             { u"outputFolder"_s, m_job.settings()->outputFolderPath() },
             { u"existingFiles"_s, isKept ? u"kept"_s : u"replaced"_s },
             { u"start"_s, utcText(m_job.log()->startTime) } };
}

QJsonObject RunEvidence::end() const
{
    const Log& log = *m_job.log();
    const QString state = !log.reason.isNull() ? u"failed"_s
        : log.isCancelled                      ? u"cancelled"_s
                                               : u"complete"_s;
    QJsonObject members {
        { u"end"_s, utcText(log.endTime) },
        { u"state"_s, state },
        { u"log"_s, log.logFilePath() },
        { u"totals"_s,
          QJsonObject { { u"sourcesPlanned"_s, m_job.outputFiles().size() },
                        { u"sourcesProcessed"_s, m_job.totalFileProcessed() },
                        { u"filesWritten"_s, m_job.totalFileCreated() },
                        { u"pagesWritten"_s, m_pages.written },
                        { u"pagesFailed"_s, m_pages.failed },
                        { u"pagesSkipped"_s, m_pages.skipped },
                        { u"pagesNotWritten"_s, m_pages.notWritten } } },
        { u"reasons"_s, QJsonArray::fromStringList(m_toldOfRun.reasons) },
        { u"warnings"_s, QJsonArray::fromStringList(m_toldOfRun.warnings) },
    };
    if (!log.reason.isNull())
        members[u"reason"_s] = log.reason;
    return members;
}

void RunEvidence::beginSource(const FileItem& item, const TiffDocument* document, LogFiles& record)
{
    if (!m_isOn) {
        m_source = &record;
        return;
    }
    const QString path = item.localFile();
    m_sourceDigest = sourceDigest(document);
    m_path = path;
    m_sourcePages = {};
    if (m_options.takeEvent) {
        m_pagesWanted = static_cast<int>(m_job.getPageRanges(&item).size());
        QJsonObject begin = fileMembers(path, m_sourceDigest);
        begin[u"source"_s] = begin.take(u"path"_s);
        begin[u"type"_s] = u"begin"_s;
        m_options.takeEvent(begin);
    }
    if (!m_record) {
        m_source = &record;
        return;
    }
    m_document = document ? document->clone() : nullptr;
    QJsonObject members = fileMembers(path, m_sourceDigest);
    const std::optional<FileState> state
        = document ? std::optional(document->stateAtOpening()) : fileState(QFile::encodeName(path));
    if (state) {
        members[u"size"_s] = static_cast<qint64>(state->sizeBytes);
        members[u"modified"_s]
            = utcText(QDateTime::fromMSecsSinceEpoch(state->modifiedNs / 1'000'000));
    }
    members[u"pagesCounted"_s] = item.pages();
    if (document)
        members[u"pagesFound"_s] = document->pageCount();
    m_record->beginSource(members);
    m_source = &record; // last: an exception leaves no source to end
}

/// By a reader of its own: the messages of the job's are not for here.
QJsonObject RunEvidence::kindOf(int page) const
try {
    const PageImage image = m_document->page(page - 1);
    const TiffPageTags& tags = image.source().tiffPage()->tags();
    return { { u"width"_s, static_cast<qint64>(tags.widthPx) },
             { u"height"_s, static_cast<qint64>(tags.heightPx) },
             { u"bits"_s, tags.bitsPerSample },
             { u"samples"_s, tags.samplesPerPixel },
             { u"colour"_s, nameOf(tags.photometric, photometrics) },
             { u"compression"_s, nameOf(tags.compression, compressions) } };
} catch (const std::exception&) { // no such page, or its directory cannot be read
    return {};
}

void RunEvidence::addPage(const Page& page)
{
    if (!m_isOn)
        return;
    if (m_source)
        m_source->sourceDigest = m_sourceDigest;
    const bool isWritten = page.outcome == Process::PageOutcome::Written;
    if (isWritten && page.isGathered)
        ++m_gatheredPages;
    else
        ++(isWritten                                          ? m_pages.written
               : page.outcome == Process::PageOutcome::Failed ? m_pages.failed
                                                              : m_pages.skipped);
    if (isWritten && page.digest)
        addChecksum(page.path, *page.digest);
    const QJsonArray reasons = listOf(m_toldOfPage.reasons);
    const QJsonArray warnings = listOf(m_toldOfPage.warnings);
    if (m_options.takeEvent)
        tellPage(page, reasons, warnings);
    if (!m_record)
        return;
    QJsonObject members { { u"page"_s, page.number },
                          { u"output"_s, fileMembers(page.path, page.digest) },
                          { u"outcome"_s, outcomeOf(page) } };
    if (const QJsonObject kind = kindOf(page.number); !kind.isEmpty())
        members[u"kind"_s] = kind;
    members[u"reasons"_s] = reasons;
    members[u"warnings"_s] = warnings;
    members[u"leftBehind"_s] = QJsonArray::fromStringList(page.leftBehind);
    m_record->addPage(members);
}

void RunEvidence::addGathered(const QString& path, const std::optional<FileDigest>& digest)
{
    if (!m_isOn)
        return;
    m_gathered = fileMembers(path, digest);
    if (m_source)
        m_source->targetDigest = digest;
    if (digest)
        addChecksum(path, *digest);
}

void RunEvidence::endSource()
{
    if (!m_isOn)
        m_source = nullptr;
    if (!m_source)
        return;
    // Where a stop came before the first page, the log shows nothing of the source.
    if (!m_source->status.isEmpty() || !m_source->reason.isNull())
        m_source->sourceDigest = m_sourceDigest;
    const GatheredFile gathered = m_source->gathered;
    (!m_gathered.isEmpty()                   ? m_pages.written
         : gathered == GatheredFile::Skipped ? m_pages.skipped
                                             : m_pages.notWritten)
        += std::exchange(m_gatheredPages, 0);
    // What an exception has kept from its page is of the source.
    m_told.reasons += std::exchange(m_toldOfPage.reasons, {});
    m_told.warnings += std::exchange(m_toldOfPage.warnings, {});
    if (m_options.takeEvent)
        tellSource();
    QJsonObject members { { u"reasons"_s, listOf(m_told.reasons) },
                          { u"warnings"_s, listOf(m_told.warnings) } };
    if (!m_gathered.isEmpty())
        members[u"gathered"_s] = m_gathered;
    m_gathered = {};
    m_document.reset();
    m_source = nullptr;
    if (m_record)
        m_record->endSource(members);
}

void RunEvidence::tellPage(const Page& page, const QJsonArray& reasons, const QJsonArray& warnings)
{
    const bool isFailed = page.outcome == Process::PageOutcome::Failed;
    ++(isFailed                                            ? m_sourcePages.failed
           : page.outcome == Process::PageOutcome::Skipped ? m_sourcePages.skipped
                                                           : m_sourcePages.written);
    QJsonObject event = fileMembers(page.path, isFailed ? std::nullopt : page.digest);
    event[u"output"_s] = event.take(u"path"_s);
    event[u"type"_s] = u"page"_s;
    event[u"source"_s] = m_path;
    event[u"page"_s] = page.number;
    event[u"outcome"_s] = outcomeOf(page);
    event[u"reasons"_s] = reasons;
    event[u"warnings"_s] = warnings;
    if (isFailed && arePassing(reasons))
        event[u"passing"_s] = true;
    m_options.takeEvent(event);
}

void RunEvidence::tellSource()
{
    if (m_source->gathered == GatheredFile::Skipped)
        m_sourcePages.skipped += std::exchange(m_sourcePages.written, 0);
    if (m_source->gathered == GatheredFile::NotWritten)
        m_sourcePages.failed += std::exchange(m_sourcePages.written, 0);
    const int seen = m_sourcePages.written + m_sourcePages.failed + m_sourcePages.skipped;
    const QJsonArray reasons = QJsonArray::fromStringList(m_told.reasons);
    QJsonObject event = fileMembers(m_path, m_sourceDigest);
    event[u"source"_s] = event.take(u"path"_s);
    event[u"type"_s] = u"source"_s;
    event[u"outcome"_s] = m_sourcePages.failed > 0 || !reasons.isEmpty() ? u"failed"_s
        : seen < m_pagesWanted                                           ? u"stopped"_s
                                                                         : u"done"_s;
    event[u"written"_s] = m_sourcePages.written;
    event[u"failed"_s] = m_sourcePages.failed;
    event[u"skipped"_s] = m_sourcePages.skipped;
    event[u"reasons"_s] = reasons;
    event[u"warnings"_s] = QJsonArray::fromStringList(m_told.warnings);
    if (!m_gathered.isEmpty())
        event[u"output"_s] = m_gathered;
    if (arePassing(reasons))
        event[u"passing"_s] = true;
    m_options.takeEvent(event);
}

/// What is of a page comes before the page itself does. Without a source in hand, as before the
/// first and for checksums, it is of the run.
void RunEvidence::takeDiagnostic(const Diagnostic& diagnostic)
{
    if (!m_record && !m_options.takeEvent && (!m_options.report || m_source))
        return;
    const bool isError = diagnostic.severity == Diagnostic::Severity::Error;
    if (!m_source)
        (isError ? m_toldOfRun.reasons : m_toldOfRun.warnings)
            .append(diagnostic.sourcePath + u": "_s + diagnostic.reason);
    else if (diagnostic.page > 0)
        (isError ? m_toldOfPage.reasons : m_toldOfPage.warnings).append(diagnostic.reason);
    else
        (isError ? m_told.reasons : m_told.warnings).append(diagnostic.reason);
}

void RunEvidence::addChecksum(const QString& path, const FileDigest& digest)
{
    if (!m_options.choices.writesChecksums)
        return;
    try {
        m_checksums.add(path, digest);
    } catch (const std::runtime_error& error) {
        m_checksumFault = reasonOf(error);
    }
}

void RunEvidence::tellTrouble(const QString& path, const QString& reason)
{
    emit m_job.diagnosed({ .sourcePath = path, .reason = reason });
}

void RunEvidence::writeChecksums()
{
    endSource(); // that an exception may have left open
    if (!m_isOn)
        return;
    for (const auto& [path, digest] : m_options.proven)
        addChecksum(path, digest);
    if (!m_checksumFault.isNull())
        tellTrouble(u"SHA256SUMS"_s, m_checksumFault);
    for (const ChecksumFiles::Trouble& trouble : m_checksums.write())
        tellTrouble(trouble.path, trouble.reason);
}

void RunEvidence::writeRecord(const QString& chosenFile)
{
    if (!m_record)
        return;
    m_record->end(end());
    const QString log = m_job.log()->logFilePath();
    const QString beside = log.isNull() ? QString() : log.chopped(4) + u".json"_s;
    write(u"record"_s, chosenFile.isEmpty() ? beside : chosenFile, !chosenFile.isEmpty(),
          [this](const QString& path, StagedFile::Existing existing) {
              return m_record->saveTo(path, existing);
          });
}

void RunEvidence::writeReport()
{
    if (!m_options.report)
        return;
    const Log& log = *m_job.log();
    RunTroubles troubles = m_toldOfRun;
    if (const QString fault = log.saveFault(); !fault.isNull())
        troubles.reasons.append(u"the log could not be written: "_s + fault);
    const bool isChosen = !m_options.report->isEmpty();
    write(u"report"_s, isChosen ? *m_options.report : reportPathBeside(log.logFilePath()), isChosen,
          [&](const QString& path, StagedFile::Existing existing) {
              return saveReport(log, m_job.outputFiles().size(), troubles, path, existing);
          });
}

/// `what` replaces a file that the user has chosen, and no other. An empty `path`: there is no log.
void RunEvidence::write(const QString& what, const QString& path, bool isChosen, const Save& save)
{
    if (path.isEmpty()) {
        tellTrouble(what, u"it could not be written, since there is no log to put it beside"_s);
        return;
    }
    m_job.removeLeftovers(folderPart(path));
    QString fault;
    try {
        fault = save(path, isChosen ? StagedFile::Existing::Replaced : StagedFile::Existing::Kept);
    } catch (const StagedFile::NameTaken& taken) {
        fault = reasonOf(taken);
    }
    if (!fault.isNull())
        tellTrouble(path, u"the %1 could not be written: "_s.arg(what) + fault);
}

} // namespace pagestack
