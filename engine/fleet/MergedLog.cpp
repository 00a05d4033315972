#include "engine/fleet/MergedLog.h"

#include "engine/support/Paths.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    using Outcome = MergedPage::Outcome;

    QString statusText(Outcome outcome)
    {
        return outcome == Outcome::Written ? u"Completed"_s
            : outcome == Outcome::Skipped  ? u"Skipped"_s
                                           : u"Unable to save page!"_s;
    }

    /// Null when there is none: the log has no empty reasons.
    QString reasonText(const QStringList& reasons)
    {
        return reasons.isEmpty() ? QString() : reasons.join(u"; "_s);
    }

    /// What is to be told of the source as a whole, its gaps included.
    QStringList reasonsOf(const MergedSource& source)
    {
        QStringList reasons;
        for (const auto& [pages, reason] : source.gaps())
            reasons.append(pages.isEmpty() ? reason : pagesPhrase(pages) + u": "_s + reason);
        QStringList told; // once, which the pages may have as their own
        for (const MergedPage& page : source.pages)
            for (const QString& text : { page.partReason, page.partWarning })
                if (!text.isEmpty() && !told.contains(text))
                    told.append(text);
        reasons += told;
        for (const auto& [pages, reason] : source.failures())
            if (pages.isEmpty() && !told.contains(reason))
                reasons.append(reason);
        return reasons;
    }

} // namespace

void addToLog(Log& log, const MergedSource& source)
{
    const auto files = std::make_shared<LogFiles>();
    log.files.push_back(files);
    files->filename = lastPathComponent(source.plan.path);
    files->sourcePath = folderPart(source.plan.path);
    files->targetPath = source.folder;
    files->pages = static_cast<int>(
        std::ranges::count(source.pages, Outcome::Written, &MergedPage::outcome));
    files->reason = reasonText(reasonsOf(source));
    files->sourceDigest = source.digest;
    files->targetDigest = source.gathered;
    bool isReached = false;
    for (std::size_t i = 0; i < source.pages.size(); ++i) {
        const MergedPage& page = source.pages.at(i);
        if (page.number == 0 || page.outcome == Outcome::Missing || page.isOfPart)
            continue;
        isReached = true;
        files->logFiles.push_back({ .targetFile = lastPathComponent(source.targetPath(i)),
                                    .sourcePageNo = page.number,
                                    .status = statusText(page.outcome),
                                    .reason = page.reason.isEmpty() ? QString() : page.reason,
                                    .digest = page.digest });
        log.putAside();
    }
    const std::vector<MergedSource::Some> failures = source.failures();
    if (const auto gaps = source.gaps(); !isReached && !gaps.empty())
        files->status = gaps.front().reason;
    else if (!isReached && !failures.empty())
        files->status = source.digest ? failures.front().reason : u"Unable to Open File!"_s;
    log.putAside();
}

} // namespace pagestack
