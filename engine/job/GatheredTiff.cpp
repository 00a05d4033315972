#include "engine/job/GatheredTiff.h"

#include "engine/image/TiffDocument.h"
#include "engine/image/tiffwriter/MultiPageTiffWriter.h"
#include "engine/image/verify/ReadBack.h"
#include "engine/job/PageSupply.h"
#include "engine/job/RunEvidence.h"
#include "engine/job/SourceFindings.h"
#include "engine/support/Paths.h"
#include "engine/support/SystemLog.h"

#include <QScopeGuard>

#include <algorithm>
#include <exception>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

bool GatheredTiff::save(const QString& path, const QList<int>& range, const TiffDocument& document,
                        LogFiles& logFiles)
{
    logFiles.gathered = GatheredFile::NotWritten; // until it is
    if (const QString fault = m_supply.makeFolderFor(path); !fault.isNull()) {
        m_found.tellError(0, fault);
        return false;
    }
    MultiPageTiffWriter file(path, m_job.settings()->tiffCompressionIndex(),
                             static_cast<int>(range.size()));
    file.setLater(m_supply.laterHelp());
    file.setCheck([this](StagedFile& complete) { look(complete); });
    try {
        gatherPages(file, path, range, document, logFiles);
    } catch (const std::exception& error) {
        const QString reason = reasonOf(error);
        systemLog(u"Error in (saveAsTiff:range:image:logFiles:) : "_s + reason);
        m_found.tellError(0, reason);
    } catch (...) {
        // The pages gathered are kept; the result is lost with the exception.
        if (m_found.lossOfPages(file.pageCount(), path).isNull()
            && file.commit(m_options.existingAt(path), m_found.ownSource(path)))
            logFiles.gathered = GatheredFile::None;
        throw;
    }
    if (file.pageCount() == 0)
        return false;
    const QString loss = m_found.lossOfPages(file.pageCount(), path);
    if (loss.isNull())
        m_found.tellChange();
    const auto commit = [&] {
        return file.commit(m_options.existingAt(path), m_found.ownSource(path))
            ? QString()
            : file.failureReason();
    };
    if (loss.isNull() && m_supply.withRoom(commit).isNull()) {
        logFiles.gathered = GatheredFile::None;
        m_options.evidence->addGathered(path, m_digest);
        emit m_job.fileWritten(document.path(), path, file.pageCount());
        if (!file.isDateKept())
            m_found.tellWarning(StagedFile::dateRemark());
        m_found.tellRemarks();
        m_found.tellLeftOutTags();
        return true;
    }
    if (m_options.isWanted(path))
        m_found.tellError(0, loss.isNull() ? file.failureReason() : loss);
    else
        skipGathered(document, path, logFiles);
    return false;
}

/// For pages that were gathered before something came to their target. The records that were put
/// aside take it from that of the source.
void GatheredTiff::skipGathered(const TiffDocument& document, const QString& path,
                                LogFiles& logFiles)
{
    logFiles.gathered = GatheredFile::Skipped;
    for (LogFile& record : logFiles.logFiles)
        if (record.status == u"Completed")
            record.status = u"Skipped"_s;
    emit m_job.fileSkipped(document.path(), path, std::exchange(logFiles.pages, 0));
}

void GatheredTiff::gatherPages(MultiPageTiffWriter& file, const QString& path,
                               const QList<int>& range, const TiffDocument& document,
                               LogFiles& logFiles)
{
    const std::span<const int> pages(range.constData(), static_cast<std::size_t>(range.size()));
    std::size_t tried = 8; // pages at once; few where most have to be encoded
    for (std::size_t at = 0; at < pages.size();) {
        if (!m_job.goesOn())
            return;
        const auto ahead = pages.subspan(at, std::min(tried, pages.size() - at));
        // Of a single page the workers have made the file.
        const std::size_t copied = pages.size() > 1 ? copyPages(file, ahead, document) : 0;
        tried = copied == 0 ? 2 : std::min(tried * 2, CopyBatch::mostPages);
        std::size_t untold = copied;
        // Stopped, or ended by an observer, the file has the pages that were told of.
        const auto takeBack = qScopeGuard([&] {
            if (untold > 0)
                file.takeBackCopies(untold);
        });
        for (const std::size_t end = at + std::max<std::size_t>(copied, 1); at < end; ++at) {
            if (untold < copied && !m_job.goesOn())
                return;
            logFiles.logFiles.push_back(
                { .targetFile = lastPathComponent(path), .sourcePageNo = pages[at] });
            LogFile& record = logFiles.logFiles.back();
            untold -= copied > 0 ? 1 : 0;
            const Process::PageOutcome outcome
                = copied > 0 ? tellOfCopy(document, record) : gatherPage(file, document, record);
            if (outcome == Process::PageOutcome::Written)
                ++logFiles.pages;
            emit m_job.pageDone(document.path(), pages[at], path, outcome);
            m_options.evidence->addPage({ pages[at],
                                          path,
                                          outcome,
                                          true,
                                          outcome == Process::PageOutcome::Written
                                              ? m_found.leftOutOfPage()
                                              : QStringList(),
                                          {} });
            m_job.log()->putAside();
        }
    }
}

