#include "engine/files/FileState.h"
#include "engine/image/PrefetchedPage.h"
#include "engine/image/TiffDocument.h"
#include "engine/image/tiffwriter/LeftOutTags.h"
#include "engine/image/tiffwriter/MultiPageTiffWriter.h"
#include "engine/job/Process.h"
#include "engine/plan/OutputNames.h"
#include "engine/support/SystemLog.h"

#include <QFile>

#include <optional>
#include <stdexcept>
#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// The state that the file at `path` must have to be replaced: of the source, when it is that;
    /// none when it is another file, or none is there.
    std::optional<FileState> ownSource(const TiffDocument& document, const QString& path)
    {
        const std::optional<FileIdentity> target = fileIdentity(QFile::encodeName(path));
        const FileState& opened = document.stateAtOpening();
        const bool isSource = target
            && (target == opened.identity
                || target == fileIdentity(QFile::encodeName(document.path())));
        return isSource ? std::optional(opened) : std::nullopt;
    }

    /// Why `pages` pages must not be put in place at `path`, where they would be all that is left
    /// of the source; null when they may.
    QString lossOfPages(const TiffDocument& document, int pages, const QString& doubt,
                        const QStringList& leftOutTags, const QString& path)
    {
        const std::optional<FileState> expected = ownSource(document, path);
        if (!expected)
            return {};
        if (fileState(QFile::encodeName(path)) != expected)
            return u"the file is kept as it is, since it has changed since its pages were read"_s;
        if (pages != document.pageCount() || !document.chainFault().isEmpty())
            return u"the file is kept as it is, since not all of its pages could be gathered to "
                   "replace it"_s;
        if (!doubt.isNull())
            return u"the file is kept as it is, since not all of its pixels are sure: "_s + doubt;
        if (!leftOutTags.isEmpty())
            return u"the file is kept as it is, since "_s
                + leftOutText(leftOutTags, leftOutTags.size(), u"would be lost");
        return {};
    }

    void append(MultiPageTiffWriter& file, const PageImage& image, PrefetchedPage prepared)
    {
        if (!prepared.file) {
            file.append(image.sharedSource(), prepared.pieces);
            return;
        }
        image.adopt(prepared.diagnostics);
        file.appendEncoded(image.sharedSource(), std::move(prepared.file));
    }

} // namespace

QList<int> Process::getPageRanges(const FileItem* item) const
{
    QList<int> range;
    try {
        const int pages = item ? item->pages() : 0;
        for (int page = 1; page <= pages; ++page)
            range.append(page);
    } catch (const std::exception& error) {
        systemLogError(u"getPageRanges:fileItem:"_s, error);
    }
    return range;
}

bool Process::saveAsTiff(const QString& path, const QList<int>& range, const TiffDocument* document,
                         LogFiles& logFiles)
{
    if (!document)
        return false;
    logFiles.gathered = GatheredFile::NotWritten; // until it is
    MultiPageTiffWriter file(path, settings()->tiffCompressionIndex(),
                             static_cast<int>(range.size()));
    try {
        gatherPages(file, path, range, *document, logFiles);
    } catch (const std::exception& error) {
        const QString reason = QString::fromUtf8(error.what());
        systemLog(u"Error in (saveAsTiff:range:image:logFiles:) : "_s + reason);
        tellError(*document, 0, reason);
    } catch (...) {
        // The pages gathered are kept; the result is lost with the exception.
        if (lossOfPages(*document, file.pageCount(), m_doubt, m_leftOutTags, path).isNull()
            && file.commit(existing(), ownSource(*document, path)))
            logFiles.gathered = GatheredFile::None;
        throw;
    }
    if (file.pageCount() == 0)
        return false;
    const QString loss = lossOfPages(*document, file.pageCount(), m_doubt, m_leftOutTags, path);
    const auto commit = [&] {
        return file.commit(existing(), ownSource(*document, path)) ? QString()
                                                                   : file.failureReason();
    };
    if (loss.isNull() && withRoom(commit).isNull()) {
        logFiles.gathered = GatheredFile::None;
        emit fileWritten(document->path(), path, file.pageCount());
        tellLeftOutTags(*document);
        return true;
    }
    if (isWanted(path))
        tellError(*document, 0, loss.isNull() ? file.failureReason() : loss);
    else
        skipGathered(*document, path, logFiles);
    return false;
}

/// For pages that were gathered before something came to their target. The records that were put
/// aside take it from that of the source.
void Process::skipGathered(const TiffDocument& document, const QString& path, LogFiles& logFiles)
{
    logFiles.gathered = GatheredFile::Skipped;
    for (LogFile& record : logFiles.logFiles)
        if (record.status == u"Completed")
            record.status = u"Skipped"_s;
    emit fileSkipped(document.path(), path, std::exchange(logFiles.pages, 0));
}

void Process::gatherPages(MultiPageTiffWriter& file, const QString& path, const QList<int>& range,
                          const TiffDocument& document, LogFiles& logFiles)
{
    for (const int page : range) {
        if (!isCombining())
            return;
        logFiles.logFiles.push_back(
            { .targetFile = lastPathComponent(path), .sourcePageNo = page });
        const PageOutcome outcome = gatherPage(file, document, logFiles.logFiles.back());
        if (outcome == PageOutcome::Written)
            ++logFiles.pages;
        emit pageDone(document.path(), page, path, outcome);
        log()->putAside();
        if (!isCombining())
            return;
    }
}

Process::PageOutcome Process::gatherPage(MultiPageTiffWriter& file, const TiffDocument& document,
                                         LogFile& record)
{
    const PageImage image = document.page(record.sourcePageNo - 1);
    const auto takeDiagnostics = [&] {
        PageDiagnostics found = image.takeDiagnostics();
        takeMessages(found);
        return found;
    };
    try {
        PrefetchedPage prepared = takePage(document, record.sourcePageNo);
        appendPage(file, image, prepared);
        const PageDiagnostics found = takeDiagnostics();
        if (file.failureReason().isEmpty())
            tellLosses(document, record.sourcePageNo, found);
    } catch (const std::exception& error) {
        takeDiagnostics();
        record.status = u"Unable to save page!"_s;
        tellError(document, record.sourcePageNo, QString::fromUtf8(error.what()), m_pageDetail);
        return PageOutcome::Failed;
    }
    record.status = u"Completed"_s;
    return PageOutcome::Written;
}

/// Throws as MultiPageTiffWriter::append does.
void Process::appendPage(MultiPageTiffWriter& file, const PageImage& image,
                         PrefetchedPage& prepared)
{
    const bool wasWhole = file.failureReason().isEmpty();
    bool isAgain = false;
    std::exception_ptr refusal;
    withRoom([&] {
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

} // namespace pagestack
