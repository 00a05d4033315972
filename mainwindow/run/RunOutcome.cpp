#include "mainwindow/run/RunOutcome.h"

#include "engine/log/ShownReason.h"
#include "engine/plan/ChosenPages.h"
#include "engine/threads/FreeMemory.h"

#include <QLocale>
#include <QThreadPool>

#include <algorithm>
#include <utility>

namespace pagestack {

namespace {

    constexpr int announcementMs = 200;
    constexpr qsizetype mostReasons = 10;
    constexpr qsizetype mostAtOnce = 1000;

    QString number(qsizetype count) { return QLocale().toString(count); }

    int pagesOf(const OutputFile& output, const RunOptions& options)
    {
        int pages = 0;
        for (const std::shared_ptr<FileItem>& item : output.fileItems)
            pages += chosenPageCount(*item, options);
        return pages;
    }

} // namespace

void freeElsewhere(QList<OutputFile>&& outputs)
{
    if (outputs.size() > mostAtOnce)
        QThreadPool::globalInstance()->start([kept = std::move(outputs)]() mutable {
            kept.clear();
            returnFreeMemory();
        });
}

RunOutcome::RunOutcome()
{
    connect(&m_announcement, &QTimer::timeout, this, &RunOutcome::announce);
}

void RunOutcome::follow(Process& job)
{
    stopFollowing();
    m_job = &job;
    m_inHand = 0;
    m_source = {};
    m_changed.clear();
    m_converted.clear();
    m_failed.clear();
    m_leftOut = 0;
    m_sources = job.totalFileSelected();
    connect(&job, &Process::pageDone, this,
            [this](const QString&, int, const QString&, Process::PageOutcome outcome) {
                ++m_source.pagesDone;
                if (outcome == Process::PageOutcome::Failed)
                    m_source.hasFailed = true;
            });
    connect(&job, &Process::diagnosed, this, &RunOutcome::takeDiagnostic);
    connect(&job, &Process::totalFileProcessedChanged, this, &RunOutcome::passSources);
    m_announcement.start(announcementMs);
}

void RunOutcome::stopFollowing()
{
    m_announcement.stop();
    if (m_job)
        m_job->disconnect(this);
    m_job.clear();
    freeElsewhere(std::exchange(m_rest, {}));
}

void RunOutcome::takeDiagnostic(const Diagnostic& diagnostic)
{
    const QList<OutputFile> outputs = m_job->outputFiles();
    // Logs, checksums and folders may have troubles of their own.
    if (m_inHand >= outputs.size() || diagnostic.sourcePath != outputs.at(m_inHand).filename)
        return;
    const bool isError = diagnostic.severity == Diagnostic::Severity::Error;
    m_source.hasFailed = m_source.hasFailed || isError;
    const QString reason = shownReason(diagnostic.reason);
    QString text = isError ? reason : tr("Warning: %1").arg(reason);
    if (diagnostic.page > 0)
        text = tr("Page %1: %2").arg(number(diagnostic.page), text);
    if (m_source.reasons.size() < mostReasons)
        m_source.reasons.append(text);
    else if (m_source.reasons.size() == mostReasons)
        m_source.reasons.append(tr("and more"));
}

void RunOutcome::passSources(int processed)
{
    const QList<OutputFile> outputs = m_job->outputFiles();
    while (m_inHand < std::min<qsizetype>(processed, outputs.size()))
        pass(outputs.at(m_inHand++));
}

void RunOutcome::pass(const OutputFile& output)
{
    const Source source = std::exchange(m_source, {});
    const int pages = pagesOf(output, m_job->runOptions());
    RowStatus& status = m_changed[output.filename];
    status = { .state = RowStatus::State::NotReached,
               .pages = pages,
               .reason = source.reasons.join(u'\n') };
    if (source.hasFailed) {
        m_failed.insert(output.filename);
        status.state = RowStatus::State::Failed;
    } else if (source.pagesDone > 0 && source.pagesDone >= pages) {
        m_converted.insert(output.filename);
        status.state
            = source.reasons.isEmpty() ? RowStatus::State::Done : RowStatus::State::Warning;
    } else if (pages == 0 && !source.reasons.isEmpty()) {
        ++m_leftOut;
        status.state = RowStatus::State::Warning;
    } else if (source.pagesDone > 0) {
        status.reason = tr("Cancelled when %1 of %2 pages were done.")
                            .arg(number(source.pagesDone), number(pages));
    }
}

void RunOutcome::announce()
{
    if (!m_job)
        return;
    const QList<OutputFile> outputs = m_job->outputFiles();
    if (m_inHand < outputs.size() && m_job->isCombining() && !m_job->fileInProcess().isEmpty()) {
        const OutputFile& output = outputs.at(m_inHand);
        const int pages = pagesOf(output, m_job->runOptions());
        m_changed.insert(output.filename,
                         { .state = RowStatus::State::Converting,
                           .page = std::min(m_source.pagesDone + 1, pages),
                           .pages = pages,
                           .reason = m_source.reasons.join(u'\n') });
    }
    if (!m_changed.isEmpty())
        emit changed(std::exchange(m_changed, {}), m_inHand);
}

void RunOutcome::finish()
{
    if (!m_job)
        return;
    const QList<OutputFile> outputs = m_job->outputFiles();
    // Where a cancel was noticed between two sources, or an exception ended the run.
    if (m_inHand < outputs.size() && (m_source.pagesDone > 0 || !m_source.reasons.isEmpty()))
        pass(outputs.at(m_inHand++));
    stopFollowing();
    m_rest = outputs;
    announceRest();
}

/// Some at a time: the window is not to stand still for it.
void RunOutcome::announceRest()
{
    const auto end = static_cast<int>(std::min(m_rest.size(), m_inHand + mostAtOnce));
    for (; m_inHand < end; ++m_inHand)
        m_changed.insert(m_rest.at(m_inHand).filename, { .state = RowStatus::State::NotReached });
    emit changed(std::exchange(m_changed, {}), m_inHand);
    if (m_inHand < m_rest.size())
        QTimer::singleShot(0, this, [this] {
            if (!m_rest.isEmpty())
                announceRest();
        });
    else
        freeElsewhere(std::exchange(m_rest, {}));
}

QString RunOutcome::headline(int images) const
{
    QString text
        = images == 1 ? tr("1 image written") : tr("%1 images written").arg(number(images));
    if (!m_failed.isEmpty())
        text += tr(", %1 of %2 files failed").arg(number(m_failed.size()), number(m_sources));
    if (m_leftOut > 0)
        text += tr(", %1 of %2 files left out").arg(number(m_leftOut), number(m_sources));
    if (const int left = notReached(); left > 0)
        text += tr(", %1 of %2 files not finished").arg(number(left), number(m_sources));
    return text;
}

} // namespace pagestack