/// Copies as many of the next pages as the workers can at once, of which there is nothing to tell;
/// returns how many.
std::size_t GatheredTiff::copyPages(MultiPageTiffWriter& file, std::span<const int> range,
                                    const TiffDocument& document) const
{
    const RunTogether helpers = m_supply.helpers();
    if (!helpers || m_options.choices.verifies)
        return 0;
    std::vector<std::shared_ptr<const PageSource>> pages;
    for (const int page : range)
        if (page <= document.pageCount()) // as it was when the run was planned
            pages.push_back(document.page(page - 1).sharedSource());
    return pages.empty() ? 0 : file.appendCopies(pages, helpers);
}

Process::PageOutcome GatheredTiff::tellOfCopy(const TiffDocument& document, LogFile& record)
{
    m_found.takeDiagnostics(document.page(record.sourcePageNo - 1));
    record.status = u"Completed"_s;
    return Process::PageOutcome::Written;
}

Process::PageOutcome GatheredTiff::gatherPage(MultiPageTiffWriter& file,
                                              const TiffDocument& document, LogFile& record)
{
    const PageImage image = document.page(record.sourcePageNo - 1);
    try {
        PrefetchedPage prepared = m_supply.take(document, record.sourcePageNo);
        appendPage(file, image, prepared);
        const PageDiagnostics found = m_found.takeDiagnostics(image);
        if (file.failureReason().isEmpty())
            m_found.addLosses(record.sourcePageNo, found);
    } catch (const std::exception& error) {
        m_found.takeDiagnostics(image);
        record.status = u"Unable to save page!"_s;
        m_found.tellError(record.sourcePageNo, reasonOf(error));
        return Process::PageOutcome::Failed;
    }
    record.status = u"Completed"_s;
    return Process::PageOutcome::Written;
}

/// Throws as MultiPageTiffWriter::append does.
void GatheredTiff::appendPage(MultiPageTiffWriter& file, const PageImage& image,
                              PrefetchedPage& prepared)
{
    const bool wasWhole = file.failureReason().isEmpty();
    bool isAgain = false;
    std::exception_ptr refusal;
    m_supply.withRoom([&] {
        try {
            image.takeDiagnostics(); // of an attempt before this one
            refusal = nullptr;
            if (std::exchange(isAgain, true) && wasWhole && !file.failureReason().isEmpty())
                file.appendAgain(image.sharedSource());
            else
                append(file, image, std::exchange(prepared, {}));
            return wasWhole && !file.failureReason().isEmpty() ? file.failureReason() : QString();
        } catch (const std::exception& error) {
            refusal = std::current_exception();
            return QString::fromUtf8(error.what());
        }
    });
    if (refusal)
        std::rethrow_exception(refusal);
}

void GatheredTiff::append(MultiPageTiffWriter& file, const PageImage& image,
                          PrefetchedPage prepared)
{
    if (prepared.file) { // and read back, where that is asked for
        m_digest = prepared.digest;
        image.adopt(prepared.diagnostics);
        file.appendEncoded(image.sharedSource(), std::move(prepared.file));
        return;
    }
    if (m_options.choices.verifies && !prepared.proof)
        prepared.proof = proofOf(image.source());
    file.append(image.sharedSource(), prepared.pieces);
    if (prepared.proof)
        m_proof.add(image.sharedSource(), *prepared.proof);
}

/// At the complete file, before it is put in place.
void GatheredTiff::look(StagedFile& file)
{
    if (m_options.choices.verifies || m_options.choices.needsDigests())
        file.settle();
    if (!m_proof.isEmpty())
        readBack([&] { m_proof.check(file); });
    if (m_options.choices.needsDigests() && !m_digest)
        m_digest = digestOf(file);
}

} // namespace pagestack
