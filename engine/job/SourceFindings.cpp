#include "engine/job/SourceFindings.h"

#include "engine/image/PageImage.h"
#include "engine/image/TiffDocument.h"
#include "engine/image/tiffwriter/LeftOutTags.h"
#include "engine/job/Process.h"
#include "engine/support/Paths.h"
#include "engine/support/SystemLog.h"

#include <QFile>

#include <utility>

using namespace Qt::StringLiterals;

namespace pagestack {

void tell(Process& job, const Diagnostic& diagnostic)
{
    if (const std::shared_ptr<Log> runLog = job.log(); !runLog->files.empty()) {
        LogFiles& source = *runLog->files.back();
        const bool isOfPage = diagnostic.page > 0 && !source.logFiles.empty()
            && source.logFiles.back().sourcePageNo == diagnostic.page;
        if (!isOfPage && diagnostic.severity == Diagnostic::Severity::Error)
            source.hasErrors = true;
        QString& told = isOfPage ? source.logFiles.back().reason : source.reason;
        told = told.isNull() ? diagnostic.reason : told + u"; "_s + diagnostic.reason;
    }
    emit job.diagnosed(diagnostic);
}

std::optional<FileState> SourceFindings::ownSource(const QString& path) const
{
    const std::optional<FileIdentity> target = fileIdentity(QFile::encodeName(path));
    const FileState& opened = m_document.stateAtOpening();
    const bool isSource = target
        && (target == opened.identity
            || target == fileIdentity(QFile::encodeName(m_document.path())));
    return isSource ? std::optional(opened) : std::nullopt;
}

QString SourceFindings::lossOfPages(int pages, const QString& path) const
{
    const std::optional<FileState> expected = ownSource(path);
    if (!expected)
        return {};
    if (fileState(QFile::encodeName(path)) != expected)
        return u"the file is kept as it is, since it has changed since its pages were read"_s;
    if (pages != m_document.pageCount() || !m_document.chainFault().isEmpty())
        return u"the file is kept as it is, since not all of its pages could be gathered to "
               "replace it"_s;
    if (m_changesPixels)
        return u"the file is kept as it is, since its pixels would be lost to the changed ones; "
               "an output folder may help"_s;
    if (m_document.treatment().stripsMetadata)
        return u"the file is kept as it is, since what its pages say of themselves would be lost; "
               "an output folder may help"_s;
    if (!m_doubt.isNull())
        return u"the file is kept as it is, since not all of its pixels are sure: "_s + m_doubt;
    if (!m_leftOutTags.isEmpty())
        return u"the file is kept as it is, since "_s
            + leftOutText(m_leftOutTags, m_leftOutTags.size(), u"would be lost");
    return {};
}

PageDiagnostics SourceFindings::takeDiagnostics(const PageImage& image)
{
    PageDiagnostics found = image.takeDiagnostics();
    m_log.write(lastPathComponent(m_document.path()), found.logLines);
    m_detail = found.logLines.join(u'\n');
    m_leftOutOfPage = found.leftOutTags + found.tagsWithoutPlace;
    m_isPageTakenOver = found.isTakenOver;
    return found;
}

void SourceFindings::addLosses(int page, const PageDiagnostics& found)
{
    for (const QString& warning : found.warnings) {
        if (m_doubt.isNull())
            m_doubt = u"page %1: %2"_s.arg(page).arg(warning);
        tell(m_job, { Diagnostic::Severity::Warning, m_document.path(), page, warning, m_detail });
    }
    m_changesPixels = m_changesPixels || found.changesPixels;
    for (const QString& remark : found.remarks)
        ++m_remarks[remark];
    const auto addNew = [](QStringList& names, const QStringList& more) {
        for (const QString& name : more)
            if (!names.contains(name))
                names.append(name);
    };
    if (found.isTakenOver && !m_takenOver.empty() && m_takenOver.back().second + 1 == page)
        m_takenOver.back().second = page;
    else if (found.isTakenOver)
        m_takenOver.emplace_back(page, page);
    addNew(m_leftOutTags, found.leftOutTags);
    addNew(m_tagsWithoutPlace, found.tagsWithoutPlace);
    m_detail.clear();
}

void SourceFindings::tellTakenOver()
{
    if (m_takenOver.empty())
        return;
    QStringList ranges;
    for (const auto& [first, last] : m_takenOver)
        ranges.append(first == last ? QString::number(first) : u"%1-%2"_s.arg(first).arg(last));
    systemLog(lastPathComponent(m_document.path())
              + u": JPEG data taken over as they are, of pages: "_s + ranges.join(u", "_s));
}

void SourceFindings::tellLeftOutTags()
{
    constexpr qsizetype mostNames = 5;
    if (!m_tagsWithoutPlace.isEmpty()) {
        const QString text = leftOutText(m_tagsWithoutPlace, m_tagsWithoutPlace.size(),
                                         u"left behind, for which the format has no place");
        systemLog(lastPathComponent(m_document.path()) + u": "_s + text);
        if (const std::shared_ptr<Log> runLog = m_job.log(); !runLog->files.empty())
            runLog->files.back()->leftBehind = text;
    }
    if (m_leftOutTags.isEmpty())
        return;
    const QString all = leftOutText(m_leftOutTags, m_leftOutTags.size());
    if (m_leftOutTags.size() > mostNames)
        systemLog(lastPathComponent(m_document.path()) + u": "_s + all);
    tell(m_job,
         { Diagnostic::Severity::Warning, m_document.path(), 0,
           leftOutText(m_leftOutTags, mostNames), all });
}

void SourceFindings::tellChange()
{
    if (m_document.hasChanged())
        tellWarning(u"the file has changed while its pages were read, which may be old ones, new "
                    "ones or parts of both"_s);
}

void SourceFindings::tellRemarks()
{
    for (const auto& [remark, pages] : m_remarks.asKeyValueRange())
        tell(m_job,
             { Diagnostic::Severity::Warning, m_document.path(), 0,
               pages == 1 ? u"1 page: "_s + remark : u"%1 pages: %2"_s.arg(pages).arg(remark) });
    m_remarks.clear();
}

void SourceFindings::tellWarning(const QString& reason)
{
    tell(m_job, { Diagnostic::Severity::Warning, m_document.path(), 0, reason });
}

void SourceFindings::tellError(int page, const QString& reason)
{
    tell(m_job,
         { Diagnostic::Severity::Error, m_document.path(), page, reason,
           page > 0 ? std::exchange(m_detail, {}) : QString() });
}

} // namespace pagestack
