#include "engine/image/MultiPageTiff.h"
#include "engine/image/PreparedPage.h"
#include "engine/image/TiffDocument.h"
#include "engine/job/OutputNames.h"
#include "engine/job/Process.h"
#include "engine/support/SystemLog.h"

#include <QFile>

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    /// Whether `pages` pages, put in place at `path`, would be all that is left of `document`.
    bool losesPages(const TiffDocument& document, int pages, const QString& path)
    {
        const bool isWhole = pages == document.pageCount() && document.chainFault().isEmpty();
        if (isWhole)
            return false;
        const std::optional<FileIdentity> target = fileIdentity(QFile::encodeName(path));
        return target && target == fileIdentity(QFile::encodeName(document.path()));
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
        systemLog(u"Error in (getPageRanges:fileItem:) : "_s + QString::fromUtf8(error.what()));
    }
    return range;
}

bool Process::saveAsTiff(const QString& path, const QList<int>& range, const TiffDocument* document,
                         LogFiles& logFiles)
{
    if (!document)
        return false;
    MultiPageTiff file(path, settings()->tiffCompressionIndex(), static_cast<int>(range.size()));
    try {
        gatherPages(file, path, range, *document, logFiles);
    } catch (const std::exception& error) {
        const QString reason = QString::fromUtf8(error.what());
        systemLog(u"Error in (saveAsTiff:range:image:logFiles:) : "_s + reason);
        emit troubleMet(document->path(), 0, reason);
    } catch (...) {
        // The pages gathered are kept; the result is lost with the exception.
        file.commit();
        throw;
    }
    if (file.pageCount() == 0)
        return false;
    if (losesPages(*document, file.pageCount(), path)) {
        emit troubleMet(document->path(), 0,
                        u"the file is kept as it is, since not all of its pages could be gathered "
                        "to replace it"_s);
        return false;
    }
    if (file.commit()) {
        emit fileWritten(document->path(), path, file.pageCount());
        return true;
    }
    emit troubleMet(document->path(), 0, file.failureReason());
    return false;
}

void Process::gatherPages(MultiPageTiff& file, const QString& path, const QList<int>& range,
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

Process::PageOutcome Process::gatherPage(MultiPageTiff& file, const TiffDocument& document,
                                         LogFile& record)
{
    const PageImage image = document.page(record.sourcePageNo - 1);
    try {
        file.append(image, takePage(document, record.sourcePageNo));
    } catch (const std::runtime_error& error) {
        record.status = u"Unable to save page!"_s;
        emit troubleMet(document.path(), record.sourcePageNo, QString::fromUtf8(error.what()));
        return PageOutcome::Failed;
    }
    record.status = u"Completed"_s;
    return PageOutcome::Written;
}

} // namespace pagestack
